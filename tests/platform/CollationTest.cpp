#include "platform/Collation.hpp"

#include <gtest/gtest.h>

namespace veldan::platform {
namespace {

TEST(CollationTest, ContainsIgnoresCaseAndAccents) {
    EXPECT_TRUE(localizedContains("/d/r\u00e9sum\u00e9.pdf", "resume"));
    EXPECT_TRUE(localizedContains("/d/r\u00e9sum\u00e9.pdf", "RESUME"));
    EXPECT_TRUE(localizedContains("/d/resume.pdf", "R\u00e9sum\u00e9"));
    // Composed and decomposed spellings of one accent are the same text.
    EXPECT_TRUE(localizedContains("/d/re\u0301sume\u0301.pdf", "r\u00e9sum\u00e9"));
    EXPECT_FALSE(localizedContains("/d/r\u00e9sum\u00e9.pdf", "resumes"));
    EXPECT_TRUE(localizedContains("anything", ""));
}

TEST(CollationTest, ContainsKeepsCompatibilityFormsApart) {
    EXPECT_FALSE(localizedContains("/d/\ufb01le.txt", "file"));              // the "fi" ligature
    EXPECT_FALSE(localizedContains("/d/\uff46\uff49\uff4c\uff45", "file"));  // full-width
    EXPECT_TRUE(localizedContains("/d/\ufb01le.txt", "\ufb01le"));
}

TEST(CollationTest, CompareFollowsFinderOrder) {
    EXPECT_LT(localizedStandardCompare("file2", "file10"), 0);
    EXPECT_EQ(localizedStandardCompare("File", "file"), 0);
    EXPECT_GT(localizedStandardCompare("b", "A"), 0);
}

}  // namespace
}  // namespace veldan::platform
