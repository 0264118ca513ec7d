#include "aistorage/AIStorageToolID.hpp"

namespace veldan {

namespace {

struct ToolText {
    std::string_view raw;
    std::string_view name;
    std::string_view symbol;
};

// Indexed by the enumeration's value.
constexpr ToolText toolTexts[] = {
    {"ollama", "Ollama", "circle.hexagongrid"},
    {"lmstudio", "LM Studio", "cpu"},
    {"cursor", "Cursor", "cursorarrow.rays"},
    {"copilot", "GitHub Copilot", "chevron.left.forwardslash.chevron.right"},
    {"claude", "Claude Code", "sparkles"},
    {"codex", "Codex", "bubble.left.and.text.bubble.right"},
    {"gemini", "Gemini CLI", "sparkle"},
    {"huggingface", "Hugging Face", "face.smiling"},
    {"other", "Other AI tools", "sparkles"},
};

const ToolText& textOf(AIStorageToolID id) {
    return toolTexts[static_cast<size_t>(id)];
}

}  // namespace

std::string_view aiStorageToolRawValue(AIStorageToolID id) {
    return textOf(id).raw;
}

std::optional<AIStorageToolID> aiStorageToolFromRawValue(std::string_view raw) {
    for (AIStorageToolID id : allAIStorageToolIDs) {
        if (textOf(id).raw == raw) return id;
    }
    return std::nullopt;
}

std::string_view aiStorageToolName(AIStorageToolID id) {
    return textOf(id).name;
}

std::string_view aiStorageToolSymbol(AIStorageToolID id) {
    return textOf(id).symbol;
}

}  // namespace veldan
