#pragma once
// Whole reads and writes on an open descriptor, retried after interruptions and short
// transfers.
//
// Contract: single calls on the caller's thread; a failed write leaves errno set.

#include <string>
#include <string_view>

namespace veldan::platform {

// True when every byte was written.
bool writeAll(int fd, std::string_view text);
// Everything from the current offset to the end (what could be read before an error).
std::string readAll(int fd);

}  // namespace veldan::platform
