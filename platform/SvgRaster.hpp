#pragma once
// Draws an SVG document into a PNG image, with Qt's SVG renderer, which lives in a module
// (libveldan_raster.so) loaded on first use.
//
// Contract: call on the main thread. When the process has no Qt application object (the
// command line), a headless one (the "offscreen" platform, needed for fonts) lives for
// the duration of the call; Qt's own messages are kept off the caller's streams.

#include <optional>
#include <string>
#include <string_view>

namespace veldan::platform {

// The PNG file contents of `svg` drawn into `width` x `height` pixels; nothing when the
// document cannot be read, the image cannot be allocated or encoded, or the rendering
// module is missing.
std::optional<std::string> renderSvgToPng(std::string_view svg, int width, int height);

}  // namespace veldan::platform
