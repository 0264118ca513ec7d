// The catalogue as built from a temporary home and environment, and the folders the user
// adds, kept in real preferences.

#include "aistorage/AIStorageCatalogue.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "aistorage/AIStorageCustomLocations.hpp"
#include "platform/Preferences.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/IsolatedHome.hpp"

namespace veldan {
namespace {

struct Row {
    std::string tool;
    std::string label;
    std::string kind;
    bool cleanable;
};

// Every row, by path, with the home folder written as "~", the config home as "<config>"
// and the cache home as "<cache>".
std::map<std::string, Row> rowsByPath(const test::IsolatedHome& home,
                                      const std::vector<AIStorageTool>& tools) {
    const std::string config = home / "xdg-config";
    const std::string cache = home / "xdg-cache";
    std::map<std::string, Row> rows;
    for (const auto& tool : tools) {
        for (const auto& source : tool.sources) {
            std::string path = source.path;
            for (const auto& [prefix, name] :
                 {std::pair{config, "<config>"}, {cache, "<cache>"}, {home.home(), "~"}}) {
                if (path.starts_with(prefix + "/")) {
                    path = name + path.substr(prefix.size());
                    break;
                }
            }
            EXPECT_FALSE(source.isCustom);
            rows[path] = {std::string(aiStorageToolRawValue(tool.id)), source.label,
                          std::string(aiStorageKindRawValue(source.kind)), source.cleanable};
        }
    }
    return rows;
}

TEST(AIStorageCatalogue, RowsFollowTheHomeTheXdgFoldersAndAbsoluteToolVariables) {
    struct Case {
        std::string name;
        std::function<void(test::ScopedEnvironment&, const std::string& home)> set;
        std::map<std::string, std::string> changed;  // row -> its path in this environment
    };
    const std::vector<Case> cases = {
        {"defaults", [](auto&, auto&) {}, {}},
        {"relative variables are ignored",
         [](auto& env, auto&) {
             env.set("OLLAMA_MODELS", "models");
             env.set("HF_HOME", "hf");
             env.set("GEMINI_CLI_HOME", "");
         },
         {}},
        {"absolute variables replace their rows",
         [](auto& env, auto& home) {
             env.set("OLLAMA_MODELS", home + "/big//models/");
             env.set("HF_HOME", "/srv/hf");
             env.set("GEMINI_CLI_HOME", "/opt/g");
         },
         {{"~/.ollama/models", "~/big/models"},
          {"~/.cache/huggingface", "/srv/hf"},
          {"~/.gemini/tmp", "/opt/g/.gemini/tmp"}}},
    };
    for (const auto& testCase : cases) {
        SCOPED_TRACE(testCase.name);
        test::IsolatedHome home;
        test::ScopedEnvironment environment;
        environment.set("XDG_CONFIG_HOME", home / "xdg-config");
        environment.set("XDG_CACHE_HOME", home / "xdg-cache");
        testCase.set(environment, home.home());
        auto rows = rowsByPath(home, AIStorageCatalogue::tools());
        for (const auto& [row, path] : testCase.changed) {
            ASSERT_TRUE(rows.contains(path)) << path;
            EXPECT_FALSE(rows.contains(row));
            rows[row] = rows[path];
            rows.erase(path);
        }
        std::set<std::string> cleanable;
        for (const auto& [path, row] : rows) {
            if (row.cleanable) cleanable.insert(path);
        }
        EXPECT_EQ(cleanable, (std::set<std::string>{
                                 "~/.ollama/logs", "<cache>/ollama", "<cache>/com.electron.ollama",
                                 "~/.lmstudio/logs", "<cache>/LM Studio", "<config>/Cursor/logs",
                                 "<cache>/Cursor", "~/.claude/cache", "~/.claude/paste-cache",
                                 "~/.claude/telemetry", "~/.codex/cache", "~/.codex/log"}));
        for (const auto& path : cleanable) {
            EXPECT_TRUE(rows[path].kind == "cache" || rows[path].kind == "logs") << path;
        }
        EXPECT_EQ(rows.size(), 34u);
        const auto& models = rows["/usr/share/ollama/.ollama/models"];
        EXPECT_EQ(models.tool + models.label + models.kind, "ollamaDownloaded modelsmodels");
        const auto& copilot = rows["<config>/Code - Insiders/User/globalStorage/github.copilot"];
        EXPECT_EQ(copilot.label, "Code - Insiders \u00b7 github.copilot");
        EXPECT_EQ(copilot.tool + copilot.kind, "copilotappData");
        const auto& hf = rows["~/.cache/huggingface"];
        EXPECT_EQ(hf.kind + hf.label, "cacheModel and dataset cache");
        EXPECT_EQ(rows["~/.codex/log"].label, "Logs");
        EXPECT_EQ(rows["~/.cache/lm-studio"].kind, "appData");
    }
}

TEST(AIStorageCatalogue, AHomeReachedThroughALinkIsUsedResolved) {
    test::IsolatedHome home;
    test::ScopedEnvironment environment;
    const std::string real = home.home();
    const std::string linked = real + "-linked";
    test::makeSymlink(real, linked);
    environment.set("HOME", linked);
    const auto tools = AIStorageCatalogue::tools();
    EXPECT_EQ(tools[static_cast<size_t>(AIStorageToolID::claude)].sources.back().path,
              real + "/.claude");
    EXPECT_TRUE(AIStorageCatalogue::isCleanablePath(real + "/.codex/cache"));
    EXPECT_FALSE(AIStorageCatalogue::isCleanablePath(linked + "/.codex/cache"));
    EXPECT_FALSE(AIStorageCatalogue::isCleanablePath(real + "/.codex"));
}

TEST(AIStorageCustomLocations, AreAddedOnceChangedRemovedAndKeptInThePreferences) {
    test::IsolatedHome home;
    test::makeFolders(home / "models/mine");
    test::makeSymlink(home / "models/mine", home / "via-link");
    const auto catalogue = AIStorageCatalogue::tools();
    std::vector<AIStorageCustomLocation> added;
    ASSERT_TRUE(AIStorageCustomLocations::add(added, home / "via-link", AIStorageToolID::ollama,
                                              AIStorageKind::models, catalogue));
    EXPECT_EQ(added[0].path, home / "models/mine");
    for (const std::string& refused : {home / "models/mine", home / "models/mine/", home / "nope",
                                       home / "models/../models/mine/../../missing"}) {
        EXPECT_FALSE(AIStorageCustomLocations::add(added, refused, AIStorageToolID::other,
                                                   AIStorageKind::cache, catalogue))
            << refused;
    }
    test::makeFolders(home / ".claude");
    EXPECT_FALSE(AIStorageCustomLocations::add(added, home / ".claude", AIStorageToolID::claude,
                                               AIStorageKind::appData, catalogue));
    ASSERT_TRUE(AIStorageCustomLocations::update(added, home / "models/mine",
                                                 AIStorageToolID::lmstudio, AIStorageKind::cache));
    EXPECT_FALSE(AIStorageCustomLocations::update(added, home / "nope", AIStorageToolID::other,
                                                  AIStorageKind::cache));

    ASSERT_TRUE(AIStorageCustomLocations::save(added));
    EXPECT_EQ(AIStorageCustomLocations::load(), added);
    ASSERT_TRUE(AIStorageCustomLocations::remove(added, home / "models/mine"));
    EXPECT_FALSE(AIStorageCustomLocations::remove(added, home / "models/mine"));
    // A damaged list is reported as unreadable, never taken for an empty one.
    ASSERT_TRUE(
        platform::Preferences::setData(AIStorageCustomLocations::preferenceKey, "bplist00"));
    EXPECT_FALSE(AIStorageCustomLocations::load());
}

}  // namespace
}  // namespace veldan
