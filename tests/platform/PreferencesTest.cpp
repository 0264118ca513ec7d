#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/Preferences.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/IsolatedHome.hpp"

namespace veldan::platform {
namespace {

using std::chrono::system_clock;
using test::IsolatedHome;

TEST(Preferences, LivesInThePrivateVeldanFolderOfTheConfigHome) {
    IsolatedHome home;
    EXPECT_EQ(Preferences::filePath(), home.configHome() + "/Veldan/Veldan.conf");
    ASSERT_TRUE(Preferences::setBoolean("diskNibDidCompleteOnboarding", true));
    struct stat status {};
    ASSERT_EQ(::stat((home.configHome() + "/Veldan").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700u);
    EXPECT_NE(test::readFile(Preferences::filePath()).find("diskNibDidCompleteOnboarding=true"),
              std::string::npos);
}

TEST(Preferences, KeepsDatesToTheMillisecond) {
    IsolatedHome home;
    const std::string key = "veldanScanCacheStale." + std::string(64, 'a');
    EXPECT_FALSE(Preferences::date(key));
    const auto when = system_clock::time_point(std::chrono::microseconds(1'790'000'000'123'456));
    ASSERT_TRUE(Preferences::setDate(key, when));
    EXPECT_EQ(Preferences::date(key),
              system_clock::time_point(std::chrono::milliseconds(1'790'000'000'123)));
}

TEST(Preferences, FollowsTheConfigHomeOfTheMoment) {
    std::optional<IsolatedHome> first(std::in_place);
    ASSERT_TRUE(Preferences::setInteger("diskNibOnboardingStep", 3));
    first.reset();
    IsolatedHome second;
    EXPECT_FALSE(Preferences::integer("diskNibOnboardingStep"));
    ASSERT_TRUE(Preferences::setInteger("diskNibOnboardingStep", 4));
    EXPECT_EQ(Preferences::integer("diskNibOnboardingStep"), 4);
}

TEST(Preferences, KeepsTextByteForByte) {
    IsolatedHome home;
    const std::string utf8 = "/Users/ana/R\xC3\xA9sum\xC3\xA9s";
    const std::string latin1 = "/Users/ana/R\xE9sum\xE9s";
    ASSERT_TRUE(Preferences::setString("diskNibLastScanPath", utf8));
    EXPECT_EQ(Preferences::string("diskNibLastScanPath"), utf8);
    ASSERT_TRUE(Preferences::setString("diskNibLastScanPath", latin1));
    EXPECT_EQ(Preferences::string("diskNibLastScanPath"), latin1);
    // Data stays data even when its bytes happen to read as text.
    const std::string plist = std::string("bplist00\0\xD0", 10) + "\n=[General]";
    for (const std::string& bytes : {plist, std::string("plain")}) {
        ASSERT_TRUE(Preferences::setData("veldanAIStorageCustomLocations", bytes));
        EXPECT_EQ(Preferences::data("veldanAIStorageCustomLocations"), bytes);
    }
    ASSERT_TRUE(Preferences::setString("diskNibLastScanPath", utf8));
    EXPECT_FALSE(Preferences::data("diskNibLastScanPath"));
}

TEST(Preferences, KeepsListsOfAnyLength) {
    IsolatedHome home;
    const std::vector<std::string> folders = {"/a", "/b c", "/d\xFF"};
    ASSERT_TRUE(Preferences::setStrings("recentScanFolders", folders));
    EXPECT_EQ(Preferences::strings("recentScanFolders"), folders);
    ASSERT_TRUE(Preferences::setStrings("recentScanFolders", {"/only"}));
    EXPECT_EQ(Preferences::strings("recentScanFolders"), std::vector<std::string>{"/only"});
    ASSERT_TRUE(Preferences::setStrings("recentScanFolders", {}));
    auto empty = Preferences::strings("recentScanFolders");
    EXPECT_TRUE(!empty || empty->empty());
}

TEST(Preferences, RemovesKeysAndReadsBooleansWrittenAsText) {
    IsolatedHome home;
    ASSERT_TRUE(Preferences::setBoolean("diskNibShowMenuBarExtra", false));
    EXPECT_EQ(Preferences::boolean("diskNibShowMenuBarExtra"), false);
    ASSERT_TRUE(Preferences::remove("diskNibShowMenuBarExtra"));
    EXPECT_FALSE(Preferences::boolean("diskNibShowMenuBarExtra"));
    test::writeFile(Preferences::filePath(), "[General]\ndiskNibExplorerListMode=true\n");
    EXPECT_EQ(Preferences::boolean("diskNibExplorerListMode"), true);
}

}  // namespace
}  // namespace veldan::platform
