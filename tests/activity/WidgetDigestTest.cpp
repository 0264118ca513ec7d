// The widget digest in a real Gist.plist under a temporary XDG_STATE_HOME.

#include <gtest/gtest.h>

#include <filesystem>

#include "activity/WidgetDigest.hpp"
#include "activity/WidgetDigestCodec.hpp"
#include "platform/VolumeCapacity.hpp"
#include "tests/cache/LibplistEdit.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/IsolatedHome.hpp"

namespace veldan {

namespace {

using Clock = std::chrono::system_clock;
using namespace std::chrono_literals;

WidgetDigest settled() {
    WidgetDigest::drain();
    auto digest = WidgetDigest::load();
    if (!digest) throw std::runtime_error("no digest written");
    return *digest;
}

}  // namespace

TEST(WidgetDigest, TheFirstDigestNamesTheScopeWithItsVolumeBeforeTheScanFinishes) {
    test::IsolatedHome home;
    test::makeFolders(home / "Projects");
    const struct {
        std::string scope;
        std::string name;
        bool startup;
        bool home;
    } scopes[] = {{"/", "Startup disk", true, false},
                  {home.home(), "Home folder", false, true},
                  {home / "Projects", "Projects", false, false}};
    for (const auto& s : scopes) {
        std::filesystem::remove(WidgetDigest::filePath());
        WidgetDigest::markScanState(WidgetScanState::scanning, s.scope);
        const auto digest = settled();
        EXPECT_EQ(digest.scopeName, s.name);
        EXPECT_EQ(digest.activeScanScopeName, s.name);
        EXPECT_EQ(digest.isStartupDisk, s.startup);
        EXPECT_EQ(digest.isHomeFolder, s.home);
        EXPECT_EQ(digest.scanState, WidgetScanState::scanning);
        EXPECT_FALSE(digest.hasCompletedScan);
        EXPECT_GT(digest.totalBytes, 0);
        EXPECT_EQ(digest.totalBytes, platform::volumeCapacity(s.scope)->total);
    }
    EXPECT_EQ(WidgetDigest::filePath(), home.stateHome() + "/Veldan/Widget/Gist.plist");
}

TEST(WidgetDigest, OperationsChangeOnlyTheirFieldsAndQuittingNeverLeavesAScanRunning) {
    test::IsolatedHome home;
    test::makeFolders(home / "a/b");
    ScanSnapshot snapshot;
    snapshot.root.path = home / "a";
    snapshot.root.bytes = 9'000;
    snapshot.volume = {100, 1'000};
    snapshot.discoveredDirectories = {{home / "a/b", 4'000}, {home / "a/b/c", 1'000}};
    snapshot.finishedAt = Clock::now();
    Recommendation safe;
    safe.kind = RecommendationKind::safe;
    safe.paths = {home / "a/b", home / "a/b/c"};
    Recommendation review;
    WidgetDigest::save(
        WidgetDigest::forMap(home / "a", snapshot, {safe, review, review}, false, false, 77));
    auto digest = settled();
    EXPECT_EQ(digest.safeBytes, 4'000) << "nested folders counted once";
    EXPECT_EQ(digest.safeCount, 1);
    EXPECT_EQ(digest.reviewCount, 2);
    EXPECT_EQ(digest.freeBytes, 100) << "the scanner's reading of the volume";
    EXPECT_EQ(digest.scannedAt, std::chrono::floor<std::chrono::microseconds>(snapshot.finishedAt))
        << "dates are kept to the microsecond";
    EXPECT_TRUE(digest.hasCompletedScan);
    EXPECT_FALSE(digest.scanState);

    WidgetDigest::markNeedsRefresh({home / "elsewhere/x"});
    EXPECT_FALSE(settled().needsRefresh) << "a cleanup outside the map";
    WidgetDigest::markNeedsRefresh({home / "a/b/moved"});
    EXPECT_TRUE(settled().needsRefresh);

    WidgetDigest::markScanState(WidgetScanState::scanning, home / "a/b");
    WidgetDigest::updateMovedToTrashBytes(500);
    WidgetDigest::markInterruptedScanStopped();
    digest = settled();
    EXPECT_EQ(digest.scanState, WidgetScanState::stopped);
    EXPECT_EQ(digest.activeScanScopeName, "b");
    EXPECT_EQ(digest.scopeName, "a") << "the map shown is still the finished one";
    EXPECT_EQ(digest.movedToTrashBytes, 500);
    EXPECT_EQ(digest.mappedBytes, 9'000);
}

TEST(WidgetDigest, AStaleHeartbeatIsShownStoppedAndADamagedDigestStartsAgain) {
    test::IsolatedHome home;
    WidgetDigest digest;
    digest.scanState = WidgetScanState::scanning;
    const auto now = Clock::now();
    const struct {
        std::optional<Clock::time_point> heartbeat;
        WidgetScanState shown;
    } cases[] = {{now - 9min, WidgetScanState::scanning},
                 {now - 11min, WidgetScanState::stopped},
                 {now + 1h, WidgetScanState::stopped},
                 {std::nullopt, WidgetScanState::stopped}};
    for (const auto& c : cases) {
        digest.scanStateChangedAt = c.heartbeat;
        EXPECT_EQ(digest.shownScanState(now), c.shown);
    }

    test::makeFolders(home.stateHome() + "/Veldan/Widget");
    test::writeFile(WidgetDigest::filePath(), "bplist00\x01\x02 truncated");
    EXPECT_FALSE(WidgetDigest::load());
    WidgetDigest::refreshActiveScanHeartbeat();
    WidgetDigest::drain();
    EXPECT_FALSE(WidgetDigest::load()) << "nothing to renew: the file stays as it was";
    WidgetDigest::markScanState(WidgetScanState::attention, home.home());
    EXPECT_EQ(settled().scopeName, "Home folder");

    // A field of the wrong type (written by libplist) keeps its empty value; the rest shows.
    const auto written = settled();
    const auto edited = test::editWithLibplist(
        WidgetDigestCodec::encode(written),
        [](plist_t root) { plist_dict_set_item(root, "freeBytes", plist_new_string("lots")); });
    auto expected = written;
    expected.freeBytes = 0;
    EXPECT_EQ(WidgetDigestCodec::decode(edited), expected);
}

}  // namespace veldan
