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

struct PngSize {
    uint32_t width = 0;
    uint32_t height = 0;
};

// The size recorded in a PNG's header chunk, or nothing when it is not a PNG.
std::optional<PngSize> pngSize(const std::string& png) {
    if (png.size() < 24 || png.compare(0, 8, "\x89PNG\r\n\x1a\n") != 0 ||
        png.compare(12, 4, "IHDR") != 0) {
        return std::nullopt;
    }
    const auto word = [&](size_t at) {
        uint32_t value = 0;
        for (size_t i = 0; i < 4; ++i)
            value = (value << 8) | static_cast<unsigned char>(png[at + i]);
        return value;
    };
    return PngSize{word(16), word(20)};
}

std::string svgWith(const std::string& content) {
    return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"200\" height=\"80\">"
           "<rect width=\"200\" height=\"80\" fill=\"#ffffff\"/>" +
           content + "</svg>";
}

TEST(SvgRaster, DrawsThePictureAtTheRequestedSize) {
    const auto png = platform::renderSvgToPng(svgWith(""), 321, 123);
    ASSERT_TRUE(png.has_value());
    const auto size = pngSize(*png);
    ASSERT_TRUE(size.has_value());
    EXPECT_EQ(size->width, 321u);
    EXPECT_EQ(size->height, 123u);
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
