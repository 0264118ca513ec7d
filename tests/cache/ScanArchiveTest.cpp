#include <gtest/gtest.h>

#include <random>

#include "cache/ScanArchive.hpp"
#include "platform/PropertyListWriter.hpp"
#include "tests/cache/LibplistEdit.hpp"
#include "tests/cache/Snapshots.hpp"

namespace veldan {
namespace {

using platform::PropertyListWriter;

ScanArchive sampleArchive() {
    ScanArchive archive;
    archive.scopePath = "/home/ana/Proj\xE9ts";
    archive.rootIdentity = RootIdentity{2049, 1234567, "/data/ana/Proj\xE9ts", 66306, 7654321};
    archive.snapshot = test::sampleSnapshot(archive.scopePath);
    return archive;
}

std::optional<std::string> encode(const ScanArchive& archive, size_t maximumBytes) {
    return ScanArchive::encode(archive.scopePath, archive.rootIdentity, archive.snapshot,
                               maximumBytes);
}

std::string encoded(const ScanArchive& archive) {
    auto document = encode(archive, SIZE_MAX);
    if (!document) throw std::runtime_error("encode failed");
    return *document;
}

TEST(ScanArchive, RoundTripsEveryFieldByteForByte) {
    const ScanArchive archive = sampleArchive();
    auto decoded = ScanArchive::decode(encoded(archive));
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->scopePath, archive.scopePath);
    EXPECT_EQ(decoded->rootIdentity, archive.rootIdentity);
    EXPECT_EQ(decoded->snapshot, archive.snapshot);
    EXPECT_EQ(decoded->snapshot.root.children[1].name, "caf\xE9-\xFF\xFE");
}

TEST(ScanArchive, LeavesOutAbsentUnreadableReasons) {
    ScanArchive archive = sampleArchive();
    archive.snapshot.unreadableReasons.reset();
    const std::string document = encoded(archive);
    bool written = true;
    test::editWithLibplist(document, [&](plist_t top) {
        written = plist_dict_get_item(plist_dict_get_item(top, "snapshot"), "unreadableReasons");
    });
    EXPECT_FALSE(written);
    auto decoded = ScanArchive::decode(document);
    ASSERT_TRUE(decoded);
    EXPECT_FALSE(decoded->snapshot.unreadableReasons);
}

TEST(ScanArchive, DecodesTheSameRecordWrittenByLibplistIgnoringUnknownKeys) {
    const ScanArchive archive = sampleArchive();
    const std::string rewritten = test::editWithLibplist(encoded(archive), [](plist_t top) {
        plist_dict_set_item(test::rootNode(top), "comment", plist_new_string("later version"));
    });
    ASSERT_FALSE(rewritten.empty());
    auto decoded = ScanArchive::decode(rewritten);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->snapshot.root, archive.snapshot.root);
    EXPECT_EQ(decoded->scopePath, archive.scopePath);
}

TEST(ScanArchive, FailsAsAWholeOnAMissingOrMistypedKey) {
    const std::string document = encoded(sampleArchive());
    const auto fails = [&](const std::function<void(plist_t)>& edit) {
        return !ScanArchive::decode(test::editWithLibplist(document, edit));
    };
    EXPECT_TRUE(fails([](plist_t archive) {
        plist_t child =
            plist_array_get_item(plist_dict_get_item(test::rootNode(archive), "children"), 1);
        plist_dict_remove_item(child, "isPartial");
    }));
    EXPECT_TRUE(fails([](plist_t archive) {
        plist_dict_set_item(test::rootNode(archive), "bytes", plist_new_string("11 GB"));
    }));
    EXPECT_TRUE(fails([](plist_t archive) {
        plist_dict_set_item(test::rootNode(archive), "category", plist_new_string("Photos"));
    }));
    EXPECT_TRUE(fails([](plist_t archive) {
        plist_dict_remove_item(plist_dict_get_item(archive, "snapshot"), "finishedAt");
    }));
    EXPECT_TRUE(fails([](plist_t archive) {
        plist_dict_remove_item(plist_dict_get_item(archive, "rootIdentity"), "resolvedInode");
    }));
}

TEST(ScanArchive, AcceptsOnlyVersionTwo) {
    const std::string document = encoded(sampleArchive());
    for (uint64_t version : {0, 1, 3}) {
        EXPECT_FALSE(ScanArchive::decode(test::editWithLibplist(document, [&](plist_t archive) {
            plist_dict_set_item(archive, "version", plist_new_uint(version));
        }))) << version;
    }
}

TEST(ScanArchive, RefusesToEncodeBeyondTheLimitOrDepth) {
    const ScanArchive archive = sampleArchive();
    const size_t size = encoded(archive).size();
    EXPECT_TRUE(encode(archive, size));
    EXPECT_FALSE(encode(archive, size - 1));

    ScanArchive deep = sampleArchive();
    DiskNode* node = &deep.snapshot.root;
    for (size_t depth = 0; depth <= ScanArchive::maximumDepth; ++depth) {
        node->children = {DiskNode{node->path + "/d", "d", 1, DiskCategory::files, {}, true}};
        node = &node->children[0];
    }
    EXPECT_FALSE(encode(deep, SIZE_MAX));
}

// A hostile file whose folders all list the same child twice would, followed naively,
// decode 2^60 folders.
std::string sharedTreeArchive(int levels) {
    using Ref = PropertyListWriter::Ref;
    PropertyListWriter writer;
    const auto dictionary = [&](std::vector<std::string_view> names, std::vector<Ref> values) {
        std::vector<Ref> keys;
        for (auto name : names)
            keys.push_back(writer.string(name));
        return writer.dictionary(keys, values);
    };
    const auto node = [&](std::vector<Ref> children) {
        return dictionary(
            {"path", "name", "bytes", "category", "children", "isDirectory", "isSummary",
             "isPartial", "excludedPaths"},
            {writer.string("/x"), writer.string("x"), writer.integer(1),
             writer.string(title(DiskCategory::files)), writer.array(children),
             writer.boolean(true), writer.boolean(false), writer.boolean(false), writer.array({})});
    };
    Ref tree = node({});
    for (int i = 0; i < levels; ++i)
        tree = node({tree, tree});
    const Ref zero = writer.integer(0);
    const Ref snapshot =
        dictionary({"root", "volume", "discoveredDirectories", "largestFiles", "visitedFolderCount",
                    "visitedFileCount", "unreadableItems", "unreadablePaths",
                    "skippedPhotosLibraries", "skippedMusicLibraries", "finishedAt"},
                   {tree, dictionary({"free", "total"}, {zero, zero}), writer.dictionary({}, {}),
                    writer.array({}), zero, zero, zero, writer.array({}), zero, zero,
                    writer.date(std::chrono::system_clock::now())});
    const Ref identity = dictionary(
        {"device", "inode", "resolvedPath", "resolvedDevice", "resolvedInode", "createdSeconds",
         "createdNanoseconds", "resolvedCreatedSeconds", "resolvedCreatedNanoseconds"},
        {zero, zero, writer.string("/x"), zero, zero, zero, zero, zero, zero});
    const Ref top = dictionary({"version", "scopePath", "rootIdentity", "snapshot"},
                               {writer.integer(2), writer.string("/x"), identity, snapshot});
    return *writer.finish(top);
}

TEST(ScanArchive, StopsOnSharedRecordsInsteadOfMultiplyingThem) {
    // A few shared levels are still within what the file could hold on its own; the
    // hand-written file also shows the reader takes the documented keys and types.
    auto small = ScanArchive::decode(sharedTreeArchive(2));
    ASSERT_TRUE(small);
    EXPECT_EQ(small->snapshot.root.children.size(), 2u);
    EXPECT_EQ(small->snapshot.root.children[1].children.size(), 2u);

    const std::string bomb = sharedTreeArchive(60);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(ScanArchive::decode(bomb));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
}

TEST(ScanArchive, SurvivesTruncationAndRandomDamage) {
    const std::string document = encoded(sampleArchive());
    for (size_t length = 0; length < document.size(); ++length) {
        EXPECT_FALSE(ScanArchive::decode(document.substr(0, length)));
    }
    std::mt19937 random(11);
    for (int round = 0; round < 3000; ++round) {
        std::string damaged = document;
        for (int hits = 1 + int(random() % 4); hits > 0; --hits) {
            damaged[random() % damaged.size()] = static_cast<char>(random());
        }
        (void)ScanArchive::decode(damaged);  // anything but a crash
    }
    std::string noise(4096, '\0');
    for (auto& byte : noise)
        byte = static_cast<char>(random());
    EXPECT_FALSE(ScanArchive::decode(noise));
    EXPECT_FALSE(ScanArchive::decode("bplist00" + noise));
}

}  // namespace
}  // namespace veldan
