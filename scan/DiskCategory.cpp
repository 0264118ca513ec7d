#include "scan/DiskCategory.hpp"

#include <array>
#include <cstdint>

#include "platform/Paths.hpp"

namespace veldan {

namespace {

enum Flag : CategoryFlags {
    agentFlag = 1 << 0,
    dockerFlag = 1 << 1,
    modelsFlag = 1 << 2,
    buildFlag = 1 << 3,
    pnpmFlag = 1 << 4,
    storeFlag = 1 << 5,
    cacheFlag = 1 << 6,
    systemFlag = 1 << 7,
};

struct NamedFlag {
    std::string_view name;
    CategoryFlags flag;
};

constexpr NamedFlag namedFlags[] = {
    {".codex", agentFlag},       {".claude", agentFlag},
    {"docker", dockerFlag},      {"com.docker.docker", dockerFlag},
    {"huggingface", modelsFlag}, {"models", modelsFlag},
    {"mlx", modelsFlag},         {"node_modules", buildFlag},
    {".next", buildFlag},        {"deriveddata", buildFlag},
    {".build", buildFlag},       {"build", buildFlag},
    {"pnpm", pnpmFlag},          {"store", storeFlag},
    {".cache", cacheFlag},       {".npm", cacheFlag},
    {".pnpm-store", cacheFlag},  {"caches", cacheFlag},
    {"system", systemFlag},      {"private", systemFlag},
    {"library", systemFlag},     {"applications", systemFlag},
};

constexpr size_t longestName = 17;  // "com.docker.docker"

constexpr char lowered(char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

// The lengths and first letters of the rule names: almost every name a scan meets is
// ruled out by these two looks alone.
constexpr uint32_t ruleLengths = [] {
    uint32_t lengths = 0;
    for (const auto& entry : namedFlags)
        lengths |= uint32_t{1} << entry.name.size();
    return lengths;
}();
constexpr auto ruleInitials = [] {
    std::array<bool, 256> initials{};
    for (const auto& entry : namedFlags)
        initials[static_cast<unsigned char>(entry.name.front())] = true;
    return initials;
}();

}  // namespace

std::string_view title(DiskCategory category) {
    switch (category) {
        case DiskCategory::agent:
            return "Agent history";
        case DiskCategory::files:
            return "Your files";
        case DiskCategory::build:
            return "Build output";
        case DiskCategory::safe:
            return "Safe to clear";
        case DiskCategory::system:
            return "System & apps";
        case DiskCategory::docker:
            return "Docker";
        case DiskCategory::models:
            return "AI models";
    }
    return "Your files";
}

std::string_view iconName(DiskCategory category) {
    switch (category) {
        case DiskCategory::agent:
            return "clock.arrow.circlepath";
        case DiskCategory::files:
            return "folder.fill";
        case DiskCategory::build:
            return "hammer.fill";
        case DiskCategory::safe:
            return "sparkles";
        case DiskCategory::system:
            return "gearshape.2.fill";
        case DiskCategory::docker:
            return "shippingbox.fill";
        case DiskCategory::models:
            return "brain.head.profile";
    }
    return "folder.fill";
}

std::optional<DiskCategory> diskCategoryFromRawValue(std::string_view raw) {
    for (auto category : allDiskCategories) {
        if (title(category) == raw) return category;
    }
    return std::nullopt;
}

CategoryFlags categoryFlags(std::string_view component) {
    // Every rule name is short ASCII; longer components can never match, which keeps
    // this cheap for the millions of names a scan classifies.
    if (component.size() > longestName || !(ruleLengths >> component.size() & 1) ||
        !ruleInitials[static_cast<unsigned char>(lowered(component.front()))]) {
        return 0;
    }
    char lowerCase[longestName];
    for (size_t i = 0; i < component.size(); ++i)
        lowerCase[i] = lowered(component[i]);
    const std::string_view name(lowerCase, component.size());
    for (const auto& entry : namedFlags) {
        if (entry.name == name) return entry.flag;
    }
    return 0;
}

DiskCategory categoryForFlags(CategoryFlags flags) {
    if (flags & agentFlag) return DiskCategory::agent;
    if (flags & dockerFlag) return DiskCategory::docker;
    if (flags & modelsFlag) return DiskCategory::models;
    if (flags & buildFlag) return DiskCategory::build;
    if ((flags & pnpmFlag) && (flags & storeFlag)) return DiskCategory::safe;
    if (flags & cacheFlag) return DiskCategory::safe;
    if (flags & systemFlag) return DiskCategory::system;
    return DiskCategory::files;
}

DiskCategory categoryFor(std::string_view path) {
    CategoryFlags flags = 0;
    for (auto component : platform::pathComponents(path))
        flags |= categoryFlags(component);
    return categoryForFlags(flags);
}

}  // namespace veldan
