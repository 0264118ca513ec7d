#include <gtest/gtest.h>

#include <random>

#include "cache/ScanArchive.hpp"
#include "platform/PropertyListReader.hpp"
#include "platform/PropertyListWriter.hpp"
#include "tests/cache/LibplistEdit.hpp"
#include "tests/cache/Snapshots.hpp"

namespace veldan {
namespace {

using platform::PropertyListReader;
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

std::vector<std::string> keysOf(const PropertyListReader& reader,
                                PropertyListReader::Object object) {
    std::vector<std::string> keys;
    auto dict = reader.dictionary(object);
    for (size_t i = 0; dict && i < dict->size(); ++i)
        keys.push_back(*reader.string(dict->key(i)));
    return keys;
}

PropertyListReader::Object valueOf(const PropertyListReader& reader,
                                   PropertyListReader::Object object, std::string_view key) {
    auto dict = reader.dictionary(object);
    for (size_t i = 0; dict && i < dict->size(); ++i) {
        if (reader.stringEquals(dict->key(i), key)) return dict->value(i);
    }
    return {};
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

TEST(ScanArchive, WritesExactlyTheDocumentedKeysInOrder) {
    const std::string document = encoded(sampleArchive());
    auto reader = PropertyListReader::open(document);
    ASSERT_TRUE(reader);
    const auto top = reader->root();
    EXPECT_EQ(keysOf(*reader, top),
              (std::vector<std::string>{"version", "scopePath", "rootIdentity", "snapshot"}));
    EXPECT_EQ(keysOf(*reader, valueOf(*reader, top, "rootIdentity")),
              (std::vector<std::string>{"device", "inode", "resolvedPath", "resolvedDevice",
                                        "resolvedInode"}));
    const auto snapshot = valueOf(*reader, top, "snapshot");
    EXPECT_EQ(keysOf(*reader, snapshot),
              (std::vector<std::string>{
                  "root", "volume", "discoveredDirectories", "largestFiles", "visitedFolderCount",
                  "visitedFileCount", "unreadableItems", "unreadablePaths", "unreadableReasons",
                  "skippedPhotosLibraries", "skippedMusicLibraries", "finishedAt"}));
    EXPECT_EQ(keysOf(*reader, valueOf(*reader, snapshot, "root")),
              (std::vector<std::string>{"path", "name", "bytes", "category", "children",
                                        "isDirectory", "isSummary", "isPartial", "excludedPaths"}));
    EXPECT_EQ(reader->string(valueOf(*reader, valueOf(*reader, snapshot, "root"), "category")),
              title(DiskCategory::files));
    EXPECT_EQ(reader->type(valueOf(*reader, snapshot, "finishedAt")),
              PropertyListReader::Type::date);
}

TEST(ScanArchive, LeavesOutAbsentUnreadableReasons) {
    ScanArchive archive = sampleArchive();
    archive.snapshot.unreadableReasons.reset();
    const std::string document = encoded(archive);
    auto reader = PropertyListReader::open(document);
    EXPECT_FALSE(valueOf(*reader, valueOf(*reader, reader->root(), "snapshot"), "unreadableReasons")
                     .valid());
    auto decoded = ScanArchive::decode(document);
    ASSERT_TRUE(decoded);
    EXPECT_FALSE(decoded->snapshot.unreadableReasons);
}

TEST(ScanArchive, DecodesTheSameRecordWrittenByLibplist) {
    const ScanArchive archive = sampleArchive();
    const std::string rewritten = test::editWithLibplist(encoded(archive), [](plist_t) {});
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
    // A key this version does not know is ignored, as the platform decoder ignores it.
    EXPECT_FALSE(fails([](plist_t archive) {
        plist_dict_set_item(test::rootNode(archive), "comment", plist_new_string("later version"));
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
    const Ref identity =
        dictionary({"device", "inode", "resolvedPath", "resolvedDevice", "resolvedInode"},
                   {zero, zero, writer.string("/x"), zero, zero});
    const Ref top = dictionary({"version", "scopePath", "rootIdentity", "snapshot"},
                               {writer.integer(2), writer.string("/x"), identity, snapshot});
    return *writer.finish(top);
}

TEST(ScanArchive, StopsOnSharedRecordsInsteadOfMultiplyingThem) {
    // A few shared levels are still within what the file could hold on its own.
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
