#include "duplicates/DuplicatePrefixBoard.hpp"

#include <gtest/gtest.h>

namespace veldan {
namespace {

platform::Sha256Digest prefix(uint8_t value) {
    platform::Sha256Digest digest{};
    digest.fill(value);
    return digest;
}

TEST(DuplicatePrefixBoardTest, ACandidateStopsOnceItDiffersFromEveryOneItCouldMatch) {
    // Group {0, 1, 2}, then group {3}: a lone candidate's group has nobody to match.
    DuplicatePrefixBoard board({3, 1});
    EXPECT_FALSE(board.post(3, prefix(1)));
    EXPECT_TRUE(board.stopped(3));

    EXPECT_TRUE(board.post(0, prefix(1)));  // nobody else has read anything yet
    EXPECT_TRUE(board.post(0, prefix(2)));
    EXPECT_TRUE(board.post(1, prefix(1)));  // agrees with 0 so far
    EXPECT_TRUE(board.post(1, prefix(9)));  // 0 differs now, but 2 has read nothing
    board.drop(2);                          // 2 failed to read
    EXPECT_FALSE(board.post(1, prefix(10)));
    EXPECT_TRUE(board.stopped(1));
    // 0 is alone now: 1 stopped and 2 failed. A failure is not a stop.
    EXPECT_FALSE(board.post(0, prefix(3)));
    EXPECT_TRUE(board.stopped(0));
    EXPECT_FALSE(board.stopped(2));
}

TEST(DuplicatePrefixBoardTest, AFinishedCopyKeepsItsMatchReading) {
    DuplicatePrefixBoard board({2});
    for (uint8_t chunk = 1; chunk <= 3; ++chunk)
        EXPECT_TRUE(board.post(0, prefix(chunk)));  // read whole, never dropped
    for (uint8_t chunk = 1; chunk <= 3; ++chunk)
        EXPECT_TRUE(board.post(1, prefix(chunk)));
    EXPECT_FALSE(board.stopped(1));
}

}  // namespace
}  // namespace veldan
