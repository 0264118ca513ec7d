#pragma once
// The description of an errno value ("Permission denied"), for the reasons shown to
// the user. Thread-safe, unlike strerror, and always in English like every other message.

#include <string>

namespace veldan::platform {

std::string errorText(int error);

}  // namespace veldan::platform
