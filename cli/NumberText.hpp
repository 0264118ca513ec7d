#pragma once
// Whole numbers with digit grouping for the command's text output ("1,234,567").

#include <cstdint>
#include <string>

namespace veldan::cli {

std::string groupedNumber(int64_t value);

}  // namespace veldan::cli
