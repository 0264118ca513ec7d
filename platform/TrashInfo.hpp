#pragma once
// The text of a freedesktop.org ".trashinfo" file and the percent-encoding it uses.
//
// Contract: pure functions; paths are raw bytes and are encoded byte for byte, so a
// name that is not valid UTF-8 keeps its exact bytes.

#include <ctime>
#include <string>
#include <string_view>

namespace veldan::platform {

// Every byte except letters, digits, "-", "_", ".", "~" and "/" becomes "%XX"
// (upper-case hexadecimal).
std::string percentEncodePath(std::string_view path);

// "[Trash Info]", "Path=" with the encoded original path, "DeletionDate=" in local time
// (YYYY-MM-DDThh:mm:ss), each line ending with a newline.
std::string trashInfoText(std::string_view originalPath, std::time_t deletedAt);

}  // namespace veldan::platform
