#pragma once
// The seven categories every scanned item is coloured and totalled by.
//
// An item's category depends only on its path components (lower-cased, compared
// exactly, never as substrings). The rules are tested in a fixed order, so the
// scanner can classify a child from its parent's component flags plus its own name
// without splitting the whole path again.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace veldan {

enum class DiskCategory : uint8_t { agent, files, build, safe, system, docker, models };

inline constexpr DiskCategory allDiskCategories[] = {
    DiskCategory::agent,  DiskCategory::files,  DiskCategory::build, DiskCategory::safe,
    DiskCategory::system, DiskCategory::docker, DiskCategory::models};

// The raw value: the display title, also the text stored in caches and JSON.
std::string_view title(DiskCategory category);
// The symbol name of the tile icon.
std::string_view iconName(DiskCategory category);
// Decodes a raw value; empty for an unknown one.
std::optional<DiskCategory> diskCategoryFromRawValue(std::string_view raw);

// Component flags: which matching rules one path component triggers.
using CategoryFlags = uint16_t;
CategoryFlags categoryFlags(std::string_view component);
// The first matching rule over the union of all components' flags.
DiskCategory categoryForFlags(CategoryFlags flags);
// Classifies a whole path.
DiskCategory categoryFor(std::string_view path);

}  // namespace veldan
