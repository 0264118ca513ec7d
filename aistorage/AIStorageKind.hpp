#pragma once
// What a location of an AI tool holds. The order is fixed: a kind's position is the
// number stored for it in the list of folders the user added.

#include <cstdint>
#include <optional>
#include <string_view>

namespace veldan {

enum class AIStorageKind { models, cache, logs, conversations, workspace, appData };

inline constexpr AIStorageKind allAIStorageKinds[] = {
    AIStorageKind::models,        AIStorageKind::cache,     AIStorageKind::logs,
    AIStorageKind::conversations, AIStorageKind::workspace, AIStorageKind::appData};

// "models", "cache", "logs", "conversations", "workspace", "appData".
std::string_view aiStorageKindRawValue(AIStorageKind kind);
// "Models", "Cache", "Logs", "Conversations", "Workspace data", "App data".
std::string_view aiStorageKindName(AIStorageKind kind);
std::optional<AIStorageKind> aiStorageKindFromRawValue(std::string_view raw);
std::optional<AIStorageKind> aiStorageKindFromOrdinal(int64_t ordinal);

}  // namespace veldan
