// `cmake --install` lays out a working desktop installation: both programs, the module
// that draws PNG files, the desktop entry, icon and AppStream data (valid by the
// desktop's own validators when they are installed), the man page and the completions.

#include <gtest/gtest.h>

#include "tests/support/Files.hpp"
#include "tests/support/Process.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {
namespace {

bool installed(const std::string& program) {
    return test::runProcess({"sh", "-c", "command -v " + program}).exitCode == 0;
}

TEST(Install, PutsEverythingADesktopNeedsInPlace) {
    test::TempDir prefix;
    const auto install =
        test::runProcess({"cmake", "--install", VELDAN_BUILD_DIR, "--prefix", prefix.path()});
    ASSERT_EQ(install.exitCode, 0) << install.err;
    for (const char* file :
         {"bin/veldan", "bin/veldan-app", "lib/veldan/libveldan_raster.so",
          "share/applications/com.veldan.Veldan.desktop",
          "share/metainfo/com.veldan.Veldan.metainfo.xml",
          "share/icons/hicolor/scalable/apps/com.veldan.Veldan.svg", "share/man/man1/veldan.1",
          "share/bash-completion/completions/veldan", "share/zsh/vendor-completions/_veldan",
          "share/fish/vendor_completions.d/veldan.fish"}) {
        EXPECT_TRUE(test::exists(prefix / file)) << file;
    }

    if (installed("appstreamcli")) {
        const auto valid =
            test::runProcess({"appstreamcli", "validate", "--no-net",
                              prefix / "share/metainfo/com.veldan.Veldan.metainfo.xml"});
        EXPECT_EQ(valid.exitCode, 0) << valid.out << valid.err;
    }
    if (installed("desktop-file-validate")) {
        const auto valid = test::runProcess(
            {"desktop-file-validate", prefix / "share/applications/com.veldan.Veldan.desktop"});
        EXPECT_EQ(valid.exitCode, 0) << valid.out << valid.err;
    }

    // The installed command finds its drawing module and its completions know it.
    test::TempDir work;
    test::writeFileOfSize(work / "data.bin", 40'000);
    const auto png =
        test::runProcess({prefix / "bin/veldan", "map", work.path(), "--png", work / "map.png"},
                         {.environment = {{"XDG_CACHE_HOME", work / "cache"}}});
    EXPECT_EQ(png.exitCode, 0) << png.err;
    const auto completion = test::runProcess(
        {"bash", "-c",
         "source '" + prefix / "share/bash-completion/completions/veldan" +
             "'; COMP_WORDS=(veldan map --view ''); COMP_CWORD=3; _veldan; echo "
             "\"${COMPREPLY[*]}\"; "
             "COMP_WORDS=(veldan re); COMP_CWORD=1; _veldan; echo \"${COMPREPLY[*]}\""});
    EXPECT_EQ(completion.out, "treemap orbit\nrecommend report\n");
    if (installed("man")) {
        const auto manual =
            test::runProcess({"man", "--warnings", "-l", prefix / "share/man/man1/veldan.1"},
                             {.environment = {{"MANWIDTH", "80"}}});
        EXPECT_NE(manual.out.find("veldan duplicates [OPTIONS] [path]"), std::string::npos)
            << manual.err;
        EXPECT_EQ(manual.err, "");
    }
}

}  // namespace
}  // namespace veldan
