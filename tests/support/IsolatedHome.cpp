#include "tests/support/IsolatedHome.hpp"

#include <stdlib.h>

#include "tests/support/Files.hpp"

namespace veldan::test {

ScopedEnvironment::~ScopedEnvironment() {
    for (const auto& [name, value] : saved_) {
        if (value) {
            ::setenv(name.c_str(), value->c_str(), 1);
        } else {
            ::unsetenv(name.c_str());
        }
    }
}

void ScopedEnvironment::remember(const std::string& name) {
    if (saved_.count(name)) return;
    const char* value = ::getenv(name.c_str());
    saved_[name] = value ? std::optional<std::string>(value) : std::nullopt;
}

void ScopedEnvironment::set(const std::string& name, const std::string& value) {
    remember(name);
    ::setenv(name.c_str(), value.c_str(), 1);
}

void ScopedEnvironment::unset(const std::string& name) {
    remember(name);
    ::unsetenv(name.c_str());
}

IsolatedHome::IsolatedHome() : home_(root_ / "home") {
    makeFolders(home_);
    for (const auto& [name, value] : environment())
        environment_.set(name, value);
}

std::map<std::string, std::string> IsolatedHome::environment() const {
    return {{"HOME", home_},
            {"XDG_CACHE_HOME", cacheHome()},
            {"XDG_STATE_HOME", stateHome()},
            {"XDG_DATA_HOME", dataHome()},
            {"XDG_CONFIG_HOME", configHome()}};
}

}  // namespace veldan::test
