// Searching real project trees for generated folders and measuring them.

#include "devcleanup/DevCleanupScanner.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <mutex>
#include <tuple>

#include "devcleanup/DevWalkRules.hpp"
#include "tests/devcleanup/DevTestSupport.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {
namespace {

using Kind = DevCleanupKind;

struct RecognitionCase {
    const char* what;
    std::vector<std::string> layout;
    std::map<std::string, Kind> found;
};

TEST(DevCleanupScanner, RecognisesEachKindOnlyWithItsMarker) {
    const RecognitionCase cases[] = {
        {"node_modules beside either manifest",
         {"a/package.json", "a/node_modules/x/index.js", "b/pnpm-workspace.yaml",
          "b/node_modules/"},
         {{"a/node_modules", Kind::node}, {"b/node_modules", Kind::node}}},
        {"node_modules without a manifest is searched like any folder",
         {"p/node_modules/tool/Cargo.toml", "p/node_modules/tool/target/"},
         {{"p/node_modules/tool/target", Kind::rust}}},
        {"a nested tree is part of the outer one",
         {"p/package.json", "p/node_modules/a/package.json", "p/node_modules/a/node_modules/"},
         {{"p/node_modules", Kind::node}}},
        {"target only beside Cargo.toml",
         {"r/Cargo.toml", "r/target/debug/", "m/pom.xml", "m/target/"},
         {{"r/target", Kind::rust}}},
        {"environments only holding pyvenv.cfg",
         {"a/venv/pyvenv.cfg", "b/.venv/pyvenv.cfg", "c/venv/lib/"},
         {{"a/venv", Kind::python}, {"b/.venv", Kind::python}}},
        {".build beside Package.swift",
         {"s/Package.swift", "s/.build/"},
         {{"s/.build", Kind::swift}}},
        {".next only beside package.json",
         {"n/package.json", "n/.next/", "o/Cargo.toml", "o/.next/"},
         {{"n/.next", Kind::next}}},
        {"a manifest through a link counts, a dangling one does not",
         {"real.json", "l/package.json@../real.json", "l/node_modules/", "d/package.json@missing",
          "d/node_modules/"},
         {{"l/node_modules", Kind::node}}},
        {"a generated folder that is a link is never one",
         {"p/package.json", "p/node_modules@../elsewhere", "elsewhere/"},
         {}},
        {"caches, version control, the Trash, packages and the home Library are never entered",
         {".git/p/package.json", ".git/p/node_modules/", ".cargo/r/Cargo.toml", ".cargo/r/target/",
          ".Trash/p/package.json", ".Trash/p/node_modules/", ".Trash-0/p/package.json",
          ".Trash-0/p/node_modules/", "Tool.APP/p/package.json", "Tool.APP/p/node_modules/",
          "Library/p/package.json", "Library/p/node_modules/", "x/Library/package.json",
          "x/Library/node_modules/"},
         {{"x/Library/node_modules", Kind::node}}},
    };
    for (const auto& c : cases) {
        test::TempDir dir;
        test::layOut(dir.path(), c.layout);
        const auto result = test::searched(dir.path(), dir.path());
        EXPECT_EQ(test::foundKinds(result, dir.path()), c.found) << c.what;
        for (const auto& [relative, kind] : c.found) {
            const std::string path = dir / relative;
            const std::string name = path.substr(path.rfind('/') + 1);
            EXPECT_EQ(DevCleanupScanner::kind(path, name), kind) << c.what;
            const int parent = ::open(path.substr(0, path.rfind('/')).c_str(), O_PATH);
            EXPECT_EQ(DevCleanupScanner::kindAt(parent, name), kind) << c.what;
            ::close(parent);
        }
    }
}

TEST(DevCleanupScanner, WholeDiskSearchSkipsSystemAndOtherDiskRootsOnly) {
    const DevWalkRules disk("/", 1, "/home/u");
    const DevWalkRules folder("/mnt/disk", 1, "/home/u");
    for (const char* root : {"/proc", "/sys", "/dev", "/run", "/media", "/mnt"}) {
        EXPECT_TRUE(disk.skipsFolder(root, root + 1)) << root;
        EXPECT_FALSE(folder.skipsFolder(std::string("/mnt/disk") + root, root + 1)) << root;
    }
    EXPECT_FALSE(disk.skipsFolder("/home", "home"));
    EXPECT_TRUE(folder.skipsFolder("/home/u/Library", "Library"));
}

// A project whose dependency tree holds files, a subfolder, a link and a file hard-linked
// twice inside it and once from another project.
class DevCleanupMeasureTest : public ::testing::Test {
protected:
    void SetUp() override {
        test::layOut(dir_.path(), {"a/package.json", "a/node_modules/pkg/", "b/Cargo.toml",
                                   "b/target/", "a/node_modules/.bin/tool@../pkg/index.js"});
        test::writeFileOfSize(dir_ / "a/node_modules/pkg/index.js", 70'000);
        test::writeFileOfSize(dir_ / "a/node_modules/big", 300'000);
        test::makeHardLink(dir_ / "a/node_modules/big", dir_ / "a/node_modules/pkg/big-link");
        test::makeHardLink(dir_ / "a/node_modules/big", dir_ / "b/target/big-link");
    }
    int64_t bytesOf(const std::vector<std::string>& relatives) const {
        int64_t sum = 0;
        for (const auto& relative : relatives)
            sum += test::allocatedBytes(dir_ / relative);
        return sum;
    }
    test::TempDir dir_;
};

TEST_F(DevCleanupMeasureTest, CountsEveryEntryOnceAndHardLinksOncePerItem) {
    const auto result = test::searched(dir_.path());
    ASSERT_EQ(result.items.size(), 2u);
    const auto& node = result.items[0];
    EXPECT_EQ(node.path, dir_ / "a/node_modules");
    EXPECT_EQ(node.bytes,
              bytesOf({"a/node_modules/pkg", "a/node_modules/pkg/index.js", "a/node_modules/big",
                       "a/node_modules/.bin", "a/node_modules/.bin/tool"}));
    EXPECT_EQ(node.unreadableItems, 0);
    const auto& rust = result.items[1];
    EXPECT_EQ(rust.bytes, bytesOf({"b/target/big-link"}));
    EXPECT_EQ(result.bytes, node.bytes + rust.bytes);
    EXPECT_EQ(result.itemBytesByPath.at(rust.path), rust.bytes);
    EXPECT_EQ(result.unreadableItems, 0);
    EXPECT_EQ(result.scope, dir_.path());
    const auto status = platform::statPath(node.path, false);
    ASSERT_TRUE(status);
    EXPECT_TRUE(node.isSameFolder(*status));
    EXPECT_TRUE(DevCleanupScanner::stillMatchesContents(node));
}

TEST_F(DevCleanupMeasureTest, FingerprintNoticesEveryChangeInside) {
    const std::string path = dir_ / "a/node_modules";
    DevCleanupItem before = test::itemAt(test::searched(dir_.path()), path);
    const std::vector<std::pair<const char*, std::function<void()>>> changes = {
        {"a file added deep inside", [&] { test::writeFile(dir_ / "a/node_modules/pkg/new", ""); }},
        {"a file renamed",
         [&] {
             ::rename((dir_ / "a/node_modules/pkg/new").c_str(),
                      (dir_ / "a/node_modules/pkg/renamed").c_str());
         }},
        {"a file rewritten in place",
         [&] { test::writeFileOfSize(dir_ / "a/node_modules/pkg/index.js", 70'000, 9); }},
    };
    for (const auto& [what, change] : changes) {
        change();
        EXPECT_FALSE(DevCleanupScanner::stillMatchesContents(before)) << what;
        const DevCleanupItem after = test::itemAt(test::searched(dir_.path()), path);
        EXPECT_NE(after.contentsFingerprint, before.contentsFingerprint) << what;
        before = after;
    }
}

TEST(DevCleanupScanner, ItemsComeLargestFirstAndTheTotalCountsOverlapsOnce) {
    std::vector<DevCleanupItem> items(5);
    const std::pair<const char*, int64_t> folders[] = {{"/p/node_modules", 100},
                                                       {"/p/node_modules-x/target", 20},
                                                       {"/p/node_modules/x/target", 40},
                                                       {"/p/node_modules/x/target", 40},
                                                       {"/q/.venv", 10}};
    for (size_t i = 0; i < items.size(); ++i) {
        items[i].path = folders[i].first;
        items[i].bytes = folders[i].second;
    }
    const auto unionOf = [&](std::vector<size_t> indexes) {
        std::vector<const DevCleanupItem*> chosen;
        for (size_t i : indexes)
            chosen.push_back(&items[i]);
        return DevCleanupResult::unionBytes(chosen);
    };
    EXPECT_EQ(unionOf({4, 2, 1, 0, 3}), 130);
    EXPECT_EQ(unionOf({2, 3, 4}), 50);

    test::TempDir dir;
    test::layOut(dir.path(), {"small/Cargo.toml", "small/target/", "big/package.json",
                              "big/node_modules/", "tie/package.json", "tie/.next/"});
    test::writeFileOfSize(dir / "big/node_modules/f", 200'000);
    const auto sorted = test::searched(dir.path());
    ASSERT_EQ(sorted.items.size(), 3u);
    EXPECT_EQ(sorted.items[0].path, dir / "big/node_modules");
    EXPECT_EQ(sorted.items[1].path, dir / "small/target");  // equal sizes: by path
    EXPECT_EQ(sorted.items[2].path, dir / "tie/.next");
}

TEST(DevCleanupScanner, NamesThatAreNotUtf8AndTreesDeeperThanPathMax) {
    test::TempDir dir;
    const std::string odd = "proj\xff\xfe\n";
    test::layOut(dir.path(), {odd + "/package.json", odd + "/node_modules/"});
    int fd = ::open(dir.path().c_str(), O_RDONLY | O_DIRECTORY);
    const std::string level(60, 'd');
    std::string deep = dir.path();
    for (int i = 0; i < 80; ++i) {  // about 4,900 bytes of path, past PATH_MAX
        ASSERT_EQ(::mkdirat(fd, level.c_str(), 0755), 0);
        const int next = ::openat(fd, level.c_str(), O_RDONLY | O_DIRECTORY);
        ::close(fd);
        fd = next;
        deep += "/" + level;
    }
    ::close(::openat(fd, "Cargo.toml", O_WRONLY | O_CREAT, 0644));
    ASSERT_EQ(::mkdirat(fd, "target", 0755), 0);
    int inside = ::openat(fd, "target", O_RDONLY | O_DIRECTORY);
    for (int i = 0; i < 10; ++i) {  // contents deeper still
        ::mkdirat(inside, level.c_str(), 0755);
        const int next = ::openat(inside, level.c_str(), O_RDONLY | O_DIRECTORY);
        ::close(inside);
        inside = next;
    }
    const int file = ::openat(inside, "bottom", O_WRONLY | O_CREAT, 0644);
    ASSERT_EQ(::write(file, std::string(20'000, 'x').data(), 20'000), 20'000);
    struct stat bottom {
    }, folder{};
    ::fstat(file, &bottom);
    ::fstat(inside, &folder);
    for (int handle : {file, inside, fd})
        ::close(handle);

    const auto result = test::searched(dir.path());
    const auto found = test::foundKinds(result, dir.path());
    EXPECT_EQ(found.at(odd + "/node_modules"), Kind::node);
    const auto& target = test::itemAt(result, deep + "/target");
    EXPECT_EQ(target.unreadableItems, 0);
    EXPECT_EQ(target.bytes, 10 * folder.st_blocks * 512 + bottom.st_blocks * 512);
    EXPECT_TRUE(DevCleanupScanner::stillMatchesContents(target));
}

TEST(DevCleanupScanner, RefusesScopesItCannotSearch) {
    test::TempDir dir;
    test::writeFile(dir / "file", "x");
    test::makeSymlink(dir.path(), dir / "link");
    ScanCancellation cancellation;
    for (const std::string scope : {dir / "missing", dir / "file", dir / "link"})
        EXPECT_FALSE(DevCleanupScanner("/").scan(scope, cancellation)) << scope;
}

TEST(DevCleanupScanner, ReportsBothPhasesAndCancellingReturnsNothing) {
    test::TempDir dir;
    for (int i = 0; i < 6; ++i)
        test::layOut(dir.path(), {"p" + std::to_string(i) + "/package.json",
                                  "p" + std::to_string(i) + "/node_modules/x/"});
    std::mutex lock;
    std::vector<std::tuple<DevCleanupScanPhase, std::string, int64_t, int64_t>> reports;
    ScanCancellation cancellation;
    const auto result = DevCleanupScanner("/").scan(
        dir.path(), cancellation,
        [&](auto phase, std::string_view label, int64_t done, int64_t total) {
            std::lock_guard guard(lock);
            reports.emplace_back(phase, std::string(label), done, total);
        });
    ASSERT_TRUE(result);
    ASSERT_GE(reports.size(), 3u);
    using P = DevCleanupScanPhase;
    EXPECT_EQ(reports.front(), std::make_tuple(P::discovering, "Finding generated folders", 0, 0));
    EXPECT_EQ(reports.back(), std::make_tuple(P::measuring, "Checking generated folders", 6, 6));
    EXPECT_NE(std::find(reports.begin(), reports.end(),
                        std::make_tuple(P::measuring, std::string("Checking generated folders"),
                                        int64_t{0}, int64_t{6})),
              reports.end());

    for (const auto phase : {P::discovering, P::measuring}) {
        ScanCancellation stop;
        const auto stopped = DevCleanupScanner("/").scan(
            dir.path(), stop, [&](auto now, std::string_view, int64_t, int64_t) {
                if (now == phase) stop.cancel();
            });
        EXPECT_FALSE(stopped) << static_cast<int>(phase);
    }
}

}  // namespace
}  // namespace veldan
