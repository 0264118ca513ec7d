// Names become safe SVG text, and labels are measured and elided conservatively.

#include <gtest/gtest.h>

#include <cmath>

#include "app/LabelFit.hpp"
#include "app/SvgCanvas.hpp"
#include "app/SvgText.hpp"
#include "platform/Utf8.hpp"

namespace veldan {
namespace {

bool isValidUtf8(std::string_view text) {
    for (size_t i = 0; i < text.size();) {
        const size_t length = platform::validSequenceLength(text, i);
        if (length == 0) return false;
        i += length;
    }
    return true;
}

TEST(SvgText, InvalidBytesAndControlCharactersBecomeReplacementCharacters) {
    EXPECT_EQ(SvgText::clean("bad\xff\xfe."), "bad\xEF\xBF\xBD\xEF\xBF\xBD.");
    EXPECT_EQ(SvgText::clean("a\nb\tc\x01\x7f"), "a\uFFFDb\uFFFDc\uFFFD\uFFFD");
    EXPECT_EQ(SvgText::clean("\xC2\x85"), "\uFFFD");                 // C1 control
    EXPECT_EQ(SvgText::clean("\xEF\xBF\xBE"), "\uFFFD");             // U+FFFE
    EXPECT_EQ(SvgText::clean("\xE2\x82"), "\uFFFD\uFFFD");           // truncated sequence
    EXPECT_EQ(SvgText::clean("Caf\xC3\xA9 日本 😀"), "Café 日本 😀");  // valid text stays
    EXPECT_EQ(SvgText::clean("x\u202Egpj.exe"), "x\uFFFDgpj.exe");   // no reordering
}

TEST(SvgText, MarkupCharactersAreEscaped) {
    EXPECT_EQ(SvgText::escape("<a href=\"x\">Tom & Jerry's</a>"),
              "&lt;a href=&quot;x&quot;&gt;Tom &amp; Jerry&apos;s&lt;/a&gt;");
}

TEST(SvgCanvas, NumbersAreShortAndLocaleIndependent) {
    EXPECT_EQ(SvgCanvas::number(12), "12");
    EXPECT_EQ(SvgCanvas::number(0.125), "0.13");
    EXPECT_EQ(SvgCanvas::number(-0.001), "0");
    EXPECT_EQ(SvgCanvas::number(1200.5), "1200.5");
    EXPECT_EQ(SvgCanvas::number(std::nan("")), "0");
}

TEST(LabelFit, LongTextIsElidedWithinTheWidthAndShortTextKeptWhole) {
    const std::string name = "Screen Recording 2024-05-01.mov";
    EXPECT_EQ(LabelFit::fitted(name, LabelFit::width(name, 13, true), 13, true), name);
    for (double limit = 20; limit < 300; limit += 3.5) {
        const std::string fitted = LabelFit::fitted(name, limit, 13, true);
        if (fitted.empty()) continue;
        EXPECT_LE(LabelFit::width(fitted, 13, true), limit);
        EXPECT_TRUE(fitted == name || fitted.ends_with("…")) << fitted;
    }
    EXPECT_EQ(LabelFit::fitted(name, 60, 13, true), "Scree…");
    // Nothing is shown when not even two characters fit.
    EXPECT_EQ(LabelFit::fitted("Documents", 12, 13, false), "");
    EXPECT_EQ(LabelFit::fitted("Documents", 0, 13, false), "");
}

TEST(LabelFit, ElidingNeverCutsACharacterInHalf) {
    const std::string name = "日本語のフォルダ名前😀😀";
    for (double limit = 0; limit < 200; limit += 1) {
        EXPECT_TRUE(isValidUtf8(LabelFit::fitted(name, limit, 12, false))) << limit;
    }
}

}  // namespace
}  // namespace veldan
