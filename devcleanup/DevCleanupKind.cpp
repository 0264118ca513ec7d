#include "devcleanup/DevCleanupKind.hpp"

namespace veldan {

namespace {

constexpr std::array<DevCleanupKindRule, 5> rules{{
    {DevCleanupKind::node,
     "node",
     "Node dependencies",
     {"node_modules", ""},
     {"package.json", "pnpm-workspace.yaml"},
     false},
    {DevCleanupKind::rust, "rust", "Rust builds", {"target", ""}, {"Cargo.toml", ""}, false},
    {DevCleanupKind::python,
     "python",
     "Python environments",
     {"venv", ".venv"},
     {"pyvenv.cfg", ""},
     true},
    {DevCleanupKind::swift, "swift", "Swift builds", {".build", ""}, {"Package.swift", ""}, false},
    {DevCleanupKind::next, "next", "Next.js builds", {".next", ""}, {"package.json", ""}, false},
}};

// Every marker file that is looked for beside a folder, once each; a marker's bit is
// its position here.
constexpr std::array<std::string_view, 4> siblingMarkers{"package.json", "pnpm-workspace.yaml",
                                                         "Cargo.toml", "Package.swift"};

}  // namespace

const std::array<DevCleanupKindRule, 5>& devCleanupKindRules() {
    return rules;
}

const DevCleanupKindRule& devCleanupKindRule(DevCleanupKind kind) {
    return rules[static_cast<size_t>(kind)];
}

const DevCleanupKindRule* devCleanupRuleForFolder(std::string_view folderName) {
    if (folderName.empty()) return nullptr;
    for (const auto& rule : rules) {
        if (rule.folderNames[0] == folderName || rule.folderNames[1] == folderName) return &rule;
    }
    return nullptr;
}

std::optional<DevCleanupKind> devCleanupKindNamed(std::string_view name) {
    for (const auto& rule : rules) {
        if (rule.name == name) return rule.kind;
    }
    return std::nullopt;
}

uint8_t devCleanupSiblingMarkerBit(std::string_view fileName) {
    for (size_t i = 0; i < siblingMarkers.size(); ++i) {
        if (siblingMarkers[i] == fileName) return static_cast<uint8_t>(1u << i);
    }
    return 0;
}

uint8_t devCleanupSiblingMarkerBits(const DevCleanupKindRule& rule) {
    if (rule.markerInside) return 0;
    uint8_t bits = 0;
    for (auto marker : rule.markers) {
        if (!marker.empty()) bits |= devCleanupSiblingMarkerBit(marker);
    }
    return bits;
}

}  // namespace veldan
