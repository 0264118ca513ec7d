#pragma once
// How the widget names the folder a map or scan covers: "Startup disk" for "/", "Home
// folder" for the home folder, otherwise the folder's own name.
//
// Contract: reads the environment (the home folder) and resolves links; thread-safe.

#include <cstdint>
#include <optional>
#include <string>

namespace veldan {

struct WidgetScope {
    std::string path;  // standardized
    std::string name;
    bool isStartupDisk = false;
    bool isHomeFolder = false;

    static WidgetScope of(const std::string& path);
};

}  // namespace veldan
