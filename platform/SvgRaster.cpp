#include "platform/SvgRaster.hpp"

#include <dlfcn.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <mutex>

#include "platform/Paths.hpp"

namespace veldan::platform {

namespace {

using RenderFunction = int (*)(const char*, size_t, int, int, char**, size_t*);

constexpr const char* moduleName = "libveldan_raster.so";

// Beside the program first (where the build puts it), then where an installation puts it
// relative to the program, then where the build placed it (test programs live
// elsewhere), then the linker's search path.
RenderFunction loadRenderer() {
    std::vector<std::string> candidates;
    char self[PATH_MAX] = {};
    if (::readlink("/proc/self/exe", self, sizeof self - 1) > 0) {
        candidates.push_back(joinPath(parentPath(self), moduleName));
#ifdef VELDAN_RASTER_FROM_BINDIR
        candidates.push_back(
            joinPath(joinPath(parentPath(self), VELDAN_RASTER_FROM_BINDIR), moduleName));
#endif
    }
#ifdef VELDAN_RASTER_MODULE
    candidates.push_back(VELDAN_RASTER_MODULE);
#endif
    candidates.push_back(moduleName);
    for (const auto& candidate : candidates) {
        if (void* module = ::dlopen(candidate.c_str(), RTLD_NOW | RTLD_LOCAL)) {
            if (void* symbol = ::dlsym(module, "veldanRenderSvgToPng")) {
                return reinterpret_cast<RenderFunction>(symbol);
            }
            ::dlclose(module);
        }
    }
    return nullptr;
}

}  // namespace

std::optional<std::string> renderSvgToPng(std::string_view svg, int width, int height) {
    static std::once_flag loaded;
    static RenderFunction render = nullptr;
    std::call_once(loaded, [] { render = loadRenderer(); });
    if (render == nullptr || width <= 0 || height <= 0) return std::nullopt;
    char* png = nullptr;
    size_t size = 0;
    if (!render(svg.data(), svg.size(), width, height, &png, &size)) return std::nullopt;
    std::string out(png, size);
    std::free(png);
    return out;
}

}  // namespace veldan::platform
