#pragma once
// A fresh, empty home folder for one test: HOME and every XDG_*_HOME point into it
// while the object lives, and the previous values come back afterwards.

#include <map>
#include <optional>
#include <string>

#include "tests/support/TempDir.hpp"

namespace veldan::test {

class ScopedEnvironment {
public:
    ScopedEnvironment() = default;
    ~ScopedEnvironment();
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

    void set(const std::string& name, const std::string& value);
    void unset(const std::string& name);

private:
    void remember(const std::string& name);
    std::map<std::string, std::optional<std::string>> saved_;
};

class IsolatedHome {
public:
    IsolatedHome();
    const std::string& home() const { return home_; }
    std::string operator/(const std::string& relative) const { return home_ + "/" + relative; }
    std::string dataHome() const { return home_ + "/.local/share"; }
    std::string cacheHome() const { return home_ + "/.cache"; }
    std::string stateHome() const { return home_ + "/.local/state"; }
    std::string configHome() const { return home_ + "/.config"; }
    // The variables as they should be passed to a child process.
    std::map<std::string, std::string> environment() const;

private:
    TempDir root_;
    std::string home_;
    ScopedEnvironment environment_;
};

}  // namespace veldan::test
