#pragma once
// Random (version 4) UUIDs in their canonical upper-case text form.

#include <string>

namespace veldan::platform {

std::string randomUuid();

}  // namespace veldan::platform
