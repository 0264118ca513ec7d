#include "gui/AppArguments.hpp"

#include "app/DiskMapModel.hpp"
#include "app/ToolNavigation.hpp"
#include "platform/FileStatus.hpp"
#include "platform/Paths.hpp"

namespace veldan::gui {

AppArguments AppArguments::parse(int argc, const char* const* argv) {
    AppArguments parsed;
    for (int i = 0; i < argc; ++i)
        parsed.modelArguments.emplace_back(argv[i]);
    auto& arguments = parsed.modelArguments;
    // A lone path (no option at all) is what a desktop launcher passes for a folder.
    if (arguments.size() == 2 && !arguments[1].empty() && arguments[1][0] != '-') {
        arguments.insert(arguments.begin() + 1, "--scan");
    }
    if (auto path = DiskMapModel::commandLineScanPath(arguments)) {
        parsed.scanPath = platform::absolutePath(*path);
        for (auto it = arguments.begin(); it != arguments.end(); ++it) {
            if (*it == "--scan" && it + 1 != arguments.end()) {
                *(it + 1) = *parsed.scanPath;
                break;
            }
        }
    }
    parsed.tool = ToolNavigation::commandLineTool(arguments);
    return parsed;
}

std::optional<std::string> AppArguments::forwardedScanPath() const {
    if (!scanPath) return std::nullopt;
    const auto status = platform::statPath(*scanPath, true);
    return status && status->isDirectory() ? *scanPath : std::string(DiskMapModel::startupDiskURL);
}

}  // namespace veldan::gui
