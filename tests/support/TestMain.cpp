// Every test binary starts here: before any test runs, HOME and every XDG_*_HOME point
// into a private temporary folder, so no test can read or write the real home.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <csignal>

#include <string>

#include "tests/support/Files.hpp"
#include "tests/support/TempDir.hpp"

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    // A child that exits before reading the input a test feeds it must fail that test,
    // not kill the whole test binary.
    std::signal(SIGPIPE, SIG_IGN);
    veldan::test::TempDir home;
    const std::string base = home.path();
    ::setenv("HOME", (base + "/home").c_str(), 1);
    ::setenv("XDG_CACHE_HOME", (base + "/home/.cache").c_str(), 1);
    ::setenv("XDG_STATE_HOME", (base + "/home/.local/state").c_str(), 1);
    ::setenv("XDG_DATA_HOME", (base + "/home/.local/share").c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", (base + "/home/.config").c_str(), 1);
    ::setenv("NO_COLOR", "1", 1);
    // AI tools' own variables would point the AI storage catalogue at real folders.
    for (const char* name : {"OLLAMA_MODELS", "HF_HOME", "GEMINI_CLI_HOME"})
        ::unsetenv(name);
    veldan::test::makeFolders(base + "/home");
    return RUN_ALL_TESTS();
}
