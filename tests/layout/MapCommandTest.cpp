// `veldan map` run as a real process on real folders: the pictures it writes parse, the
// JSON describes the layout, and every mistake ends with one sentence and no file.

#include <gtest/gtest.h>


#include "tests/support/Files.hpp"
#include "tests/support/Process.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {
namespace {

// Runs python3 with `script` and the given arguments; the script's exit status tells.
test::ProcessResult python(const std::string& script, const std::vector<std::string>& arguments) {
    std::vector<std::string> argv{"python3", "-c", script};
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    return test::runProcess(argv);
}

constexpr const char* parsesAsXml = R"(
import sys, xml.etree.ElementTree as tree
root = tree.parse(sys.argv[1]).getroot()
assert root.tag == '{http://www.w3.org/2000/svg}svg', root.tag
assert root.get('width') == sys.argv[2] and root.get('height') == sys.argv[3]
)";

// The tiles of the JSON on standard input: in the picture, levels 0 to 2, parents before
// their nested tiles, and every kept child of the shown folder present.
constexpr const char* checksTiles = R"(
import sys, json
document = json.load(sys.stdin)
width, height = int(sys.argv[1]), int(sys.argv[2])
assert document['view'] == 'treemap' and document['folder'] == sys.argv[3], document['folder']
tiles = document['tiles']
assert tiles and tiles[0]['x'] == 0 and tiles[0]['y'] == 0 and tiles[0]['level'] == 0
for tile in tiles:
    assert set(tile) == {'id', 'path', 'level', 'x', 'y', 'width', 'height', 'isSummary', 'category'}, tile
    assert 0 <= tile['level'] <= 2
    assert tile['x'] >= 0 and tile['y'] >= 0
    assert tile['x'] + tile['width'] <= width + 1e-6 and tile['y'] + tile['height'] <= height + 1e-6
    assert tile['id'] == tile['path'] + ('#summary' if tile['isSummary'] else '')
top = [tile['path'] for tile in tiles if tile['level'] == 0]
assert top == sys.argv[4:], top
)";

class MapCommand : public ::testing::Test {
protected:
    void SetUp() override {
        // Sizes decide the order: big, then middle (with nested files), then small.
        test::makeFolders(dir / "tree/big");
        test::writeFileOfSize(dir / "tree/big/data.bin", 600'000);
        test::makeFolders(dir / "tree/middle/inner");
        test::writeFileOfSize(dir / "tree/middle/inner/a", 200'000);
        test::writeFileOfSize(dir / "tree/middle/b", 100'000);
        test::writeFileOfSize(dir / "tree/small 'quoted' <&>", 40'000);
        test::makeFolders(dir / "tree/bad\xff name");
        test::writeFileOfSize(dir / "tree/bad\xff name/file", 20'000);
        test::makeFolders(dir / "out");
    }

    test::ProcessResult map(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {test::veldanBinary(), "map"});
        return test::runProcess(arguments);
    }

    test::TempDir dir;
};

TEST_F(MapCommand, WritesATreemapAsSvgPngAndJson) {
    const auto run = map({dir / "tree", "--size", "640x480", "--svg", dir / "out/map.svg", "--png",
                          dir / "out/map.png", "--json"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.err, "");

    const auto xml = python(parsesAsXml, {dir / "out/map.svg", "640", "480"});
    EXPECT_EQ(xml.exitCode, 0) << xml.err;
    const std::string png = test::readFile(dir / "out/map.png");
    ASSERT_GE(png.size(), 24u);
    EXPECT_EQ(png.substr(0, 8), "\x89PNG\r\n\x1a\n");
    EXPECT_EQ(png.substr(16, 8), std::string("\0\0\x02\x80\0\0\x01\xe0", 8));  // 640 x 480

    test::ProcessOptions input;
    input.input = run.out;
    const auto tiles = test::runProcess(
        {"python3", "-c", checksTiles, "640", "480", dir / "tree", dir / "tree/big",
         dir / "tree/middle", dir / "tree/small 'quoted' <&>", dir / "tree/bad\xff name"},
        input);
    EXPECT_EQ(tiles.exitCode, 0) << tiles.err << run.out;
}

TEST_F(MapCommand, DrawsTheOrbitOfASubfolder) {
    const auto run = map({dir / "tree", "--view", "orbit", "--folder", "middle", "--dark", "--size",
                          "500x300", "--svg", dir / "out/orbit.svg", "--json"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const auto xml = python(parsesAsXml, {dir / "out/orbit.svg", "500", "300"});
    EXPECT_EQ(xml.exitCode, 0) << xml.err;

    test::ProcessOptions input;
    input.input = run.out;
    const auto items =
        test::runProcess({"python3", "-c", R"(
import sys, json
document = json.load(sys.stdin)
assert document['view'] == 'orbit' and document['diameter'] == 300
assert document['folder'] == sys.argv[1]
items = document['items']
assert [item['path'] for item in items] == sys.argv[2:], items
assert items[0]['start'] == 0 and items[-1]['end'] == 1
for before, after in zip(items, items[1:]):
    assert before['end'] == after['start']
)",
                          dir / "tree/middle", dir / "tree/middle/inner", dir / "tree/middle/b"},
                         input);
    EXPECT_EQ(items.exitCode, 0) << items.err << run.out;
}

TEST_F(MapCommand, MistakesEndWithOneSentenceAndNoFile) {
    struct Case {
        std::vector<std::string> arguments;
        int exitCode;
        std::string message;
    };
    const std::string svg = dir / "out/map.svg";
    const Case cases[] = {
        {{"--size", "12x", "--svg", svg}, 2, "The picture size must be WIDTHxHEIGHT"},
        {{"--size", "10x10", "--svg", svg}, 2, "The picture size must be WIDTHxHEIGHT"},
        {{"--size", "1200x800x2", "--svg", svg}, 2, "The picture size must be WIDTHxHEIGHT"},
        {{"--folder", "nowhere", "--svg", svg}, 1, "'nowhere' is not a folder shown in the map"},
        {{"--folder", "big/data.bin", "--svg", svg}, 1, "is not a folder shown in the map"},
        {{"--svg", dir / "out/missing/map.svg"}, 1, "its folder does not exist."},
        {{"--png", dir / "out"}, 1, "it is a folder."},
        {{"--view", "pie", "--svg", svg}, 2, "--view"},
        {{}, 2, "Nothing to write; give --svg FILE, --png FILE or --json."},
    };
    for (const auto& c : cases) {
        auto arguments = c.arguments;
        arguments.insert(arguments.begin(), dir / "tree");
        const auto run = map(arguments);
        SCOPED_TRACE(c.message);
        EXPECT_EQ(run.exitCode, c.exitCode);
        EXPECT_NE(run.err.find(c.message), std::string::npos) << run.err;
        EXPECT_EQ(run.out, "");
        EXPECT_FALSE(test::exists(svg));
    }
    const auto run = map({dir / "tree", "--size", "12x", "--svg", svg});
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
}

TEST_F(MapCommand, AnEmptyFolderStillGivesAPicture) {
    test::makeFolders(dir / "empty");
    const auto run = map(
        {dir / "empty", "--svg", dir / "out/empty.svg", "--png", dir / "out/empty.png", "--json"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(run.out.find("\"tiles\":[]"), std::string::npos) << run.out;
    EXPECT_NE(test::readFile(dir / "out/empty.svg").find("Nothing to map in this folder"),
              std::string::npos);
    EXPECT_TRUE(test::exists(dir / "out/empty.png"));

    // A folder measured as one block is not empty: the picture says why it has no tiles,
    // and its tile in the parent's map carries the label of its kind.
    test::makeFolders(dir / "app/node_modules/pkg");
    test::writeFile(dir / "app/package.json", "{}");
    test::writeFileOfSize(dir / "app/node_modules/pkg/index.js", 50'000);
    const auto block = map({dir / "app", "--folder", "node_modules", "--svg", dir / "out/nm.svg"});
    ASSERT_EQ(block.exitCode, 0) << block.err;
    EXPECT_NE(test::readFile(dir / "out/nm.svg")
                  .find("space without mapping every generated file inside it."),
              std::string::npos);
    ASSERT_EQ(map({dir / "app", "--svg", dir / "out/app.svg"}).exitCode, 0);
    EXPECT_NE(test::readFile(dir / "out/app.svg").find("Dependencies, measured together"),
              std::string::npos);
}

}  // namespace
}  // namespace veldan
