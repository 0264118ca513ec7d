#include "recommendations/RecommendationBuilder.hpp"

#include <algorithm>
#include <functional>
#include <limits>
#include <optional>
#include <set>

#include "platform/FileStatus.hpp"
#include "platform/Paths.hpp"
#include "platform/TrashFolder.hpp"
#include "platform/UserFolders.hpp"
#include "recommendations/RecommendationCommands.hpp"
#include "scan/SaturatingAdd.hpp"

namespace veldan {

namespace {

using Sizes = std::map<std::string, int64_t>;

int64_t sum(const Sizes& sizes) {
    int64_t total = 0;
    for (const auto& [path, bytes] : sizes)
        total = saturatingAdd(total, bytes);
    return total;
}

std::vector<std::string> pathsOf(const Sizes& sizes) {
    std::vector<std::string> paths;
    for (const auto& [path, bytes] : sizes)
        paths.push_back(path);
    return paths;
}

std::optional<int64_t> sizeOf(const Sizes& sizes, const std::string& path) {
    auto found = sizes.find(path);
    if (found == sizes.end()) return std::nullopt;
    return found->second;
}

// The discovered folders whose last component is `name` and that `accept` keeps.
Sizes foldersNamed(const Sizes& sizes, std::string_view name,
                   const std::function<bool(const std::string&, int64_t)>& accept) {
    Sizes found;
    for (const auto& [path, bytes] : sizes) {
        if (platform::lastPathComponent(path) == name && accept(path, bytes)) found[path] = bytes;
    }
    return found;
}

Recommendation make(std::string id, std::string title, std::string subtitle,
                    RecommendationKind kind, const Sizes& folders, std::string command) {
    Recommendation recommendation;
    recommendation.id = std::move(id);
    recommendation.title = std::move(title);
    recommendation.subtitle = std::move(subtitle);
    recommendation.bytes = sum(folders);
    recommendation.kind = kind;
    recommendation.paths = pathsOf(folders);
    recommendation.command = std::move(command);
    recommendation.folderIdentities = RecommendationBuilder::folderIdentities(recommendation.paths);
    return recommendation;
}

std::string removals(const Sizes& folders, const std::optional<std::string>& manifest,
                     const std::map<std::string, ScanFolderIdentity>& identities) {
    std::string command;
    for (const auto& [path, bytes] : folders) {
        if (!command.empty()) command += '\n';
        auto identity = identities.find(path);
        command += RecommendationCommands::guardedGeneratedRemoval(
            path, manifest,
            identity == identities.end() ? std::nullopt : std::optional(identity->second));
    }
    return command;
}

// A safe recommendation whose command removes each folder after the shell re-checks it.
Recommendation removal(std::string id, std::string title, std::string subtitle,
                       const Sizes& folders, const std::optional<std::string>& manifest) {
    auto recommendation = make(std::move(id), std::move(title), std::move(subtitle),
                               RecommendationKind::safe, folders, {});
    recommendation.command = removals(folders, manifest, recommendation.folderIdentities);
    return recommendation;
}

Recommendation review(std::string id, std::string title, std::string subtitle,
                      const Sizes& folders) {
    return make(std::move(id), std::move(title), std::move(subtitle), RecommendationKind::review,
                folders, RecommendationCommands::openLines(pathsOf(folders)));
}

struct BuildContext {
    const Sizes& sizes;
    std::string home;
    std::vector<Recommendation>& out;

    std::string underHome(std::string_view relative) const {
        return platform::joinPath(home, relative);
    }
    // The folder when it was measured at all (step 1) or measured large (steps 6, 7).
    Sizes measured(const std::string& path, int64_t above) const {
        auto bytes = sizeOf(sizes, path);
        if (!bytes || *bytes <= above) return {};
        return {{path, *bytes}};
    }
};

struct CacheRule {
    const char* id;
    const char* title;
    const char* subtitle;
    const char* measured;  // under the home folder
    const char* tool;      // nullptr: the folder itself is removed
    const char* location;
    const char* expected;  // under the home folder
    const char* cleanup;
};

constexpr CacheRule cacheRules[] = {
    {"npm", "npm cache", "Clear cached packages", ".npm/_cacache", "npm", "npm config get cache",
     ".npm", "npm cache clean --force"},
    {"uv", "uv cache", "Prune unused cache entries", ".cache/uv", "uv", "uv cache dir", ".cache/uv",
     "uv cache prune"},
    {"playwright", "Playwright browsers", "Remove downloaded browsers",
     "Library/Caches/ms-playwright", nullptr, nullptr, nullptr, nullptr},
    {"go", "Go module cache", "Remove downloaded modules", "go/pkg/mod", "go", "go env GOMODCACHE",
     "go/pkg/mod", "go clean -modcache"},
};

void packageCaches(const BuildContext& context) {
    for (const auto& rule : cacheRules) {
        const Sizes folders = context.measured(context.underHome(rule.measured), 0);
        if (sum(folders) <= RecommendationBuilder::minimumBytes) continue;
        if (rule.tool == nullptr) {
            context.out.push_back(
                removal(rule.id, rule.title, rule.subtitle, folders, std::nullopt));
        } else {
            context.out.push_back(
                make(rule.id, rule.title, rule.subtitle, RecommendationKind::safe, folders,
                     RecommendationCommands::guardedCacheCommand(rule.tool, rule.location,
                                                                 context.underHome(rule.expected),
                                                                 rule.cleanup, rule.title)));
        }
    }
}

struct GeneratedRule {
    const char* name;
    const char* manifest;
    const char* safeId;
    const char* safeTitle;
    std::function<std::string(size_t)> safeSubtitle;
    const char* reviewId;
    const char* reviewTitle;
    const char* reviewSubtitle;
};

void generatedOutput(const BuildContext& context, const GeneratedRule& rule) {
    const Sizes candidates = RecommendationBuilder::nonNested(
        foldersNamed(context.sizes, rule.name, [&](const std::string& path, int64_t) {
            return RecommendationBuilder::isGeneratedFolderCandidate(path, rule.name);
        }));
    Sizes verified;
    Sizes unverified;
    for (const auto& [path, bytes] : candidates) {
        (RecommendationBuilder::isProjectOutput(path, rule.name, rule.manifest)
             ? verified
             : unverified)[path] = bytes;
    }
    if (!verified.empty()) {
        context.out.push_back(removal(rule.safeId, rule.safeTitle,
                                      rule.safeSubtitle(verified.size()), verified, rule.manifest));
    }
    if (!unverified.empty()) {
        context.out.push_back(
            review(rule.reviewId, rule.reviewTitle, rule.reviewSubtitle, unverified));
    }
}

void derivedData(const BuildContext& context) {
    const std::string standard = context.underHome("Library/Developer/Xcode/DerivedData");
    Sizes xcode;
    Sizes custom;
    for (const auto& [path, bytes] :
         foldersNamed(context.sizes, "DerivedData", [](const std::string&, int64_t bytes) {
             return bytes > RecommendationBuilder::minimumBytes;
         })) {
        (platform::standardizePath(path) == standard ? xcode : custom)[path] = bytes;
    }
    if (!xcode.empty()) {
        context.out.push_back(removal("xcode", "Xcode DerivedData",
                                      "Xcode\u2019s standard generated-data folder", xcode,
                                      std::nullopt));
    }
    custom = RecommendationBuilder::nonNested(custom);
    if (!custom.empty()) {
        context.out.push_back(review("xcode-custom", "Other DerivedData folders",
                                     "Confirm these are Xcode output before removing them",
                                     custom));
    }
}

void dependencies(const BuildContext& context) {
    const Sizes modules = RecommendationBuilder::nonNested(
        foldersNamed(context.sizes, "node_modules",
                     [](const std::string&, int64_t bytes) { return bytes > 0; }));
    if (modules.empty()) return;
    context.out.push_back(review(
        "modules", "Project dependencies",
        std::to_string(modules.size()) + " node_modules folders \u00b7 review projects", modules));
}

struct ReviewLocation {
    const char* id;
    const char* title;
    const char* path;  // under the home folder
    const char* subtitle;
};

constexpr ReviewLocation reviewLocations[] = {
    {"codex", "Codex history", ".codex", "Inspect old sessions before removing anything"},
    {"claude", "Claude data", ".claude",
     "Inspect conversations and projects before removing anything"},
    {"docker", "Docker data", "Library/Containers/com.docker.docker",
     "Review unused images and volumes in Docker"},
    {"huggingface", "Hugging Face models", ".cache/huggingface",
     "Check which downloaded models you still use"},
    {"appcaches", "App caches", "Library/Caches", "Review app caches before removing anything"},
};

void homeReviewLocations(const BuildContext& context) {
    for (const auto& location : reviewLocations) {
        const Sizes folder =
            context.measured(context.underHome(location.path), RecommendationBuilder::minimumBytes);
        if (!folder.empty()) {
            context.out.push_back(review(location.id, location.title, location.subtitle, folder));
        }
    }
}

void pnpmStore(const BuildContext& context) {
    Sizes stores;
    for (const char* relative : {"Library/pnpm/store", ".local/share/pnpm/store"}) {
        stores.merge(
            context.measured(context.underHome(relative), RecommendationBuilder::minimumBytes));
    }
    if (stores.empty()) return;
    context.out.push_back(make("pnpm", "pnpm store",
                               "Store usage; pruning removes only unreferenced packages",
                               RecommendationKind::safe, stores,
                               RecommendationCommands::pnpmPruneCommand(pathsOf(stores))));
}

}  // namespace

std::vector<Recommendation> RecommendationBuilder::build(const std::string& scanRoot,
                                                         const ScanSnapshot& snapshot) {
    const std::string root = platform::standardizePath(scanRoot);
    std::vector<Recommendation> out;
    Sizes sizes;
    const auto homeTrashes = platform::homeTrashPaths();
    for (const auto& [path, bytes] : snapshot.discoveredDirectories) {
        if (!platform::isInsideTrash(path, homeTrashes)) sizes.emplace(path, bytes);
    }
    const BuildContext context{sizes, platform::standardizePath(platform::homeFolder()), out};
    const bool coversHome =
        root == "/" || root == context.home || platform::isStrictlyUnder(context.home, root);

    if (coversHome) packageCaches(context);
    generatedOutput(context, {".next", "package.json", "next", "Next.js build output",
                              [](size_t count) {
                                  // Always the plural, even for one folder.
                                  return std::to_string(count) + " generated .next folders";
                              },
                              "next-unverified", "Other .next folders",
                              "No adjacent package.json; check these folders in Finder"});
    generatedOutput(context, {".build", "Package.swift", "swiftpm", "Swift build output",
                              [](size_t count) {
                                  return std::to_string(count) +
                                         (count == 1 ? " generated folder" : " generated folders");
                              },
                              "swiftpm-unverified", "Other .build folders",
                              "No adjacent Package.swift; check these folders in Finder"});
    derivedData(context);
    dependencies(context);
    if (coversHome) {
        homeReviewLocations(context);
        pnpmStore(context);
    }

    std::stable_sort(out.begin(), out.end(), [](const Recommendation& a, const Recommendation& b) {
        if (a.kind != b.kind) return a.kind == RecommendationKind::safe;
        return a.bytes > b.bytes;
    });
    return out;
}

std::map<std::string, int64_t> RecommendationBuilder::nonNested(
    const std::map<std::string, int64_t>& sizes) {
    std::vector<const std::pair<const std::string, int64_t>*> order;
    for (const auto& entry : sizes)
        order.push_back(&entry);
    std::stable_sort(order.begin(), order.end(),
                     [](auto* a, auto* b) { return a->first.size() < b->first.size(); });
    std::map<std::string, int64_t> kept;
    for (const auto* entry : order) {
        bool nested = false;
        for (std::string ancestor = platform::parentPath(entry->first);
             !nested && !ancestor.empty() && ancestor != "/";
             ancestor = platform::parentPath(ancestor)) {
            nested = kept.count(ancestor) != 0;
        }
        if (!nested) kept.insert(*entry);
    }
    return kept;
}

int64_t RecommendationBuilder::footprint(const std::vector<std::string>& paths,
                                         const std::vector<std::string>& excluded,
                                         const std::map<std::string, int64_t>& sizes) {
    Sizes sized;
    for (const auto& path : paths) {
        if (auto bytes = sizeOf(sizes, path)) sized[path] = *bytes;
    }
    const Sizes outer = nonNested(sized);
    int64_t total = sum(outer);
    for (const auto& path : std::set<std::string>(excluded.begin(), excluded.end())) {
        auto bytes = sizeOf(sizes, path);
        if (!bytes) continue;
        for (std::string ancestor = platform::parentPath(path);
             !ancestor.empty() && ancestor != "/"; ancestor = platform::parentPath(ancestor)) {
            if (outer.count(ancestor)) {
                total = std::max<int64_t>(0, total - *bytes);
                break;
            }
        }
    }
    return total;
}

bool RecommendationBuilder::isGeneratedFolderCandidate(const std::string& path,
                                                       const std::string& name) {
    if (platform::lastPathComponent(path) != name) return false;
    const std::string parent = platform::parentPath(path);
    for (auto component : platform::pathComponents(parent)) {
        if (component == "node_modules" || component == ".next" || component == ".build") {
            return false;
        }
    }
    return true;
}

bool RecommendationBuilder::isProjectOutput(const std::string& path, const std::string& name,
                                            const std::string& manifest) {
    if (!isGeneratedFolderCandidate(path, name)) return false;
    auto status =
        platform::statPath(platform::joinPath(platform::parentPath(path), manifest), true);
    return status && status->isRegularFile();
}

std::map<std::string, ScanFolderIdentity> RecommendationBuilder::folderIdentities(
    const std::vector<std::string>& paths) {
    std::map<std::string, ScanFolderIdentity> identities;
    for (const auto& path : paths) {
        if (auto identity = ScanFolderIdentity::read(path)) identities[path] = *identity;
    }
    return identities;
}

}  // namespace veldan
