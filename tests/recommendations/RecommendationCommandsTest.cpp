// The exact shell text of every command, written out by hand.

#include "recommendations/RecommendationCommands.hpp"

#include <gtest/gtest.h>

#include "scan/ShellQuote.hpp"

namespace veldan {

TEST(ShellQuote, WrapsInSingleQuotesAndEscapesOnlyTheQuote) {
    EXPECT_EQ(ShellQuote::quote(""), "''");
    EXPECT_EQ(ShellQuote::quote("it's"), "'it'\\''s'");
    EXPECT_EQ(ShellQuote::quote("''"), "''\\'''\\'''");
    EXPECT_EQ(ShellQuote::quote("$(x) `y` \\ \n -z"), "'$(x) `y` \\ \n -z'");
}

TEST(RecommendationCommands, OpenLinesUseXdgOpen) {
    EXPECT_EQ(RecommendationCommands::openLine("/a b/it's"), "xdg-open '/a b/it'\\''s'");
    EXPECT_EQ(RecommendationCommands::openLines({"/a", "/b"}), "xdg-open '/a'\nxdg-open '/b'");
}

TEST(RecommendationCommands, GuardedCacheCommandChecksToolLocationAndLinks) {
    const std::string expected =
        "if command -v npm >/dev/null 2>&1; then\n"
        "    if veldan_active_cache=\"$(npm config get cache)\"; then\n"
        "        if [ \"$veldan_active_cache\" = '/home/o'\\''b/.npm' ]; then\n"
        "            if [ -d \"$veldan_active_cache\" ] && [ \"$(cd -P \"$veldan_active_cache\" "
        "2>/dev/null && pwd -P)\" = \"$veldan_active_cache\" ]; then\n"
        "                npm cache clean --force\n"
        "            else\n"
        "                printf '%s\\n' 'The active npm cache now points elsewhere; skipped npm "
        "cache.' >&2\n"
        "            fi\n"
        "        else\n"
        "            printf '%s\\n' 'The active npm cache was not measured by Veldan; skipped npm "
        "cache.' >&2\n"
        "        fi\n"
        "    else\n"
        "        printf '%s\\n' 'Could not find the active npm cache; skipped npm cache.' >&2\n"
        "    fi\n"
        "else\n"
        "    printf '%s\\n' 'npm is unavailable; skipped npm cache.' >&2\n"
        "fi";
    EXPECT_EQ(
        RecommendationCommands::guardedCacheCommand("npm", "npm config get cache", "/home/o'b/.npm",
                                                    "npm cache clean --force", "npm cache"),
        expected);
}

TEST(RecommendationCommands, GuardedRemovalChecksFolderLinkPathIdentityAndManifest) {
    const ScanFolderIdentity identity{2049, 123456, 1700000000, 5, 1700000001, 6};
    EXPECT_EQ(
        RecommendationCommands::guardedGeneratedRemoval("/p/it's/.next", "package.json", identity),
        "if [ -d '/p/it'\\''s/.next' ] && [ ! -L '/p/it'\\''s/.next' ] && "
        "[ \"$(cd -P '/p/it'\\''s/.next' 2>/dev/null && pwd -P)\" = '/p/it'\\''s/.next' ] && "
        "[ \"$(/usr/bin/stat -c '%d:%i:%Y:%Z' '/p/it'\\''s/.next' 2>/dev/null)\" = "
        "'2049:123456:1700000000:1700000001' ] && [ -f '/p/it'\\''s/package.json' ]; "
        "then rm -rf -- '/p/it'\\''s/.next'; else printf '%s\\n' 'Folder changed or points "
        "elsewhere; skipped /p/it'\\''s/.next. Scan again in Veldan.' >&2; fi");
    const std::string withoutManifest =
        RecommendationCommands::guardedGeneratedRemoval("/c/ms-playwright", std::nullopt, identity);
    EXPECT_EQ(withoutManifest.find("[ -f"), std::string::npos);
    EXPECT_NE(withoutManifest.find("'2049:123456:1700000000:1700000001' ]; then rm -rf -- "
                                   "'/c/ms-playwright'; else"),
              std::string::npos);
    EXPECT_EQ(RecommendationCommands::guardedGeneratedRemoval("/gone/.next", "package.json",
                                                              std::nullopt),
              "printf '%s\\n' 'Folder changed or points elsewhere; skipped /gone/.next. Scan again "
              "in Veldan.' >&2");
}

TEST(RecommendationCommands, PnpmPruneAcceptsTheMeasuredStoresAndOneLevelInside) {
    EXPECT_EQ(
        RecommendationCommands::pnpmPruneCommand(
            {"/h/Library/pnpm/store", "/h/.local/share/pnpm/store"}),
        "if command -v pnpm >/dev/null 2>&1; then\n"
        "    if veldan_active_store=\"$(pnpm store path)\"; then\n"
        "        case \"$veldan_active_store\" in\n"
        "            "
        "'/h/Library/pnpm/store'|'/h/Library/pnpm/store'/*|'/h/.local/share/pnpm/store'|"
        "'/h/.local/share/pnpm/store'/*)\n"
        "                if [ -d \"$veldan_active_store\" ] && [ \"$(cd -P "
        "\"$veldan_active_store\" "
        "2>/dev/null && pwd -P)\" = \"$veldan_active_store\" ]; then\n"
        "                    pnpm store prune\n"
        "                else\n"
        "                    printf '%s\\n' 'The active pnpm store now points elsewhere; skipped "
        "pruning.' >&2\n"
        "                fi ;;\n"
        "            *) printf '%s\\n' 'The active pnpm store was not measured by Veldan; skipped "
        "pruning.' >&2 ;;\n"
        "        esac\n"
        "    else\n"
        "        printf '%s\\n' 'Could not find the active pnpm store; skipped pruning.' >&2\n"
        "    fi\n"
        "else\n"
        "    printf '%s\\n' 'pnpm is unavailable; skipped pnpm store.' >&2\n"
        "fi");
}

}  // namespace veldan
