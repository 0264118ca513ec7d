#include "platform/TrimmedText.hpp"

#include <gtest/gtest.h>

namespace veldan::platform {
namespace {

TEST(TrimmedTextTest, RemovesUnicodeSpacesAndLineBreaksAtBothEnds) {
    EXPECT_EQ(trimmedText("\u2003\u205f\u3000a b\u00a0\u2028\u2029"), "a b");
    EXPECT_EQ(trimmedText("\t\n\v\f\r\u0085 x \u0085\r\f\v\n\t"), "x");
    EXPECT_EQ(trimmedText("a\u2003\nb"), "a\u2003\nb");
    EXPECT_EQ(trimmedText(" \u2003 \u205f "), "");
    EXPECT_EQ(trimmedText(""), "");
}

TEST(TrimmedTextTest, KeepsWhatIsNotWhiteSpace) {
    // Zero-width space and the byte-order mark are format characters, not space.
    EXPECT_EQ(trimmedText("\u200bx\ufeff"), "\u200bx\ufeff");
    EXPECT_EQ(trimmedText("\x1f x \x1c"), "\x1f x \x1c");
}

TEST(TrimmedTextTest, KeepsBytesThatAreNotUtf8Exactly) {
    EXPECT_EQ(trimmedText(" \xff"
                          "a\xfe "),
              "\xff"
              "a\xfe");
    EXPECT_EQ(trimmedText("a\x80 "), "a\x80");
    // U+2003 cut short is no space.
    EXPECT_EQ(trimmedText(" a\xe2\x80"), "a\xe2\x80");
    EXPECT_EQ(trimmedText("\x80\x83 a"), "\x80\x83 a");
}

}  // namespace
}  // namespace veldan::platform
