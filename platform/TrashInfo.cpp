#include "platform/TrashInfo.hpp"

namespace veldan::platform {

namespace {

bool keptAsIs(unsigned char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_' || c == '.' || c == '~' || c == '/';
}

}  // namespace

std::string percentEncodePath(std::string_view path) {
    static constexpr char hex[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(path.size());
    for (unsigned char c : path) {
        if (keptAsIs(c)) {
            out += static_cast<char>(c);
        } else {
            out += '%';
            out += hex[c >> 4];
            out += hex[c & 0x0f];
        }
    }
    return out;
}

std::string trashInfoText(std::string_view originalPath, std::time_t deletedAt) {
    std::tm local{};
    ::localtime_r(&deletedAt, &local);
    char date[32];
    std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &local);
    std::string text = "[Trash Info]\nPath=";
    text += percentEncodePath(originalPath);
    text += "\nDeletionDate=";
    text += date;
    text += '\n';
    return text;
}

}  // namespace veldan::platform
