#include "scan/OpaqueFolderPolicy.hpp"

#include <fcntl.h>

#include <array>

#include "platform/FileStatus.hpp"
#include "platform/Paths.hpp"

namespace veldan {

namespace {

using Kind = OpaqueFolderPolicy::Kind;

constexpr std::array<std::string_view, 6> packageCacheSuffixes = {
    "/.npm/_cacache", "/.cache/uv",          "/Library/Caches/ms-playwright",
    "/go/pkg/mod",    "/Library/pnpm/store", "/.local/share/pnpm/store"};

bool isPackageCacheName(std::string_view name) {
    return name == "_cacache" || name == "uv" || name == "ms-playwright" || name == "mod" ||
           name == "store";
}

bool isPackageCachePath(std::string_view path, const std::string& home) {
    if (path.size() <= home.size() || path.substr(0, home.size()) != home) return false;
    const auto rest = home == "/" ? path : path.substr(home.size());
    for (auto suffix : packageCacheSuffixes) {
        if (rest == suffix) return true;
    }
    return false;
}

// `exists(relative)` answers whether a non-folder item exists at `relative`, a path
// relative to the folder's parent.
template <typename Exists>
std::optional<Kind> classify(std::string_view name, std::string_view path, const std::string& home,
                             Exists exists) {
    if (isPackageCacheName(name) && isPackageCachePath(path, home)) return Kind::packageCache;
    if (name == "node_modules") return Kind::dependencies;
    if (name == ".next") return Kind::buildOutput;
    if (name == "__pycache__") return Kind::pythonCache;
    if (name == ".git") return Kind::versionHistory;
    if (name == ".build") {
        return exists("Package.swift") ? std::optional(Kind::buildOutput) : std::nullopt;
    }
    if (name == "target") {
        return exists("Cargo.toml") ? std::optional(Kind::buildOutput) : std::nullopt;
    }
    if (name == "venv" || name == ".venv") {
        const std::string config = std::string(name) + "/pyvenv.cfg";
        return exists(config.c_str()) ? std::optional(Kind::environment) : std::nullopt;
    }
    if (name == "DerivedData") {
        return path == platform::joinPath(home, "Library/Developer/Xcode/DerivedData")
                   ? std::optional(Kind::buildOutput)
                   : std::nullopt;
    }
    return std::nullopt;
}

bool existsAsFile(const std::optional<platform::FileStatus>& status) {
    return status && !status->isDirectory();
}

}  // namespace

std::string_view OpaqueFolderPolicy::label(Kind kind) {
    switch (kind) {
        case Kind::dependencies:
            return "Dependencies, measured together";
        case Kind::buildOutput:
            return "Build output, measured together";
        case Kind::environment:
            return "Environment, measured together";
        case Kind::pythonCache:
            return "Python cache, measured together";
        case Kind::packageCache:
            return "Package cache, measured together";
        case Kind::versionHistory:
            return "Version history, measured together";
    }
    return {};
}

std::string_view OpaqueFolderPolicy::explanation(Kind kind) {
    if (kind == Kind::versionHistory) {
        return "Veldan counts this folder's space without mapping its internal history. It is "
               "never suggested for cleanup.";
    }
    return "Veldan counts this folder's space without mapping every generated file inside it.";
}

std::optional<OpaqueFolderPolicy::Kind> OpaqueFolderPolicy::kind(const std::string& path,
                                                                 const std::string& home) {
    const auto name = platform::lastPathComponent(path);
    const std::string parent = platform::parentPath(path);
    return classify(name, path, home, [&](const char* relative) {
        return existsAsFile(platform::statPath(platform::joinPath(parent, relative), true));
    });
}

std::optional<OpaqueFolderPolicy::Kind> OpaqueFolderPolicy::kindAt(int parentFd,
                                                                   std::string_view name,
                                                                   std::string_view path,
                                                                   const std::string& home) {
    return classify(name, path, home, [&](const char* relative) {
        int error = 0;
        return existsAsFile(
            platform::statAt(parentFd, relative, true, error, platform::StatDetail::sizes));
    });
}

}  // namespace veldan
