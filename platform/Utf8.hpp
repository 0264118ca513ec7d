#pragma once
// UTF-8 validation for text that leaves the program: names are raw bytes and may be
// anything.

#include <cstddef>
#include <string_view>

namespace veldan::platform {

// Length of the well-formed UTF-8 sequence starting at `text[at]`, or 0 when the byte
// there does not start one (stray continuation, overlong form, surrogate, beyond U+10FFFF,
// or truncated).
size_t validSequenceLength(std::string_view text, size_t at);

// The code point of the well-formed sequence of `length` bytes starting at `text[at]`.
char32_t decodeSequence(std::string_view text, size_t at, size_t length);

}  // namespace veldan::platform
