#pragma once
// One cleanup the user made: items moved to the Trash, or a tool's own cleanup command.

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace veldan {

struct CleanupActivity {
    // Stored by these names.
    enum class Kind { movedToTrash, toolCleanup };

    std::string id;  // a UUID
    std::chrono::system_clock::time_point date;
    std::string title;
    Kind kind = Kind::movedToTrash;
    int64_t bytes = 0;  // 0 for tool cleanups, whose savings are not guessed
    int64_t count = 0;  // items

    static std::string_view kindName(Kind kind) {
        return kind == Kind::movedToTrash ? "movedToTrash" : "toolCleanup";
    }
    static std::optional<Kind> kindNamed(std::string_view name) {
        if (name == "movedToTrash") return Kind::movedToTrash;
        if (name == "toolCleanup") return Kind::toolCleanup;
        return std::nullopt;
    }

    friend bool operator==(const CleanupActivity&, const CleanupActivity&) = default;
};

}  // namespace veldan
