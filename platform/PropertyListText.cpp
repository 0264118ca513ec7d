#include "platform/PropertyListText.hpp"

#include "platform/Utf8.hpp"

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

}  // namespace

std::string encodePropertyListText(std::string_view bytes) {
    if (isAscii(bytes)) return std::string(bytes);
    std::string out;
    out.reserve(bytes.size() + 8);
    size_t at = 0;
    while (at < bytes.size()) {
        const size_t length = validSequenceLength(bytes, at);
        if (length == 0) {
            appendEscapedByte(out, static_cast<unsigned char>(bytes[at]));
            at += 1;
            continue;
        }
        if (length == 3) {
            const char32_t code = decodeSequence(bytes, at, 3);
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
        const size_t length = validSequenceLength(text, at);
        if (length == 3) {
            const char32_t code = decodeSequence(text, at, 3);
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
