#include "cli/NumberText.hpp"

namespace veldan::cli {

std::string groupedNumber(int64_t value) {
    const bool negative = value < 0;
    std::string digits = std::to_string(value);
    if (negative) digits.erase(0, 1);
    std::string out;
    for (size_t i = 0; i < digits.size(); ++i) {
        if (i != 0 && (digits.size() - i) % 3 == 0) out += ',';
        out += digits[i];
    }
    return negative ? "-" + out : out;
}

}  // namespace veldan::cli
