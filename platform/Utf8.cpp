#include "platform/Utf8.hpp"

namespace veldan::platform {

size_t validSequenceLength(std::string_view text, size_t at) {
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
        if (lead == 0xED) high = 0x9F;  // no UTF-16 surrogates
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        if (lead == 0xF0) low = 0x90;
        if (lead == 0xF4) high = 0x8F;  // nothing beyond U+10FFFF
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

char32_t decodeSequence(std::string_view text, size_t at, size_t length) {
    const auto byte = [&](size_t i) {
        return static_cast<char32_t>(static_cast<unsigned char>(text[i]));
    };
    if (length == 1) return byte(at);
    static constexpr char32_t leadMask[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
    char32_t value = byte(at) & leadMask[length];
    for (size_t i = 1; i < length; ++i)
        value = (value << 6) | (byte(at + i) & 0x3F);
    return value;
}

}  // namespace veldan::platform
