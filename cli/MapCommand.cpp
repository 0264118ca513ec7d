// `veldan map [PATH]`: measures a folder and draws the map of it (or of a folder inside
// it) as an SVG or PNG picture, or prints the laid-out tiles as JSON.

#include <CLI/CLI.hpp>
#include <charconv>
#include <iostream>
#include <memory>

#include "app/OrbitPicture.hpp"
#include "app/ScanJob.hpp"
#include "app/TreemapPicture.hpp"
#include "cli/CommandRegistry.hpp"
#include "cli/CommandScan.hpp"
#include "cli/JsonText.hpp"
#include "cli/Terminal.hpp"
#include "layout/OrbitLayout.hpp"
#include "layout/TreemapLayout.hpp"
#include "platform/AtomicFile.hpp"
#include "platform/FileStatus.hpp"
#include "platform/Paths.hpp"
#include "platform/SvgRaster.hpp"
#include "scan/DiskScanner.hpp"

namespace veldan::cli {

namespace {

constexpr int smallestSide = 50;
constexpr int largestSide = 8000;

struct MapOptions {
    std::string path = ".";
    std::string folder;
    std::string view = "treemap";
    std::string size = "1200x800";
    std::string svgFile;
    std::string pngFile;
    bool dark = false;
    bool json = false;
};

struct PictureSize {
    int width = 0;
    int height = 0;
};

int fail(const std::string& sentence) {
    std::cerr << "veldan: " << sentence << '\n';
    return exitFailure;
}

std::string named(std::string_view path) {
    return "'" + Terminal::display(path) + "'";
}

std::optional<int> parseSide(std::string_view text) {
    int value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || result.ec != std::errc() || result.ptr != text.data() + text.size()) {
        return std::nullopt;
    }
    if (value < smallestSide || value > largestSide) return std::nullopt;
    return value;
}

std::optional<PictureSize> parseSize(std::string_view text) {
    const size_t separator = text.find_first_of("xX");
    if (separator == std::string_view::npos) return std::nullopt;
    const auto width = parseSide(text.substr(0, separator));
    const auto height = parseSide(text.substr(separator + 1));
    if (!width || !height) return std::nullopt;
    return PictureSize{*width, *height};
}

// A sentence saying why a picture cannot be written to `path`, checked before the scan so
// that a mistyped folder does not cost a whole scan.
std::optional<std::string> outputProblem(const std::string& path) {
    const std::string absolute = platform::absolutePath(path);
    if (auto status = platform::statPath(absolute, true); status && status->isDirectory()) {
        return "Cannot write the picture to " + named(path) + ": it is a folder.";
    }
    auto folder = platform::statPath(platform::parentPath(absolute), true);
    if (!folder || !folder->isDirectory()) {
        return "Cannot write the picture to " + named(path) + ": its folder does not exist.";
    }
    return std::nullopt;
}

// The node of `path` in the map under `root`, if it is shown there as a folder of its own.
const DiskNode* findFolder(const DiskNode& root, const std::string& path) {
    const DiskNode* node = &root;
    while (node->path != path) {
        const DiskNode* next = nullptr;
        for (const auto& child : node->children) {
            if (!child.isSummary && platform::isSameOrUnder(path, child.path)) next = &child;
        }
        if (next == nullptr) return nullptr;
        node = next;
    }
    return node->isDirectory && !node->isSummary ? node : nullptr;
}

Json tilesJson(const DiskNode& folder, const std::vector<MapTile>& tiles, PictureSize size) {
    Json list = Json::array();
    for (const auto& tile : tiles) {
        list.push_back({{"id", tile.id()},
                        {"path", tile.node->path},
                        {"level", tile.level},
                        {"x", tile.frame.x},
                        {"y", tile.frame.y},
                        {"width", tile.frame.width},
                        {"height", tile.frame.height},
                        {"isSummary", tile.node->isSummary},
                        {"category", std::string(title(tile.node->category))}});
    }
    return {{"folder", folder.path},
            {"view", "treemap"},
            {"width", size.width},
            {"height", size.height},
            {"tiles", std::move(list)}};
}

Json orbitJson(const DiskNode& folder, const std::vector<OrbitItem>& items, int diameter) {
    Json list = Json::array();
    for (const auto& item : items) {
        list.push_back({{"path", item.node->path}, {"start", item.start}, {"end", item.end}});
    }
    return {{"folder", folder.path},
            {"view", "orbit"},
            {"diameter", diameter},
            {"items", std::move(list)}};
}

int writePicture(const std::string& path, std::string_view contents) {
    if (auto problem = platform::writeFileAtomically(path, contents)) {
        return fail("Cannot write the picture to " + named(path) + ": " + *problem + ".");
    }
    return exitSuccess;
}

int runMap(const MapOptions& options) {
    if (options.svgFile.empty() && options.pngFile.empty() && !options.json) {
        std::cerr << "veldan: Nothing to write; give --svg FILE, --png FILE or --json.\n";
        return exitUsage;
    }
    const auto size = parseSize(options.size);
    if (!size) {
        // A size out of range is a mistyped argument like any other, not a failed map.
        std::cerr << "veldan: The picture size must be WIDTHxHEIGHT with whole numbers from "
                  << smallestSide << " to " << largestSide << ", such as 1200x800.\n";
        return exitUsage;
    }
    for (const auto* file : {&options.svgFile, &options.pngFile}) {
        if (file->empty()) continue;
        if (auto problem = outputProblem(*file)) return fail(*problem);
    }
    const std::string root = commandScope(options.path);
    if (reportRootProblem(root)) return exitFailure;

    const auto outcome = scanForCommand(root, {});
    if (!outcome) {
        std::cerr << "Scan stopped before it finished; nothing was drawn.\n";
        return exitInterrupted;
    }

    const DiskNode& tree = outcome->snapshot.root;
    std::string shownPath = tree.path;
    if (!options.folder.empty()) {
        shownPath = options.folder.front() == '/' ? options.folder
                                                  : platform::joinPath(tree.path, options.folder);
    }
    const DiskNode* shown = findFolder(tree, platform::standardizePath(shownPath));
    if (shown == nullptr) {
        return fail(named(options.folder) + " is not a folder shown in the map of " +
                    named(tree.path) + ".");
    }

    MapPictureStyle style;
    style.dark = options.dark;
    style.emptyText = MapPictureStyle::emptyTextFor(*shown);
    const double width = size->width;
    const double height = size->height;
    Json json;
    std::string svg;
    if (options.view == "orbit") {
        const auto items = OrbitLayout::items(shown->children);
        json = orbitJson(*shown, items, std::min(size->width, size->height));
        svg = OrbitPicture::svg(*shown, items, width, height, style);
    } else {
        const auto tiles = TreemapLayout::tiles(*shown, width, height);
        json = tilesJson(*shown, tiles, *size);
        svg = TreemapPicture::svg(tiles, width, height, style);
    }

    // Drawn before anything is written, so a picture that cannot be drawn leaves no file.
    std::optional<std::string> png;
    if (!options.pngFile.empty()) {
        png = platform::renderSvgToPng(svg, size->width, size->height);
        if (!png) return fail("The picture could not be drawn as PNG.");
    }
    if (!options.svgFile.empty()) {
        if (int status = writePicture(options.svgFile, svg)) return status;
    }
    if (png) {
        if (int status = writePicture(options.pngFile, *png)) return status;
    }
    if (options.json) {
        writeJson(std::cout, json);
        std::cout << '\n';
        std::cout.flush();
        if (!std::cout.good()) return exitFailure;
    }
    return exitSuccess;
}

const CommandRegistration registration{
    "map", 20, [](CLI::App& app) -> CommandRunner {
        auto options = std::make_shared<MapOptions>();
        auto* sub = app.add_subcommand("map", "Draw the map of a folder as a picture");
        sub->add_option("path", options->path, "Folder to scan (default: the current folder)")
            ->type_name("PATH");
        sub->add_option("--folder", options->folder,
                        "Folder of the map to draw, relative to PATH or absolute (default: PATH)")
            ->type_name("SUB");
        sub->add_option("--view", options->view, "treemap (nested tiles) or orbit (a ring)")
            ->type_name("VIEW")
            ->check(CLI::IsMember({"treemap", "orbit"}))
            ->capture_default_str();
        sub->add_option("--size", options->size,
                        "Picture size in pixels; the orbit uses the smaller side")
            ->type_name("WxH")
            ->capture_default_str();
        sub->add_option("--svg", options->svgFile, "Write the picture as SVG to FILE")
            ->type_name("FILE");
        sub->add_option("--png", options->pngFile, "Write the picture as PNG to FILE")
            ->type_name("FILE");
        sub->add_flag("--dark", options->dark, "Use the dark palette");
        sub->add_flag("--json", options->json, "Print the tiles or orbit items as JSON");
        return [options] { return runMap(*options); };
    }};

}  // namespace

}  // namespace veldan::cli
