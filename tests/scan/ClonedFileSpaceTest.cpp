#include "scan/ClonedFileSpace.hpp"

#include <gtest/gtest.h>

namespace veldan {

namespace {

using Sharing = ClonedFileSpace::Sharing;

struct FakeQuery {
    std::optional<Sharing> answer;
    int calls = 0;
    ClonedFileSpace::Query query() {
        return [this](const std::string&) {
            ++calls;
            return answer;
        };
    }
};

}  // namespace

TEST(ClonedFileSpace, SmallFilesAreNeverQueried) {
    FakeQuery fake{Sharing{0, 7, 2}};
    EXPECT_EQ(ClonedFileSpace::diskShare("/f", 65'535, fake.query()), 65'535);
    EXPECT_EQ(fake.calls, 0);
    EXPECT_EQ(ClonedFileSpace::diskShare("/f", 65'536, fake.query()), 32'768);
    EXPECT_EQ(fake.calls, 1);
}

TEST(ClonedFileSpace, SharedBlocksAreSplitAmongLiveClonesElseTheFullSizeCounts) {
    struct Case {
        std::optional<Sharing> answer;
        int64_t bytes;
        int64_t share;
    };
    const std::vector<Case> cases = {
        {Sharing{0, 7, 2}, 10'000'000, 5'000'000},
        {Sharing{2 << 20, 7, 4}, 10 << 20, 4 << 20},
        {Sharing{1, 7, 3}, 100'001, 1 + 100'000 / 3},
        {Sharing{0, 7, 0}, 1'000'000, 1'000'000},          // no live clones
        {Sharing{0, 7, 1}, 1'000'000, 1'000'000},          // a single one
        {Sharing{1'000'000, 7, 3}, 1'000'000, 1'000'000},  // all blocks private
        {std::nullopt, 1'000'000, 1'000'000},
    };
    for (const auto& c : cases) {
        FakeQuery fake{c.answer};
        EXPECT_EQ(ClonedFileSpace::diskShare("/f", c.bytes, fake.query()), c.share) << c.bytes;
    }
    // This file system has no clone attributes: every file keeps its allocated size.
    EXPECT_EQ(ClonedFileSpace::sharing("/etc/hostname"), std::nullopt);
    EXPECT_EQ(ClonedFileSpace::diskShare("/etc/hostname", 1'000'000), 1'000'000);
}

}  // namespace veldan
