#pragma once
// The AI tools Veldan knows, in the order their groups are listed when sizes tie, with
// the name and symbol each is shown with. "other" gathers folders the user added for
// tools outside the catalogue.

#include <optional>
#include <string_view>

namespace veldan {

enum class AIStorageToolID {
    ollama,
    lmstudio,
    cursor,
    copilot,
    claude,
    codex,
    gemini,
    huggingface,
    other
};

inline constexpr AIStorageToolID allAIStorageToolIDs[] = {
    AIStorageToolID::ollama,  AIStorageToolID::lmstudio,    AIStorageToolID::cursor,
    AIStorageToolID::copilot, AIStorageToolID::claude,      AIStorageToolID::codex,
    AIStorageToolID::gemini,  AIStorageToolID::huggingface, AIStorageToolID::other};

// "ollama", "lmstudio", ..., "other".
std::string_view aiStorageToolRawValue(AIStorageToolID id);
std::optional<AIStorageToolID> aiStorageToolFromRawValue(std::string_view raw);
// "Ollama", "LM Studio", ..., "Other AI tools".
std::string_view aiStorageToolName(AIStorageToolID id);
// The symbol name a screen shows beside the tool's name.
std::string_view aiStorageToolSymbol(AIStorageToolID id);

}  // namespace veldan
