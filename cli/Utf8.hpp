#pragma once
// UTF-8 validation for text that leaves the program; the validator itself lives in
// platform/ so that the pictures drawn outside cli/ use the same one.

#include "platform/Utf8.hpp"

namespace veldan::cli {

using platform::validSequenceLength;

}  // namespace veldan::cli
