#pragma once
// The one way Veldan writes an argument into shell text: wrapped in single quotes, each
// ' inside written as '\''. Inside single quotes the shell expands nothing ($, `, \,
// newlines and leading dashes are plain bytes), so any file name becomes one inert word.
// Every piece of generated shell text goes through this function.

#include <string>
#include <string_view>

namespace veldan {

class ShellQuote {
public:
    static std::string quote(std::string_view text);
};

}  // namespace veldan
