#pragma once
// The system's fixed texts name a few macOS things ("Finder", "this Mac", "APFS copies",
// the menu bar icon). Shown on Linux they are said in Linux terms, from this one table, so
// that the texts themselves stay as written and a macOS build can show them unchanged.
//
// Contract: pure; texts without such a name come back as they are.

#include <string>
#include <string_view>

namespace veldan::platform {

// `text` with each macOS name replaced by what a Linux user has.
std::string localWording(std::string_view text);

}  // namespace veldan::platform
