#include "app/LabelFit.hpp"

#include <cstdint>
#include <vector>

#include "platform/Utf8.hpp"

namespace veldan {

namespace {

// Advance widths of U+0020..U+007E in thousandths of an em, rounded up, sixteen
// characters a line.
// clang-format off
constexpr uint16_t regularWidths[95] = {
     318,  401,  460,  838,  637,  951,  780,  275,  391,  391,  500,  838,  318,  361,  318,  337,
     637,  637,  637,  637,  637,  637,  637,  637,  637,  637,  337,  337,  838,  838,  838,  531,
    1000,  685,  687,  699,  771,  632,  576,  775,  752,  295,  295,  656,  558,  863,  749,  788,
     604,  788,  695,  635,  611,  732,  685,  989,  686,  611,  686,  391,  337,  391,  838,  500,
     500,  613,  635,  550,  635,  616,  353,  635,  634,  278,  278,  580,  278,  975,  634,  612,
     635,  635,  412,  521,  393,  634,  592,  818,  592,  592,  525,  637,  337,  637,  838};
constexpr uint16_t boldWidths[95] = {
     349,  457,  521,  838,  696, 1002,  873,  307,  458,  458,  523,  838,  380,  416,  380,  366,
     696,  696,  696,  696,  696,  696,  696,  696,  696,  696,  400,  400,  838,  838,  838,  581,
    1000,  774,  763,  734,  831,  684,  684,  821,  837,  373,  373,  775,  638,  996,  837,  851,
     733,  851,  771,  721,  683,  812,  774, 1104,  771,  725,  726,  458,  366,  458,  838,  500,
     500,  675,  716,  593,  716,  679,  436,  716,  712,  343,  343,  666,  343, 1042,  712,  687,
     716,  716,  494,  596,  479,  712,  652,  924,  646,  652,  583,  712,  366,  712,  838};
// clang-format on

constexpr std::string_view ellipsis = "\xE2\x80\xA6";
constexpr size_t shortestPrefix = 2;

double emWidth(char32_t c, bool bold) {
    if (c >= 0x20 && c <= 0x7E) return (bold ? boldWidths : regularWidths)[c - 0x20] / 1000.0;
    if ((c >= 0x0300 && c <= 0x036F) || (c >= 0x200B && c <= 0x200F) ||
        (c >= 0xFE00 && c <= 0xFE0F)) {
        return 0;  // combining marks and zero-width characters do not advance
    }
    if (c == 0x2026) return 1.0;
    if (c >= 0x1F000) return 1.3;  // emoji faces run wider than an em
    return bold ? 1.12 : 1.0;
}

struct Character {
    size_t end;  // byte offset after the character
    double width;
};

std::vector<Character> characters(std::string_view text, double fontSize, bool bold) {
    std::vector<Character> result;
    size_t i = 0;
    while (i < text.size()) {
        size_t length = platform::validSequenceLength(text, i);
        // Clean text has no invalid bytes; should one slip through, it still counts.
        const char32_t c = length ? platform::decodeSequence(text, i, length) : 0xFFFD;
        if (length == 0) length = 1;
        i += length;
        result.push_back({i, emWidth(c, bold) * fontSize});
    }
    return result;
}

}  // namespace

double LabelFit::width(std::string_view cleanText, double fontSize, bool bold) {
    double total = 0;
    for (const auto& character : characters(cleanText, fontSize, bold))
        total += character.width;
    return total;
}

std::string LabelFit::fitted(std::string_view cleanText, double maxWidth, double fontSize,
                             bool bold) {
    const auto list = characters(cleanText, fontSize, bold);
    double total = 0;
    for (const auto& character : list)
        total += character.width;
    if (total <= maxWidth) return std::string(cleanText);

    const double budget = maxWidth - emWidth(0x2026, bold) * fontSize;
    double used = 0;
    size_t kept = 0;
    while (kept < list.size() && used + list[kept].width <= budget)
        used += list[kept++].width;
    if (kept < shortestPrefix) return {};
    std::string_view prefix = cleanText.substr(0, list[kept - 1].end);
    while (!prefix.empty() && prefix.back() == ' ')
        prefix.remove_suffix(1);
    return std::string(prefix) + std::string(ellipsis);
}

}  // namespace veldan
