#include "app/SvgText.hpp"

#include "platform/Utf8.hpp"

namespace veldan {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";  // U+FFFD

bool allowedInLabel(char32_t c) {
    // Tabs and line breaks are legal XML but would break a one-line label; C1 controls
    // are legal but invisible.
    if (c < 0x20 || (c >= 0x7F && c <= 0x9F)) return false;
    // Direction marks, embeddings, overrides and isolates reorder what is drawn, so a
    // name could show as another ("x" U+202E "gpj.exe" reads "xexe.jpg").
    if (c == 0x061C || c == 0x200E || c == 0x200F || (c >= 0x202A && c <= 0x202E) ||
        (c >= 0x2066 && c <= 0x2069)) {
        return false;
    }
    return c != 0xFFFE && c != 0xFFFF;
}

}  // namespace

std::string SvgText::clean(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    size_t i = 0;
    while (i < text.size()) {
        const size_t length = platform::validSequenceLength(text, i);
        if (length == 0) {
            out += replacement;
            ++i;
            continue;
        }
        if (allowedInLabel(platform::decodeSequence(text, i, length))) {
            out.append(text.substr(i, length));
        } else {
            out += replacement;
        }
        i += length;
    }
    return out;
}

std::string SvgText::escape(std::string_view cleanText) {
    std::string out;
    out.reserve(cleanText.size());
    for (const char c : cleanText) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            case '\'':
                out += "&apos;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

}  // namespace veldan
