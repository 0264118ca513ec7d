#include "aistorage/AIStorageKind.hpp"

namespace veldan {

std::string_view aiStorageKindRawValue(AIStorageKind kind) {
    switch (kind) {
        case AIStorageKind::models:
            return "models";
        case AIStorageKind::cache:
            return "cache";
        case AIStorageKind::logs:
            return "logs";
        case AIStorageKind::conversations:
            return "conversations";
        case AIStorageKind::workspace:
            return "workspace";
        case AIStorageKind::appData:
            return "appData";
    }
    return "appData";
}

std::string_view aiStorageKindName(AIStorageKind kind) {
    switch (kind) {
        case AIStorageKind::models:
            return "Models";
        case AIStorageKind::cache:
            return "Cache";
        case AIStorageKind::logs:
            return "Logs";
        case AIStorageKind::conversations:
            return "Conversations";
        case AIStorageKind::workspace:
            return "Workspace data";
        case AIStorageKind::appData:
            return "App data";
    }
    return "App data";
}

std::optional<AIStorageKind> aiStorageKindFromRawValue(std::string_view raw) {
    for (AIStorageKind kind : allAIStorageKinds) {
        if (aiStorageKindRawValue(kind) == raw) return kind;
    }
    return std::nullopt;
}

std::optional<AIStorageKind> aiStorageKindFromOrdinal(int64_t ordinal) {
    if (ordinal < 0 || ordinal >= static_cast<int64_t>(std::size(allAIStorageKinds))) {
        return std::nullopt;
    }
    return allAIStorageKinds[ordinal];
}

}  // namespace veldan
