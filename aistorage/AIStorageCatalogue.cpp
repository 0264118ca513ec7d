#include "aistorage/AIStorageCatalogue.hpp"

#include <cstdlib>
#include <mutex>
#include <optional>
#include <unordered_set>

#include "platform/FileStatus.hpp"
#include "platform/Paths.hpp"
#include "platform/UserFolders.hpp"

namespace veldan {

namespace {

using platform::joinPath;

// The value of an environment variable that may replace a catalogue folder: only an
// absolute one counts, as a relative one would depend on where veldan was started.
std::optional<std::string> absoluteVariable(const char* name) {
    const char* value = std::getenv(name);
    if (value == nullptr || value[0] != '/') return std::nullopt;
    return platform::standardizePath(value);
}

// The folder with links resolved as far as it exists: the part that is missing is kept
// as written under its resolved parent.
std::string resolvedFolder(const std::string& path) {
    const std::string standardized = platform::standardizePath(path);
    const std::string resolved = platform::resolveSymlinks(standardized);
    if (resolved != standardized || standardized == "/") return resolved;
    if (platform::statPath(standardized, false)) return standardized;
    return joinPath(resolvedFolder(platform::parentPath(standardized)),
                    platform::lastPathComponent(standardized));
}

AIStorageSource row(std::string path, std::string label, AIStorageKind kind,
                    bool cleanable = false) {
    return {std::move(path), std::move(label), kind, false, cleanable};
}

}  // namespace

AIStorageCatalogueFolders AIStorageCatalogueFolders::current() {
    AIStorageCatalogueFolders folders;
    folders.home = resolvedFolder(platform::homeFolder());
    folders.configHome = resolvedFolder(platform::configHome());
    folders.cacheHome = resolvedFolder(platform::cacheHome());
    folders.ollamaModels =
        absoluteVariable("OLLAMA_MODELS").value_or(joinPath(folders.home, ".ollama/models"));
    folders.huggingFace =
        absoluteVariable("HF_HOME").value_or(joinPath(folders.home, ".cache/huggingface"));
    folders.geminiHome = absoluteVariable("GEMINI_CLI_HOME").value_or(folders.home);
    return folders;
}

std::vector<AIStorageTool> AIStorageCatalogue::tools(const AIStorageCatalogueFolders& f) {
    using K = AIStorageKind;
    const auto home = [&](const char* relative) { return joinPath(f.home, relative); };
    const auto config = [&](const std::string& relative) {
        return joinPath(f.configHome, relative);
    };
    const auto cache = [&](const char* relative) { return joinPath(f.cacheHome, relative); };
    constexpr bool cleanable = true;

    std::vector<AIStorageTool> tools;
    for (AIStorageToolID id : allAIStorageToolIDs)
        tools.push_back(AIStorageTool::named(id));
    const auto sources = [&](AIStorageToolID id) -> std::vector<AIStorageSource>& {
        return tools[static_cast<size_t>(id)].sources;
    };

    sources(AIStorageToolID::ollama) = {
        row(f.ollamaModels, "Downloaded models", K::models),
        row(f.systemOllamaModels, "Downloaded models", K::models),
        row(home(".ollama/logs"), "Logs", K::logs, cleanable),
        row(cache("ollama"), "App cache", K::cache, cleanable),
        row(cache("com.electron.ollama"), "Desktop cache", K::cache, cleanable),
    };
    sources(AIStorageToolID::lmstudio) = {
        row(home(".lmstudio/models"), "Downloaded models", K::models),
        row(home(".lmstudio/conversations"), "Conversations", K::conversations),
        row(home(".lmstudio/logs"), "Logs", K::logs, cleanable),
        row(cache("LM Studio"), "App cache", K::cache, cleanable),
        row(home(".cache/lm-studio"), "Legacy LM Studio data", K::appData),
        row(home(".lmstudio"), "Other LM Studio data", K::appData),
    };
    sources(AIStorageToolID::cursor) = {
        row(config("Cursor/logs"), "Editor logs", K::logs, cleanable),
        row(cache("Cursor"), "Editor cache", K::cache, cleanable),
        row(config("Cursor/User/workspaceStorage"), "Workspace data", K::workspace),
        row(home(".cursor"), "Agent data and settings", K::appData),
    };
    for (const char* editor : {"Code", "Code - Insiders", "Cursor"}) {
        for (const char* extension : {"github.copilot-chat", "github.copilot"}) {
            sources(AIStorageToolID::copilot)
                .push_back(row(config(std::string(editor) + "/User/globalStorage/" + extension),
                               std::string(editor) + " \u00B7 " + extension, K::appData));
        }
    }
    sources(AIStorageToolID::claude) = {
        row(home(".claude/projects"), "Project conversations", K::conversations),
        row(home(".claude/sessions"), "Sessions", K::conversations),
        row(home(".claude/cache"), "Cache", K::cache, cleanable),
        row(home(".claude/paste-cache"), "Paste cache", K::cache, cleanable),
        row(home(".claude/telemetry"), "Telemetry", K::logs, cleanable),
        row(home(".claude"), "Other Claude data", K::appData),
    };
    sources(AIStorageToolID::codex) = {
        row(home(".codex/sessions"), "Sessions", K::conversations),
        row(home(".codex/archived_sessions"), "Archived sessions", K::conversations),
        row(home(".codex/cache"), "Cache", K::cache, cleanable),
        row(home(".codex/log"), "Logs", K::logs, cleanable),
        row(home(".codex"), "Other Codex data", K::appData),
    };
    sources(AIStorageToolID::gemini) = {
        row(joinPath(f.geminiHome, ".gemini/tmp"), "Sessions and workspace data", K::workspace),
    };
    // Of kind cache, yet never cleanable: it holds the downloaded models.
    sources(AIStorageToolID::huggingface) = {
        row(f.huggingFace, "Model and dataset cache", K::cache),
    };
    return tools;
}

bool AIStorageCatalogue::isCleanablePath(const std::string& path) {
    struct Built {
        std::string key;
        std::unordered_set<std::string> paths;
    };
    static std::mutex mutex;
    static std::optional<Built> built;
    // The cleanable rows depend only on the home and XDG folders; a process keeps them,
    // tests change them between cases.
    std::string key;
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"}) {
        const char* value = std::getenv(name);
        key += value ? std::string(value) + '\0' : std::string("\1\0", 2);
    }
    std::lock_guard lock(mutex);
    if (!built || built->key != key) {
        built.emplace(Built{key, {}});
        for (const auto& tool : tools()) {
            for (const auto& source : tool.sources) {
                if (source.cleanable) built->paths.insert(source.path);
            }
        }
    }
    return built->paths.contains(path);
}

}  // namespace veldan
