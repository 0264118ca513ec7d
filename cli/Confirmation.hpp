#pragma once
// The one question a command asks before it moves anything: "... [y/N]" on standard
// error, answered on standard input. Only "y" or "yes" (any case) is a yes; anything
// else, an empty line or the end of input keeps everything in place.

#include <string>

namespace veldan::cli {

bool askYesNo(const std::string& question);

}  // namespace veldan::cli
