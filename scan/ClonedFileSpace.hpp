#pragma once
// How a cloned file's space is shared, and which part of its allocated size a scan
// charges to one path, so that blocks shared by several clones are counted once.
//
// Contract: stateless; callable from any number of threads. The attribute query is a
// parameter so the arithmetic can be exercised without a copy-on-write file system.

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace veldan {

class ClonedFileSpace {
public:
    struct Sharing {
        int64_t privateBytes = 0;
        uint64_t cloneID = 0;
        uint32_t cloneCount = 0;
        friend bool operator==(const Sharing&, const Sharing&) = default;
    };
    using Query = std::function<std::optional<Sharing>(const std::string& path)>;

    // Files below this size are never queried: they are most files, and the query costs
    // a system call each.
    static constexpr int64_t queryFloor = 65536;

    // The platform's answer for `path` (never following a final link); empty when unknown.
    static std::optional<Sharing> sharing(const std::string& path);

    // private + (allocated - private) / cloneCount when the file shares blocks with live
    // clones; `allocated` unchanged otherwise. Overflow is a bug and aborts.
    static int64_t diskShare(const std::string& path, int64_t allocated);
    static int64_t diskShare(const std::string& path, int64_t allocated, const Query& query);
};

}  // namespace veldan
