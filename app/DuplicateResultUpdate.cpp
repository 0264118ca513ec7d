#include "app/DuplicateResultUpdate.hpp"

#include <algorithm>

#include "platform/Uuid.hpp"
#include "scan/SaturatingAdd.hpp"

namespace veldan {

DuplicateScanResult withoutMovedCopies(const DuplicateScanResult& result,
                                       const std::set<std::string>& movedPaths) {
    DuplicateScanResult updated = result;
    updated.revision = platform::randomUuid();
    updated.groups.clear();
    updated.fileBytesByPath.clear();
    updated.extraBytes = 0;
    for (const auto& group : result.groups) {
        DuplicateGroup kept = group;
        std::erase_if(kept.files,
                      [&](const DuplicateFile& file) { return movedPaths.count(file.path) > 0; });
        if (kept.files.size() < 2) continue;
        updated.extraBytes = saturatingAdd(updated.extraBytes, kept.extraBytes());
        for (const auto& file : kept.files)
            updated.fileBytesByPath[file.path] = kept.bytesPerFile;
        updated.groups.push_back(std::move(kept));
    }
    std::stable_sort(updated.groups.begin(), updated.groups.end(),
                     [](const DuplicateGroup& a, const DuplicateGroup& b) {
                         if (a.extraBytes() != b.extraBytes())
                             return a.extraBytes() > b.extraBytes();
                         return a.id < b.id;
                     });
    return updated;
}

}  // namespace veldan
