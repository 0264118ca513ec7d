#pragma once
// Where Veldan looks for developer tools (npm, uv, go, pnpm) and the PATH their commands
// run with: a graphical session's PATH rarely includes the version managers' folders, so
// those come first, then the inherited PATH.
//
// Contract: reads the nvm versions folder under `home`; thread-safe.

#include <string>
#include <vector>

namespace veldan {

class ToolSearchPath {
public:
    // Every nvm-installed Node version's bin folder, highest version first; the package
    // managers' usual folders; then the absolute entries of `inheritedPath` (relative and
    // empty ones are omitted). Duplicates are dropped, the first occurrence kept.
    static std::vector<std::string> list(const std::string& home, const std::string& inheritedPath);
    // The same for the current user and this process's PATH.
    static std::vector<std::string> current();

    // The first "<folder>/<tool>" that is an executable file.
    static std::string find(const std::string& tool, const std::vector<std::string>& searchPath);
    static std::string joined(const std::vector<std::string>& searchPath);
};

}  // namespace veldan
