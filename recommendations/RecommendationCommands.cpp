#include "recommendations/RecommendationCommands.hpp"

#include "platform/Paths.hpp"
#include "scan/ShellQuote.hpp"

namespace veldan {

namespace {

std::string q(const std::string& text) {
    return ShellQuote::quote(text);
}

std::string say(const std::string& message) {
    return "printf '%s\\n' " + q(message) + " >&2";
}

std::string joined(const std::vector<std::string>& lines, const std::string& separator) {
    std::string out;
    for (size_t i = 0; i < lines.size(); ++i) {
        if (i > 0) out += separator;
        out += lines[i];
    }
    return out;
}

std::string indent(int spaces, const std::string& line) {
    return std::string(static_cast<size_t>(spaces), ' ') + line;
}

}  // namespace

std::string RecommendationCommands::openLine(const std::string& path) {
    return "xdg-open " + q(path);
}

std::string RecommendationCommands::openLines(const std::vector<std::string>& paths) {
    std::vector<std::string> lines;
    for (const auto& path : paths)
        lines.push_back(openLine(path));
    return joined(lines, "\n");
}

std::string RecommendationCommands::guardedCacheCommand(const std::string& tool,
                                                        const std::string& locationCommand,
                                                        const std::string& expectedPath,
                                                        const std::string& cleanupCommand,
                                                        const std::string& title) {
    const std::string skipped = "; skipped " + title + ".";
    return joined(
        {
            "if command -v " + tool + " >/dev/null 2>&1; then",
            indent(4, "if veldan_active_cache=\"$(" + locationCommand + ")\"; then"),
            indent(8, "if [ \"$veldan_active_cache\" = " + q(expectedPath) + " ]; then"),
            indent(12,
                   "if [ -d \"$veldan_active_cache\" ] && [ \"$(cd -P \"$veldan_active_cache\" "
                   "2>/dev/null && pwd -P)\" = \"$veldan_active_cache\" ]; then"),
            indent(16, cleanupCommand),
            indent(12, "else"),
            indent(16, say("The active " + tool + " cache now points elsewhere" + skipped)),
            indent(12, "fi"),
            indent(8, "else"),
            indent(12, say("The active " + tool + " cache was not measured by Veldan" + skipped)),
            indent(8, "fi"),
            indent(4, "else"),
            indent(8, say("Could not find the active " + tool + " cache" + skipped)),
            indent(4, "fi"),
            "else",
            indent(4, say(tool + " is unavailable" + skipped)),
            "fi",
        },
        "\n");
}

std::string RecommendationCommands::guardedGeneratedRemoval(
    const std::string& path, const std::optional<std::string>& manifest,
    const std::optional<ScanFolderIdentity>& identity) {
    const std::string message =
        "Folder changed or points elsewhere; skipped " + path + ". Scan again in Veldan.";
    if (!identity) return say(message);
    const std::string measured = std::to_string(static_cast<uint64_t>(identity->device)) + ":" +
                                 std::to_string(static_cast<uint64_t>(identity->inode)) + ":" +
                                 std::to_string(identity->modifiedSeconds) + ":" +
                                 std::to_string(identity->changedSeconds);
    std::vector<std::string> conditions = {
        "[ -d " + q(path) + " ]",
        "[ ! -L " + q(path) + " ]",
        "[ \"$(cd -P " + q(path) + " 2>/dev/null && pwd -P)\" = " + q(path) + " ]",
        "[ \"$(/usr/bin/stat -c '%d:%i:%Y:%Z' " + q(path) + " 2>/dev/null)\" = " + q(measured) +
            " ]",
    };
    if (manifest) {
        conditions.push_back("[ -f " +
                             q(platform::joinPath(platform::parentPath(path), *manifest)) + " ]");
    }
    return "if " + joined(conditions, " && ") + "; then rm -rf -- " + q(path) + "; else " +
           say(message) + "; fi";
}

std::string RecommendationCommands::pnpmPruneCommand(const std::vector<std::string>& storePaths) {
    std::vector<std::string> patterns;
    for (const auto& path : storePaths)
        patterns.push_back(q(path) + "|" + q(path) + "/*");
    return joined(
        {
            "if command -v pnpm >/dev/null 2>&1; then",
            indent(4, "if veldan_active_store=\"$(pnpm store path)\"; then"),
            indent(8, "case \"$veldan_active_store\" in"),
            indent(12, joined(patterns, "|") + ")"),
            indent(16,
                   "if [ -d \"$veldan_active_store\" ] && [ \"$(cd -P \"$veldan_active_store\" "
                   "2>/dev/null && pwd -P)\" = \"$veldan_active_store\" ]; then"),
            indent(20, "pnpm store prune"),
            indent(16, "else"),
            indent(20, say("The active pnpm store now points elsewhere; skipped pruning.")),
            indent(16, "fi ;;"),
            indent(12, "*) " +
                           say("The active pnpm store was not measured by Veldan; skipped "
                               "pruning.") +
                           " ;;"),
            indent(8, "esac"),
            indent(4, "else"),
            indent(8, say("Could not find the active pnpm store; skipped pruning.")),
            indent(4, "fi"),
            "else",
            indent(4, say("pnpm is unavailable; skipped pnpm store.")),
            "fi",
        },
        "\n");
}

}  // namespace veldan
