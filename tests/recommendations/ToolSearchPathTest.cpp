// Where the package tools are looked for.

#include "recommendations/ToolSearchPath.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <set>

#include "tests/support/Files.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {

TEST(ToolSearchPath, NodeVersionsComeFirstHighestThenTheUsualFoldersThenPath) {
    test::TempDir home;
    for (const char* version : {"v9.1.0", "v20.9.0", "v10.2.0", "v20.10.0"}) {
        test::makeFolders(home / ".nvm/versions/node" + "/" + version + "/bin");
    }
    test::writeFile(home / ".nvm/versions/node/not-a-folder", "");
    const auto list = ToolSearchPath::list(
        home.path(), "/usr/bin::" + home / ".local/bin" + ":/usr/local/bin:/bin:/usr/bin:");
    const std::string nvm = home / ".nvm/versions/node/";
    EXPECT_EQ(std::vector<std::string>(list.begin(), list.begin() + 4),
              (std::vector<std::string>{nvm + "v20.10.0/bin", nvm + "v20.9.0/bin",
                                        nvm + "v10.2.0/bin", nvm + "v9.1.0/bin"}));
    EXPECT_EQ(std::vector<std::string>(list.end() - 2, list.end()),
              (std::vector<std::string>{"/usr/bin", "/bin"}));
    EXPECT_EQ(std::set<std::string>(list.begin(), list.end()).size(), list.size())
        << "each folder once";
    EXPECT_FALSE(list[4].starts_with(nvm)) << list[4];
}

TEST(ToolSearchPath, RelativeEntriesOfPathAreNeverSearched) {
    test::TempDir home;
    const auto list =
        ToolSearchPath::list(home.path(), ".:node_modules/.bin:/usr/bin:bin:./tools:/bin:~/bin");
    EXPECT_EQ(std::vector<std::string>(list.end() - 2, list.end()),
              (std::vector<std::string>{"/usr/bin", "/bin"}));
    for (const auto& folder : list)
        EXPECT_TRUE(folder.starts_with('/')) << folder;

    // A project that ships its own npm is not where npm is found, even when the command
    // runs inside it.
    test::makeFolders(home / "project/node_modules/.bin");
    test::writeFile(home / "project/node_modules/.bin/npm", "#!/bin/sh\n");
    ::chmod((home / "project/node_modules/.bin/npm").c_str(), 0755);
    const std::string before = std::filesystem::current_path();
    std::filesystem::current_path(home / "project");
    const auto found =
        ToolSearchPath::find("npm", ToolSearchPath::list(home.path(), "node_modules/.bin"));
    std::filesystem::current_path(before);
    EXPECT_EQ(found, "");
}

TEST(ToolSearchPath, FindsTheFirstExecutableFile) {
    test::TempDir dir;
    test::makeFolders(dir / "a/npm");  // a folder is not a tool
    test::makeFolders(dir / "b");
    test::writeFile(dir / "b/npm", "not executable");
    test::makeFolders(dir / "c");
    test::writeFile(dir / "c/npm", "#!/bin/sh\n");
    ::chmod((dir / "c/npm").c_str(), 0755);
    test::makeFolders(dir / "d");
    test::makeSymlink(dir / "c/npm", dir / "d/npm");
    EXPECT_EQ(ToolSearchPath::find("npm", {dir / "a", dir / "b", dir / "d", dir / "c"}),
              dir / "d/npm");
    EXPECT_EQ(ToolSearchPath::find("uv", {dir / "a", dir / "c"}), "");
    EXPECT_EQ(ToolSearchPath::joined({"/a", "/b c"}), "/a:/b c");
}

}  // namespace veldan
