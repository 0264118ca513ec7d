#pragma once
// The shell text carried by recommendations: an "open" line for each folder to review,
// and for each safe cleanup a command that checks again, in the shell, that the target
// is still the very folder that was measured before it acts. A check that fails prints
// why to standard error and does nothing.
//
// Contract: pure functions of their arguments; every argument is quoted with
// ShellQuote::quote. The identity check uses GNU stat: device, inode, modification and
// status-change seconds, in that order.

#include <optional>
#include <string>
#include <vector>

#include "scan/ScanFolderIdentity.hpp"

namespace veldan {

class RecommendationCommands {
public:
    // "xdg-open '<path>'": shows a folder to review in the file manager.
    static std::string openLine(const std::string& path);
    static std::string openLines(const std::vector<std::string>& paths);

    // Runs `cleanupCommand` only when `tool` exists, `locationCommand` answers exactly
    // `expectedPath`, and that folder is reached without symbolic links.
    static std::string guardedCacheCommand(const std::string& tool,
                                           const std::string& locationCommand,
                                           const std::string& expectedPath,
                                           const std::string& cleanupCommand,
                                           const std::string& title);

    // `rm -rf` of `path` only while it is a real folder with the measured identity (and,
    // with a manifest, that file still lies beside it). Without an identity the command
    // only says that the folder was skipped.
    static std::string guardedGeneratedRemoval(const std::string& path,
                                               const std::optional<std::string>& manifest,
                                               const std::optional<ScanFolderIdentity>& identity);

    // `pnpm store prune` only when pnpm's active store is one of `storePaths` (or lies
    // inside one) and is reached without symbolic links.
    static std::string pnpmPruneCommand(const std::vector<std::string>& storePaths);
};

}  // namespace veldan
