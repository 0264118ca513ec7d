#include "cli/Terminal.hpp"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "cli/Utf8.hpp"

namespace veldan::cli {

bool Terminal::isTerminal(FILE* stream) {
    return ::isatty(::fileno(stream)) == 1;
}

bool Terminal::wantsColor(FILE* stream) {
    const char* noColor = std::getenv("NO_COLOR");
    if (noColor != nullptr && noColor[0] != '\0') return false;
    const char* term = std::getenv("TERM");
    if (term != nullptr && std::strcmp(term, "dumb") == 0) return false;
    return isTerminal(stream);
}

int Terminal::width(FILE* stream, int fallback) {
    struct winsize size {};
    if (::ioctl(::fileno(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
    return fallback;
}

std::string Terminal::display(std::string_view text) {
    static constexpr char hex[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size();) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte >= 0x80) {
            const size_t length = validSequenceLength(text, i);
            // U+0080..U+009F are C1 control characters: as dangerous as ESC on a terminal.
            const bool c1 =
                length == 2 && byte == 0xC2 && static_cast<unsigned char>(text[i + 1]) < 0xA0;
            if (length > 0 && !c1) {
                out.append(text.substr(i, length));
                i += length;
                continue;
            }
        } else if (byte >= 0x20 && byte != 0x7F && byte != '\\') {
            out += static_cast<char>(byte);
            ++i;
            continue;
        }
        // A backslash is doubled so that a name holding "\\n" stays apart from one
        // holding a newline.
        if (byte == '\\') {
            out += "\\\\";
        } else if (byte == '\n') {
            out += "\\n";
        } else if (byte == '\t') {
            out += "\\t";
        } else {
            out += "\\x";
            out += hex[byte >> 4];
            out += hex[byte & 0x0F];
        }
        ++i;
    }
    return out;
}

size_t Terminal::columns(std::string_view displayText) {
    size_t count = 0;
    for (unsigned char c : displayText) {
        if ((c & 0xC0) != 0x80) ++count;
    }
    return count;
}

std::string Terminal::fit(std::string_view displayText, size_t columns) {
    if (Terminal::columns(displayText) <= columns) return std::string(displayText);
    if (columns == 0) return {};
    std::string out;
    size_t used = 0;
    for (size_t i = 0; i < displayText.size(); ++i) {
        const auto c = static_cast<unsigned char>(displayText[i]);
        if ((c & 0xC0) != 0x80) {
            if (used + 1 >= columns) break;
            ++used;
        }
        out += static_cast<char>(c);
    }
    return out + "\u2026";
}

std::string Style::wrap(const std::string& code, std::string_view text) const {
    if (!enabled_) return std::string(text);
    return "\033[" + code + "m" + std::string(text) + "\033[0m";
}

}  // namespace veldan::cli
