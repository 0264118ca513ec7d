#pragma once
// The user's preferences ("user defaults"): QSettings of organisation and application
// "Veldan", kept in $XDG_CONFIG_HOME/Veldan/Veldan.conf. Keys are the documented
// preference names, used exactly as given.
//
// Contract: every call opens the file afresh (the location follows the environment, and
// another process may have changed it), so values written by one run of veldan are read
// by the next. Thread-safe. Setters return false when the file could not be written.
// Text is raw bytes: well-formed UTF-8 is stored as text, anything else as bytes, and
// both come back unchanged.

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace veldan::platform {

class Preferences {
public:
    // $XDG_CONFIG_HOME/Veldan/Veldan.conf
    static std::string filePath();

    // Millisecond precision (later parts of a second are dropped).
    static std::optional<std::chrono::system_clock::time_point> date(const std::string& key);
    static bool setDate(const std::string& key, std::chrono::system_clock::time_point value);

    static std::optional<std::string> string(const std::string& key);
    static bool setString(const std::string& key, const std::string& value);

    static std::optional<bool> boolean(const std::string& key);
    static bool setBoolean(const std::string& key, bool value);

    static std::optional<int64_t> integer(const std::string& key);
    static bool setInteger(const std::string& key, int64_t value);

    // Opaque bytes (an encoded property list), always stored as bytes, never as text.
    static std::optional<std::string> data(const std::string& key);
    static bool setData(const std::string& key, const std::string& value);

    static std::optional<std::vector<std::string>> strings(const std::string& key);
    static bool setStrings(const std::string& key, const std::vector<std::string>& value);

    static bool remove(const std::string& key);
};

}  // namespace veldan::platform
