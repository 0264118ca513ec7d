#pragma once
// What the Debian package trash-cli (an independent reader of the freedesktop.org Trash)
// says about a Trash: the tests use it to prove that every item Veldan moves can be
// listed and restored by other programs, not just by our own reading of the files.

#include <map>
#include <string>

#include "tests/support/Files.hpp"
#include "tests/support/Process.hpp"

namespace veldan::test {

// The trash-cli environment: HOME and XDG_DATA_HOME of the process (set by TestMain or
// an IsolatedHome) are inherited; trash-cli decodes with UTF-8 whatever the locale.
inline std::map<std::string, std::string> trashCliEnvironment() {
    return {{"LC_ALL", "C.UTF-8"}};
}

inline std::string trashList() {
    ProcessOptions options;
    options.environment = trashCliEnvironment();
    return runProcess({"trash-list"}, options).out;
}

// True when trash-list shows `path` as the original location of an item. trash-cli
// prints each item as "YYYY-MM-DD hh:mm:ss PATH" and a line break.
inline bool trashListShows(const std::string& listing, const std::string& path) {
    return listing.find(" " + path + "\n") != std::string::npos;
}

// Restores the only trashed item whose original path starts with `path`.
inline ProcessResult trashRestore(const std::string& path) {
    ProcessOptions options;
    options.environment = trashCliEnvironment();
    options.input = "0\n";
    return runProcess({"trash-restore", path}, options);
}

// Decodes Path= of an info file back to raw bytes: the test's own reading, independent
// of the encoder under test.
inline std::string percentDecode(const std::string& text) {
    auto digit = [](char c) { return c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10; };
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size()) {
            out += static_cast<char>(digit(text[i + 1]) * 16 + digit(text[i + 2]));
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

// The value of `key` ("Path", "DeletionDate") in an info file's text.
inline std::string trashInfoValue(const std::string& info, const std::string& key) {
    const auto start = info.find("\n" + key + "=");
    if (start == std::string::npos) return {};
    const auto valueStart = start + key.size() + 2;
    return info.substr(valueStart, info.find('\n', valueStart) - valueStart);
}

}  // namespace veldan::test
