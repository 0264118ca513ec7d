#pragma once
// The command line of veldan-app: "--scan PATH" (also a lone folder path, as the desktop
// passes a folder dropped on the launcher) and "--tool NAME". Arguments are raw bytes.

#include <optional>
#include <string>
#include <vector>

#include "app/VeldanTool.hpp"

namespace veldan::gui {

struct AppArguments {
    // What the model reads: the arguments with a lone folder turned into "--scan PATH".
    std::vector<std::string> modelArguments;
    std::optional<std::string> scanPath;  // absolute
    std::optional<VeldanTool> tool;

    static AppArguments parse(int argc, const char* const* argv);

    // What a second launch hands to the running instance: the folder to scan, made
    // absolute, or the startup disk when it is not a folder (as the first launch does).
    // Reads the file system.
    std::optional<std::string> forwardedScanPath() const;
};

}  // namespace veldan::gui
