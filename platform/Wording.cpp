#include "platform/Wording.hpp"

#include <utility>

namespace veldan::platform {

namespace {

// Longer phrases first, so that "Finder-only" is not caught by "Finder".
constexpr std::pair<std::string_view, std::string_view> table[] = {
    {"Show Menu Bar Icon", "Show Tray Icon"},
    {"Hide Menu Bar Icon", "Hide Tray Icon"},
    {"Finder-only", "file-manager-only"},
    {"in Finder", "in the file manager"},
    {"Finder", "the file manager"},
    {"APFS copies", "reflinked copies"},
    {"this Mac", "this computer"},
    {"the Mac", "this computer"},
};

bool startsSentence(const std::string& text, size_t at) {
    size_t i = at;
    while (i > 0 && text[i - 1] == ' ')
        --i;
    return i == 0 || text[i - 1] == '.' || text[i - 1] == '\n';
}

}  // namespace

std::string localWording(std::string_view original) {
    std::string text(original);
    for (const auto& [mac, local] : table) {
        for (size_t at = text.find(mac); at != std::string::npos;
             at = text.find(mac, at + local.size())) {
            std::string replacement(local);
            if (startsSentence(text, at) && replacement[0] >= 'a' && replacement[0] <= 'z') {
                replacement[0] = static_cast<char>(replacement[0] - 'a' + 'A');
            }
            text.replace(at, mac.size(), replacement);
        }
    }
    return text;
}

}  // namespace veldan::platform
