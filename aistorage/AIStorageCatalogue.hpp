#pragma once
// The fixed catalogue of folders that local AI tools keep data in, and which of them
// may be offered for a move to the Trash (caches and logs only; models, conversations,
// workspace data and settings never).
//
// The home folder and the XDG config and cache folders (where these tools keep what
// macOS keeps in Application Support and Caches) are used with their symbolic links
// resolved, so that a home reached through a link is still measured; a link below them
// is what the scanner reports as "linked".
//
// Contract: pure functions of the folders given; current() reads the environment and
// resolves links. isCleanablePath() is thread-safe.

#include <string>
#include <vector>

#include "aistorage/AIStorageTool.hpp"

namespace veldan {

struct AIStorageCatalogueFolders {
    std::string home;
    std::string configHome;    // $XDG_CONFIG_HOME, else ~/.config
    std::string cacheHome;     // $XDG_CACHE_HOME, else ~/.cache
    std::string ollamaModels;  // $OLLAMA_MODELS when absolute, else ~/.ollama/models
    std::string huggingFace;   // $HF_HOME when absolute, else ~/.cache/huggingface
    std::string geminiHome;    // $GEMINI_CLI_HOME when absolute, else the home folder
    // Where Ollama installed as a system service keeps its models.
    std::string systemOllamaModels = "/usr/share/ollama/.ollama/models";

    static AIStorageCatalogueFolders current();
};

class AIStorageCatalogue {
public:
    // Every tool in catalogue order, "other" last and without sources.
    static std::vector<AIStorageTool> tools(const AIStorageCatalogueFolders& folders);
    static std::vector<AIStorageTool> tools() {
        return tools(AIStorageCatalogueFolders::current());
    }

    // Whether `path` is a cleanable row of the current catalogue. The set is built on
    // first use and again only when the home or XDG folders of the environment change.
    static bool isCleanablePath(const std::string& path);
};

}  // namespace veldan
