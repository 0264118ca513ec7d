#include "scan/SizeText.hpp"

#include <gtest/gtest.h>

namespace veldan {

TEST(SizeText, ChoosesTheUnitByMagnitudeWithGigabytesFromATenth) {
    EXPECT_EQ(SizeText::string(0), "0 GB");
    EXPECT_EQ(SizeText::string(-5), "0 GB");
    EXPECT_EQ(SizeText::string(999), "999 B");
    EXPECT_EQ(SizeText::string(1'000), "1 KB");
    EXPECT_EQ(SizeText::string(999'999), "1000 KB");
    EXPECT_EQ(SizeText::string(1'000'000), "1 MB");
    EXPECT_EQ(SizeText::string(99'999'999), "100 MB");
    EXPECT_EQ(SizeText::string(100'000'000), "0.1 GB");
    EXPECT_EQ(SizeText::string(9'990'000'000), "10.0 GB");
}

TEST(SizeText, CompactDropsTheDecimalFromTenGigabytesAndTenTerabytes) {
    EXPECT_EQ(SizeText::string(10'000'000'000, false), "10.0 GB");
    EXPECT_EQ(SizeText::string(10'000'000'000, true), "10 GB");
    EXPECT_EQ(SizeText::string(9'500'000'000, true), "9.5 GB");
    EXPECT_EQ(SizeText::string(1'000'000'000'000, true), "1.0 TB");
    EXPECT_EQ(SizeText::string(12'300'000'000'000, true), "12 TB");
    EXPECT_EQ(SizeText::string(12'300'000'000'000, false), "12.3 TB");
}

TEST(SizeText, ShareRoundsAndNeverExceedsAHundredPercent) {
    EXPECT_EQ(SizeText::share(5, 0), "0%");
    EXPECT_EQ(SizeText::share(0, 1'000), "0%");
    EXPECT_EQ(SizeText::share(5, 1'000), "<1%");
    EXPECT_EQ(SizeText::share(10, 1'000), "1%");
    EXPECT_EQ(SizeText::share(333, 1'000), "33%");
    EXPECT_EQ(SizeText::share(2'000, 1'000), "100%");
    EXPECT_EQ(SizeText::share(INT64_MAX, INT64_MAX), "100%");
}

}  // namespace veldan
