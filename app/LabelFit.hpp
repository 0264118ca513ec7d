#pragma once
// Conservative text widths for labels drawn into tiles, so that a label never overflows
// its tile in any viewer, and eliding with "…" when it would.
//
// Widths come from the advance widths of DejaVu Sans (regular and bold), one of the
// widest common sans-serif faces, so the faces viewers usually pick (Helvetica, Arial,
// Segoe UI, SF) draw the same text narrower. Characters beyond ASCII count as a full em
// (more for emoji), the width of the widest letters and of CJK ideographs.

#include <string>
#include <string_view>

namespace veldan {

class LabelFit {
public:
    // Vertical metrics of the face as shares of the font size: a line's baseline lies
    // `ascent` below its top, glyphs reach `descent` below the baseline, and lines stack
    // `lineHeight` apart.
    static constexpr double ascent = 0.93;
    static constexpr double descent = 0.24;
    static constexpr double lineHeight = 1.17;

    // Width in points of clean (valid UTF-8) text at `fontSize`.
    static double width(std::string_view cleanText, double fontSize, bool bold);

    // The text if it fits in `maxWidth`; otherwise its longest prefix of at least two
    // characters followed by "…" that fits; otherwise empty.
    static std::string fitted(std::string_view cleanText, double maxWidth, double fontSize,
                              bool bold);
};

}  // namespace veldan
