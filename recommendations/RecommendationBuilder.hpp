#pragma once
// Turns a finished scan into a short, ordered list of cleanup recommendations: "Safe to
// remove" items carry a guarded cleanup command, "Review first" items only open their
// folders. Also the combined size of a set of folders counting nested ones once, and the
// copyable script of a selection.
//
// Contract: stateless and thread-safe. `build` reads only the snapshot's
// discoveredDirectories (folder path -> allocated bytes) plus, for each recommended
// folder, its identity and whether a manifest file lies beside it; it never fails.

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "scan/Recommendation.hpp"
#include "scan/ScanSnapshot.hpp"

namespace veldan {

class RecommendationBuilder {
public:
    // A folder counts as large above this many bytes.
    static constexpr int64_t minimumBytes = 10'000'000;

    // Safe items first, then review items; within a kind the larger first, ties in rule
    // order. Rules for the home folder's well-known locations run only when the scan
    // covers the home folder.
    static std::vector<Recommendation> build(const std::string& scanRoot,
                                             const ScanSnapshot& snapshot);

    // The copyable shell script of `recommendations`, review items as comments.
    static std::string script(const std::vector<Recommendation>& recommendations);

    // Sum of the sizes of `paths` that have one, each nested folder counted only through
    // its outermost ancestor in the set, less the size of each `excluded` folder that has
    // a size and lies inside one of those outer folders. Never negative.
    static int64_t footprint(const std::vector<std::string>& paths,
                             const std::vector<std::string>& excluded,
                             const std::map<std::string, int64_t>& sizes);

    // The outermost folders of `sizes`: a folder is dropped when one of its ancestors
    // (below "/") is kept.
    static std::map<std::string, int64_t> nonNested(const std::map<std::string, int64_t>& sizes);

    // The last component is `name` and no parent component is "node_modules", ".next" or
    // ".build": a generated folder inside another generated tree is never offered.
    static bool isGeneratedFolderCandidate(const std::string& path, const std::string& name);
    // A candidate with a file named `manifest` beside it (reads the file system).
    static bool isProjectOutput(const std::string& path, const std::string& name,
                                const std::string& manifest);

    // The identity of each path that is a folder now.
    static std::map<std::string, ScanFolderIdentity> folderIdentities(
        const std::vector<std::string>& paths);
};

}  // namespace veldan
