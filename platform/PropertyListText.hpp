#pragma once
// How raw byte strings (paths and names, which need not be UTF-8) become property-list
// text, which must be Unicode, and back again byte for byte.
//
// The encoding, in the manner of "UTF-8b": every byte that is not part of a well-formed
// UTF-8 sequence is written as the private-use character U+EF00 + byte (such bytes are
// always 0x80-0xFF, so U+EF80-U+EFFF). A character of that range that appears in the
// original is not written as itself but as its three UTF-8 bytes, each escaped the same
// way. So after encoding, every character in U+EF80-U+EFFF is an escaped byte and every
// other character stands for itself, which makes decoding exact. Well-formed UTF-8 text
// without such characters (nearly every name) is stored unchanged.
//
// Contract: pure functions, thread-safe.

#include <string>
#include <string_view>

namespace veldan::platform {

// The encoded text is always well-formed UTF-8.
std::string encodePropertyListText(std::string_view bytes);
// The inverse of encodePropertyListText for well-formed UTF-8 input.
std::string decodePropertyListText(std::string_view text);

}  // namespace veldan::platform
