// Opaque folders and the full disk access probe, on real folders.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>

#include "scan/FullDiskAccess.hpp"
#include "scan/OpaqueFolderPolicy.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/Process.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {

using Kind = OpaqueFolderPolicy::Kind;

TEST(OpaqueFolderPolicy, GeneratedFoldersNeedTheirManifestWhereTheNameIsAmbiguous) {
    test::TempDir dir;
    const std::string home = dir / "home";
    test::makeFolders(dir / "rust/target");
    test::makeFolders(dir / "notes/target");
    test::writeFile(dir / "rust/Cargo.toml", "[package]\n");
    EXPECT_EQ(OpaqueFolderPolicy::kind(dir / "rust/target", home), Kind::buildOutput);
    EXPECT_EQ(OpaqueFolderPolicy::kind(dir / "notes/target", home), std::nullopt);

    test::makeFolders(dir / "swift/.build");
    test::makeFolders(dir / "other/.build");
    test::writeFile(dir / "swift/Package.swift", "");
    EXPECT_EQ(OpaqueFolderPolicy::kind(dir / "swift/.build", home), Kind::buildOutput);
    EXPECT_EQ(OpaqueFolderPolicy::kind(dir / "other/.build", home), std::nullopt);

    test::makeFolders(dir / "py/.venv");
    test::makeFolders(dir / "py/venv");
    test::writeFile(dir / "py/.venv/pyvenv.cfg", "home = /usr\n");
    EXPECT_EQ(OpaqueFolderPolicy::kind(dir / "py/.venv", home), Kind::environment);
    EXPECT_EQ(OpaqueFolderPolicy::kind(dir / "py/venv", home), std::nullopt);

    // A folder named like the manifest does not count as one.
    test::makeFolders(dir / "fake/Cargo.toml");
    test::makeFolders(dir / "fake/target");
    EXPECT_EQ(OpaqueFolderPolicy::kind(dir / "fake/target", home), std::nullopt);
}

TEST(OpaqueFolderPolicy, FixedNamesAndHomePaths) {
    const std::vector<std::pair<std::string, std::optional<Kind>>> cases = {
        {"/x/node_modules", Kind::dependencies},
        {"/x/.next", Kind::buildOutput},
        {"/x/__pycache__", Kind::pythonCache},
        {"/x/.git", Kind::versionHistory},
        {"/home/me/.cache/uv", Kind::packageCache},
        {"/home/me/.local/share/pnpm/store", Kind::packageCache},
        {"/home/me/go/pkg/mod", Kind::packageCache},
        {"/elsewhere/.cache/uv", std::nullopt},
        {"/home/me/Library/Developer/Xcode/DerivedData", Kind::buildOutput},
        {"/home/me/code/DerivedData", std::nullopt},
    };
    for (const auto& [path, kind] : cases)
        EXPECT_EQ(OpaqueFolderPolicy::kind(path, "/home/me"), kind) << path;
    EXPECT_EQ(OpaqueFolderPolicy::explanation(Kind::versionHistory),
              "Veldan counts this folder's space without mapping its internal history. It is "
              "never suggested for cleanup.");
}

TEST(FullDiskAccess, UnknownWhenNoProbeExistsAndGrantedWhenOneIsReadable) {
    test::TempDir home;
    EXPECT_EQ(FullDiskAccess::check(home.path()), FullDiskAccessState::unknown);
    test::makeFolders(home / "Library/Safari");
    test::writeFile(home / "Library/Safari/History.db", "x");
    EXPECT_EQ(FullDiskAccess::check(home.path()), FullDiskAccessState::granted);
}

// Re-runs this test as "nobody": root reads every probe whatever its mode.
TEST(FullDiskAccess, DeniedWhenAProbeExistsButIsRefused) {
    if (const char* probeHome = std::getenv("VELDAN_PROBE_HOME")) {
        const auto state = FullDiskAccess::check(probeHome);
        std::_Exit(state == FullDiskAccessState::denied ? 0 : 10 + static_cast<int>(state));
    }
    test::TempDir home;
    test::makeFolders(home / "Library/Mail");
    test::writeFile(home / "Library/Mail/inbox", "x");
    ASSERT_EQ(::chmod((home / "Library/Mail").c_str(), 0700), 0);
    char self[PATH_MAX] = {};
    ASSERT_GT(::readlink("/proc/self/exe", self, sizeof self - 1), 0);
    test::ProcessOptions options;
    options.environment["VELDAN_PROBE_HOME"] = home.path();
    auto result = test::runProcess(
        test::asNobody({self, "--gtest_filter=FullDiskAccess.DeniedWhenAProbeExistsButIsRefused"}),
        options);
    EXPECT_EQ(result.exitCode, 0) << result.out << result.err;
}

}  // namespace veldan
