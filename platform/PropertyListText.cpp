#include "platform/PropertyListText.hpp"

namespace veldan::platform {

namespace {

constexpr char32_t escapeBase = 0xEF00;
constexpr char32_t firstEscape = 0xEF80;
constexpr char32_t lastEscape = 0xEFFF;

bool isAscii(std::string_view text) {
    for (unsigned char c : text) {
        if (c >= 0x80) return false;
    }
    return true;
}

void appendEscapedByte(std::string& out, unsigned char byte) {
    const char32_t code = escapeBase + byte;  // three bytes: EE BE/BF xx
    out += static_cast<char>(0xE0 | (code >> 12));
    out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code & 0x3F));
}

char32_t threeByteCode(std::string_view text, size_t at) {
    return (char32_t(static_cast<unsigned char>(text[at]) & 0x0F) << 12) |
           (char32_t(static_cast<unsigned char>(text[at + 1]) & 0x3F) << 6) |
           char32_t(static_cast<unsigned char>(text[at + 2]) & 0x3F);
}

}  // namespace

size_t utf8SequenceLength(std::string_view text, size_t at) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(at);
    if (lead < 0x80) return 1;
    size_t length = 0;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        if (lead == 0xE0) low = 0xA0;   // no overlong forms
        if (lead == 0xED) high = 0x9F;  // no surrogates
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        if (lead == 0xF0) low = 0x90;
        if (lead == 0xF4) high = 0x8F;  // nothing above U+10FFFF
    } else {
        return 0;
    }
    if (at + length > text.size()) return 0;
    if (byte(at + 1) < low || byte(at + 1) > high) return 0;
    for (size_t i = 2; i < length; ++i) {
        if (byte(at + i) < 0x80 || byte(at + i) > 0xBF) return 0;
    }
    return length;
}

std::string encodePropertyListText(std::string_view bytes) {
    if (isAscii(bytes)) return std::string(bytes);
    std::string out;
    out.reserve(bytes.size() + 8);
    size_t at = 0;
    while (at < bytes.size()) {
        const size_t length = utf8SequenceLength(bytes, at);
        if (length == 0) {
            appendEscapedByte(out, static_cast<unsigned char>(bytes[at]));
            at += 1;
            continue;
        }
        if (length == 3) {
            const char32_t code = threeByteCode(bytes, at);
            if (code >= firstEscape && code <= lastEscape) {
                for (size_t i = 0; i < 3; ++i) {
                    appendEscapedByte(out, static_cast<unsigned char>(bytes[at + i]));
                }
                at += 3;
                continue;
            }
        }
        out.append(bytes.substr(at, length));
        at += length;
    }
    return out;
}

std::string decodePropertyListText(std::string_view text) {
    if (isAscii(text)) return std::string(text);
    std::string out;
    out.reserve(text.size());
    size_t at = 0;
    while (at < text.size()) {
        const size_t length = utf8SequenceLength(text, at);
        if (length == 3) {
            const char32_t code = threeByteCode(text, at);
            if (code >= firstEscape && code <= lastEscape) {
                out += static_cast<char>(code - escapeBase);
                at += 3;
                continue;
            }
        }
        const size_t step = length == 0 ? 1 : length;
        out.append(text.substr(at, step));
        at += step;
    }
    return out;
}

}  // namespace veldan::platform
