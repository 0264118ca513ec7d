#include "scan/ClonedFileSpace.hpp"

#include <gtest/gtest.h>

namespace veldan {

namespace {

struct FakeQuery {
    std::optional<ClonedFileSpace::Sharing> answer;
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
    FakeQuery fake{ClonedFileSpace::Sharing{0, 7, 2}};
    EXPECT_EQ(ClonedFileSpace::diskShare("/f", 65'535, fake.query()), 65'535);
    EXPECT_EQ(fake.calls, 0);
    EXPECT_EQ(ClonedFileSpace::diskShare("/f", 65'536, fake.query()), 32'768);
    EXPECT_EQ(fake.calls, 1);
}

TEST(ClonedFileSpace, SharedBlocksAreSplitAmongLiveClones) {
    FakeQuery twoClones{ClonedFileSpace::Sharing{0, 7, 2}};
    EXPECT_EQ(ClonedFileSpace::diskShare("/f", 10'000'000, twoClones.query()), 5'000'000);

    FakeQuery fourClones{ClonedFileSpace::Sharing{2 << 20, 7, 4}};
    EXPECT_EQ(ClonedFileSpace::diskShare("/f", 10 << 20, fourClones.query()), 4 << 20);

    FakeQuery uneven{ClonedFileSpace::Sharing{1, 7, 3}};
    EXPECT_EQ(ClonedFileSpace::diskShare("/f", 100'001, uneven.query()), 1 + 100'000 / 3);
}

TEST(ClonedFileSpace, FullSizeWithoutLiveClonesPrivateBlocksOrAnAnswer) {
    FakeQuery none0{ClonedFileSpace::Sharing{0, 7, 0}};
    EXPECT_EQ(ClonedFileSpace::diskShare("/f", 1'000'000, none0.query()), 1'000'000);
    FakeQuery single{ClonedFileSpace::Sharing{0, 7, 1}};
    EXPECT_EQ(ClonedFileSpace::diskShare("/f", 1'000'000, single.query()), 1'000'000);
    FakeQuery allPrivate{ClonedFileSpace::Sharing{1'000'000, 7, 3}};
    EXPECT_EQ(ClonedFileSpace::diskShare("/f", 1'000'000, allPrivate.query()), 1'000'000);
    FakeQuery none{std::nullopt};
    EXPECT_EQ(ClonedFileSpace::diskShare("/f", 1'000'000, none.query()), 1'000'000);
    // This file system has no clone attributes: every file keeps its allocated size.
    EXPECT_EQ(ClonedFileSpace::sharing("/etc/hostname"), std::nullopt);
    EXPECT_EQ(ClonedFileSpace::diskShare("/etc/hostname", 1'000'000), 1'000'000);
}

}  // namespace veldan
