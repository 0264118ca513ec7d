#pragma once
// The kinds of generated folders that developer tools can rebuild, and how each is
// recognised: by the folder's name first, then by a marker file beside it (the project's
// manifest) or, for Python environments, inside it.

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace veldan {

enum class DevCleanupKind {
    node = 0,
    rust = 1,
    python = 2,
    swift = 3,
    next = 4,
};

struct DevCleanupKindRule {
    DevCleanupKind kind;
    std::string_view name;                        // "node": how scripts and options say it
    std::string_view label;                       // "Node dependencies"
    std::array<std::string_view, 2> folderNames;  // the second may be empty
    std::array<std::string_view, 2> markers;      // any one confirms; the second may be empty
    bool markerInside;                            // the marker lies in the folder itself
};

// The recognition table, in kind order.
const std::array<DevCleanupKindRule, 5>& devCleanupKindRules();
const DevCleanupKindRule& devCleanupKindRule(DevCleanupKind kind);
// The rule whose folder names include `folderName`; names belong to one kind at most.
const DevCleanupKindRule* devCleanupRuleForFolder(std::string_view folderName);
std::optional<DevCleanupKind> devCleanupKindNamed(std::string_view name);

// Marker files that confirm a kind from beside the folder, as bits, so one listing of a
// parent folder answers for all its children. 0 for any other name.
uint8_t devCleanupSiblingMarkerBit(std::string_view fileName);
// The bits of `rule`'s markers (0 when they lie inside the folder).
uint8_t devCleanupSiblingMarkerBits(const DevCleanupKindRule& rule);

}  // namespace veldan
