#include <gtest/gtest.h>

#include <random>

#include "platform/PropertyListText.hpp"
#include "platform/Utf8.hpp"

namespace veldan::platform {
namespace {

bool isWellFormed(std::string_view text) {
    for (size_t at = 0; at < text.size();) {
        const size_t length = validSequenceLength(text, at);
        if (length == 0) return false;
        at += length;
    }
    return true;
}

TEST(PropertyListText, LeavesWellFormedTextUnchanged) {
    // U+EF7F and U+F000, next to the reserved range, stand for themselves.
    for (std::string text :
         {"", "/Users/ana/Documents", "caf\xC3\xA9", "\xE6\x97\xA5\xE6\x9C\xAC",
          "emoji \xF0\x9F\x93\x81 folder", "line\nbreak 'quote'", "\xEE\xBD\xBF", "\xEF\x80\x80"}) {
        EXPECT_EQ(encodePropertyListText(text), text);
        EXPECT_EQ(decodePropertyListText(text), text);
    }
}

TEST(PropertyListText, EscapesEachStrayByteAsOnePrivateUseCharacter) {
    // Latin-1 "café" is not UTF-8: its 0xE9 becomes U+EFE9 (EE BF A9).
    EXPECT_EQ(encodePropertyListText("caf\xE9"), "caf\xEE\xBF\xA9");
    // A real U+EF80 must not decode to the byte 0x80; overlong, surrogate, too large and
    // truncated forms are stray bytes too.
    for (std::string bad : {"caf\xE9", "a\xEE\xBE\x80z", "\xC0\xAF", "\xE0\x80\xAF", "\xED\xA0\x80",
                            "\xF4\x90\x80\x80", "\xE6\x97", "\x80", "\xFF"}) {
        const std::string encoded = encodePropertyListText(bad);
        EXPECT_NE(encoded, bad);
        EXPECT_TRUE(isWellFormed(encoded));
        EXPECT_EQ(decodePropertyListText(encoded), bad);
    }
}

TEST(PropertyListText, RoundTripsRandomBytes) {
    std::mt19937 random(7);
    for (int round = 0; round < 2000; ++round) {
        std::string bytes(random() % 40, '\0');
        for (auto& byte : bytes) {
            // Favour the bytes that make UTF-8 sequences and the escape range.
            const unsigned pick = random() % 6;
            byte = static_cast<char>(pick == 0   ? 0xEE
                                     : pick == 1 ? 0xBE + random() % 2
                                                 : random() % 256);
        }
        const std::string encoded = encodePropertyListText(bytes);
        ASSERT_TRUE(isWellFormed(encoded));
        ASSERT_EQ(decodePropertyListText(encoded), bytes);
    }
}

}  // namespace
}  // namespace veldan::platform
