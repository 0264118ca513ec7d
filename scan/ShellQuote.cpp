#include "scan/ShellQuote.hpp"

namespace veldan {

std::string ShellQuote::quote(std::string_view text) {
    std::string out;
    out.reserve(text.size() + 2);
    out += '\'';
    for (char c : text) {
        if (c == '\'') {
            out += "'\\''";
        } else {
            out += c;
        }
    }
    out += '\'';
    return out;
}

}  // namespace veldan
