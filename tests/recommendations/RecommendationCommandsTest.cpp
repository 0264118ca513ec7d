// Shell quoting and the commands' cases that no script run reaches. What the guarded
// commands do is checked by running them in RecommendationScriptTest.

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
    EXPECT_EQ(RecommendationCommands::openLines({"/a b/it's", "/b"}),
              "xdg-open '/a b/it'\\''s'\nxdg-open '/b'");
}

TEST(RecommendationCommands, GuardedRemovalWithoutManifestOrIdentity) {
    const ScanFolderIdentity identity{2049, 123456, 1700000000, 5, 1700000001, 6};
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

}  // namespace veldan
