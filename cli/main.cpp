// The `veldan` command: maps where space goes and helps reclaim it safely.

#include <malloc.h>
#include <poll.h>
#include <unistd.h>
#include <CLI/CLI.hpp>

#include <csignal>
#include <cstdio>
#include <iostream>
#include <map>

#include "cli/CommandRegistry.hpp"

namespace {

// Whether standard output is a pipe whose reader has gone (`veldan scan | head -1`).
bool outputClosed() {
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    return ::poll(&output, 1, 0) == 1 && (output.revents & POLLERR) != 0;
}

}  // namespace

int main(int argc, char** argv) {
    using namespace veldan::cli;
    // A reader that stops early must not kill the process halfway through writing its saved
    // map: writes to the closed pipe fail instead, the command finishes what it saves, and
    // only then ends the way a pipeline expects of it (by SIGPIPE, status 141).
    std::signal(SIGPIPE, SIG_IGN);
    // A map is built from hundreds of thousands of small allocations on four threads;
    // growing each heap in large steps spares thousands of mprotect calls per scan.
    // Untouched padding costs address space, not memory.
    mallopt(M_TOP_PAD, 32 << 20);
    CLI::App app{
        "Veldan maps where space goes on a disk or in a folder and helps reclaim it safely.",
        "veldan"};
    app.require_subcommand(1);
    app.set_version_flag("--version", "veldan 0.1.0");
    std::map<CLI::App*, CommandRunner> runners;
    for (auto& entry : CommandRegistry::ordered()) {
        CLI::App* before =
            app.get_subcommands({}).empty() ? nullptr : app.get_subcommands({}).back();
        auto runner = entry.factory(app);
        CLI::App* added = app.get_subcommands({}).back();
        if (added != before) runners[added] = std::move(runner);
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForVersion& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        app.exit(e);
        return exitUsage;
    }
    for (auto* sub : app.get_subcommands()) {
        auto found = runners.find(sub);
        if (found == runners.end()) continue;
        const int status = found->second();
        if (status != exitSuccess && outputClosed()) {
            std::signal(SIGPIPE, SIG_DFL);
            std::raise(SIGPIPE);
        }
        return status;
    }
    return exitUsage;
}
