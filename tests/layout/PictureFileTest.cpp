// Pictures reach the disk whole: PNG drawing of the SVG text, and atomic replacement of
// the output file.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "platform/AtomicFile.hpp"
#include "platform/SvgRaster.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {
namespace {

std::string svgWith(const std::string& content) {
    return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"200\" height=\"80\">"
           "<rect width=\"200\" height=\"80\" fill=\"#ffffff\"/>" +
           content + "</svg>";
}

TEST(SvgRaster, DrawsThePictureAtTheRequestedSize) {
    const auto png = platform::renderSvgToPng(svgWith(""), 321, 123);
    ASSERT_TRUE(png.has_value());
    ASSERT_GE(png->size(), 24u);
    EXPECT_EQ(png->substr(0, 8), "\x89PNG\r\n\x1a\n");
    // The header chunk: 321 x 123.
    EXPECT_EQ(png->substr(12, 12), std::string("IHDR\0\0\x01\x41\0\0\0\x7b", 12));
}

TEST(SvgRaster, DrawsText) {
    // Text needs fonts, which Qt only offers with an application object; without one the
    // text would silently vanish (or the process abort).
    const auto blank = platform::renderSvgToPng(svgWith(""), 200, 80);
    const auto text = platform::renderSvgToPng(
        svgWith("<text x=\"10\" y=\"50\" font-size=\"30\" fill=\"#000000\">Veldan</text>"), 200,
        80);
    ASSERT_TRUE(blank && text);
    EXPECT_NE(*blank, *text);
}

TEST(SvgRaster, RefusesWhatIsNotAnSvgDocument) {
    EXPECT_FALSE(platform::renderSvgToPng("<svg><rect", 100, 100).has_value());
    EXPECT_FALSE(platform::renderSvgToPng("not a picture", 100, 100).has_value());
    EXPECT_FALSE(platform::renderSvgToPng(svgWith(""), 0, 100).has_value());
}

std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

TEST(AtomicFile, ReplacesContentsAndKeepsThePermissions) {
    test::TempDir dir;
    test::writeFile(dir / "map.svg", "old contents that are longer than the new");
    ASSERT_EQ(::chmod((dir / "map.svg").c_str(), 0640), 0);
    EXPECT_EQ(platform::writeFileAtomically(dir / "map.svg", "new"), std::nullopt);
    EXPECT_EQ(test::readFile(dir / "map.svg"), "new");
    struct stat status {};
    ASSERT_EQ(::stat((dir / "map.svg").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
    EXPECT_EQ(namesIn(dir.path()), (std::vector<std::string>{"map.svg"}));
}

TEST(AtomicFile, WritesThroughASymbolicLinkAndKeepsTheLink) {
    test::TempDir dir;
    test::writeFile(dir / "real.png", "old");
    test::makeSymlink("real.png", dir / "link.png");
    EXPECT_EQ(platform::writeFileAtomically(dir / "link.png", "new"), std::nullopt);
    EXPECT_EQ(test::readFile(dir / "real.png"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(dir / "link.png"));
}

TEST(AtomicFile, FailuresSayWhyAndLeaveNothingBehind) {
    test::TempDir dir;
    test::makeFolders(dir / "folder");
    EXPECT_EQ(platform::writeFileAtomically(dir / "folder", "x"), "Is a directory");
    EXPECT_EQ(platform::writeFileAtomically(dir / "missing/map.svg", "x"),
              "No such file or directory");
    EXPECT_EQ(platform::writeFileAtomically("/dev/null", "x"), "Not a regular file");
    EXPECT_EQ(namesIn(dir.path()), (std::vector<std::string>{"folder"}));
}

}  // namespace
}  // namespace veldan
