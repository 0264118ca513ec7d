#pragma once
// The record a saved map is stored as: one binary property list holding the format
// version, the scanned folder, its identity and the snapshot, with the keys "version",
// "scopePath", "rootIdentity" and "snapshot" in that order (the snapshot and its nodes use
// their field names as keys).
//
// Decoding trusts nothing: any missing or mistyped key fails the whole record, and a
// hostile file cannot make the decoder recurse deeper than `maximumDepth` folders, decode
// more records than the file holds objects, or allocate much more than the file's size.
//
// Contract: pure functions, thread-safe.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "cache/RootIdentity.hpp"
#include "platform/PropertyListWriter.hpp"
#include "scan/ScanSnapshot.hpp"

namespace veldan {

struct ScanArchive {
    static constexpr int64_t currentVersion = 2;
    // Scanned trees are a handful of levels deep; this only bounds hostile input.
    static constexpr size_t maximumDepth = 256;

    std::string scopePath;
    RootIdentity rootIdentity;
    ScanSnapshot snapshot;  // finishedAt is kept to the microsecond

    // The binary property list of the current version, or nothing when it would exceed
    // `maximumBytes` or the tree is deeper than maximumDepth.
    static std::optional<std::string> encode(const std::string& scopePath,
                                             const RootIdentity& rootIdentity,
                                             const ScanSnapshot& snapshot, size_t maximumBytes);
    // The same document streamed to `sink`, so that a large map is not held twice;
    // `tooLarge` also covers a tree deeper than maximumDepth.
    static platform::PropertyListWriter::WriteResult write(
        const std::string& scopePath, const RootIdentity& rootIdentity,
        const ScanSnapshot& snapshot, size_t maximumBytes,
        const platform::PropertyListWriter::Sink& sink);
    // Nothing unless `document` is a whole, well-typed record of the current version (the
    // only one accepted, so the decoded record does not repeat it).
    static std::optional<ScanArchive> decode(std::string_view document);
};

}  // namespace veldan
