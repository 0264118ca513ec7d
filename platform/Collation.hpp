#pragma once
// The order a file browser shows names in: case-insensitive, digits compared by value
// ("file2" before "file10"), following the user's locale.
//
// Contract: thread-safe; each thread keeps its own collator.

#include <string_view>

namespace veldan::platform {

// Negative, zero or positive like strcmp. Zero for names that collate equal ("A" and
// "a"); callers that need a total order break the tie themselves.
int localizedStandardCompare(std::string_view a, std::string_view b);

// Case- and accent-insensitive substring test in the user's locale.
bool localizedContains(std::string_view text, std::string_view query);

}  // namespace veldan::platform
