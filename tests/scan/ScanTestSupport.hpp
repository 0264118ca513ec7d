#pragma once
// Shared helpers for scanner tests.

#include <gtest/gtest.h>

#include <string>

#include "scan/DiskScanner.hpp"

namespace veldan::test {

inline ScanSettings settingsWithHome(const std::string& home) {
    ScanSettings settings = ScanSettings::current();
    settings.home = home;
    return settings;
}

inline ScanSnapshot scanned(const std::string& path,
                            const ScanSettings& settings = ScanSettings::current()) {
    ScanCancellation cancellation;
    auto outcome = DiskScanner(settings).scan(path, cancellation);
    if (!outcome) {
        ADD_FAILURE() << "scan of " << path << " returned nothing";
        return {};
    }
    return outcome->snapshot;
}

inline const DiskNode* findNode(const DiskNode& node, const std::string& path) {
    if (node.path == path) return &node;
    for (const auto& child : node.children) {
        if (auto* found = findNode(child, path)) return found;
    }
    return nullptr;
}

// Every folder's invariants: at most 18 children (17 and a summary), ordered, and bytes
// never below the children's sum.
inline void expectWellFormed(const DiskNode& node) {
    EXPECT_LE(node.children.size(), DiskNode::maximumKeptChildren + 1) << node.path;
    int64_t sum = 0;
    for (size_t i = 0; i < node.children.size(); ++i) {
        sum += node.children[i].bytes;
        if (i > 0)
            EXPECT_FALSE(DiskNode::ordersBefore(node.children[i], node.children[i - 1]))
                << node.path;
        expectWellFormed(node.children[i]);
    }
    EXPECT_GE(node.bytes, sum) << node.path;
}

}  // namespace veldan::test
