#pragma once
// The `veldan` subcommands. Each command's file registers itself with a static
// CommandRegistration, so adding a command touches no shared file.
//
// Contract: registration happens during static initialisation, before main(); the
// registry is read once by main().

#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace veldan::cli {

// Exit statuses shared by every command.
inline constexpr int exitSuccess = 0;
inline constexpr int exitFailure = 1;
inline constexpr int exitUsage = 2;
inline constexpr int exitInterrupted = 130;

// Adds the subcommand to `app` and returns what runs it once arguments are parsed.
using CommandRunner = std::function<int()>;
using CommandFactory = std::function<CommandRunner(CLI::App& app)>;

struct CommandEntry {
    std::string name;
    int order = 0;  // position in the help text
    CommandFactory factory;
};

class CommandRegistry {
public:
    static void add(CommandEntry entry);
    static std::vector<CommandEntry> ordered();

private:
    static std::vector<CommandEntry>& entries();
};

struct CommandRegistration {
    CommandRegistration(std::string name, int order, CommandFactory factory) {
        CommandRegistry::add({std::move(name), order, std::move(factory)});
    }
};

}  // namespace veldan::cli
