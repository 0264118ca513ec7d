#include "cli/CommandRegistry.hpp"

#include <algorithm>

namespace veldan::cli {

std::vector<CommandEntry>& CommandRegistry::entries() {
    static std::vector<CommandEntry> all;
    return all;
}

void CommandRegistry::add(CommandEntry entry) {
    entries().push_back(std::move(entry));
}

std::vector<CommandEntry> CommandRegistry::ordered() {
    auto all = entries();
    std::stable_sort(all.begin(), all.end(), [](const CommandEntry& a, const CommandEntry& b) {
        return a.order < b.order;
    });
    return all;
}

}  // namespace veldan::cli
