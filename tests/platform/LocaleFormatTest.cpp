#include <gtest/gtest.h>

#include "platform/LocaleFormat.hpp"
#include "tests/support/IsolatedHome.hpp"

namespace veldan::platform {
namespace {

using std::chrono::system_clock;

TEST(LocaleFormat, GroupsDigitsTheWayTheLocaleDoes) {
    EXPECT_EQ(LocaleFormat("en_US").integer(12345678901), "12,345,678,901");
    EXPECT_EQ(LocaleFormat("de_DE").integer(12345678901), "12.345.678.901");
}

class LocalTime : public ::testing::Test {
protected:
    void SetUp() override {
        environment_.set("TZ", "UTC");
        ::tzset();
    }
    void TearDown() override { ::tzset(); }
    test::ScopedEnvironment environment_;
};

TEST_F(LocalTime, WritesTheAbbreviatedDateAndShortTime) {
    // 2026-11-21 12:39:05 UTC
    const auto when = system_clock::time_point(std::chrono::seconds(1'795'264'745));
    EXPECT_EQ(LocaleFormat("en_US").abbreviatedDateTime(when), "Nov 21, 2026, 12:39 PM");
    EXPECT_EQ(LocaleFormat("de_DE").abbreviatedDateTime(when), "21. Nov. 2026, 12:39");
    EXPECT_EQ(LocaleFormat("C").abbreviatedDateTime(when), "21 Nov 2026, 12:39");
}

}  // namespace
}  // namespace veldan::platform
