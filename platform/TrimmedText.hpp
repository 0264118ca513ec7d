#pragma once
// Text without the white space and line breaks around it, as the platform's text classes
// see them: every Unicode space separator (categories Zs, Zl, Zp) plus tab, line feed,
// vertical tab, form feed, carriage return and next line (U+0085).
//
// Contract: thread-safe; the bytes in between are kept exactly, even when they are not
// valid UTF-8, and an invalid sequence at either end stops the trimming there.

#include <string>
#include <string_view>

namespace veldan::platform {

std::string trimmedText(std::string_view text);

}  // namespace veldan::platform
