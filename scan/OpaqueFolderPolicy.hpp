#pragma once
// Generated or internal folders that a scan measures as one block without mapping
// inside: dependency trees, build output, environments, caches and version history.
// Cleanup can then only ever take such a folder whole.

#include <optional>
#include <string>
#include <string_view>

namespace veldan {

class OpaqueFolderPolicy {
public:
    enum class Kind {
        dependencies,
        buildOutput,
        environment,
        pythonCache,
        packageCache,
        versionHistory
    };

    static std::string_view label(Kind kind);
    static std::string_view explanation(Kind kind);

    // Classifies the folder at `path` (standardized); `home` is the user's home folder.
    // Reads the file system only for the names whose rule needs a manifest.
    static std::optional<Kind> kind(const std::string& path, const std::string& home);

    // The same, for a folder `name` inside the open folder `parentFd` whose path is `path`;
    // works at any depth because the manifest checks are relative to `parentFd`.
    static std::optional<Kind> kindAt(int parentFd, std::string_view name, std::string_view path,
                                      const std::string& home);
};

}  // namespace veldan
