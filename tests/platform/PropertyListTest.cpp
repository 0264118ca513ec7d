#include <gtest/gtest.h>
#include <plist/plist.h>

#include <bit>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <random>
#include <vector>

#include "platform/PropertyListReader.hpp"
#include "platform/PropertyListWriter.hpp"

namespace veldan::platform {
namespace {

using std::chrono::system_clock;
using Reader = PropertyListReader;
using Ref = PropertyListWriter::Ref;

struct PlistFree {
    void operator()(plist_t node) const { plist_free(node); }
};
using LibPlist = std::unique_ptr<void, PlistFree>;

LibPlist parseWithLibplist(const std::string& document) {
    plist_t root = nullptr;
    plist_from_bin(document.data(), static_cast<uint32_t>(document.size()), &root);
    return LibPlist(root);
}

std::string libplistString(plist_t node) {
    uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    return text ? std::string(text, length) : std::string("<none>");
}

system_clock::time_point micros(int64_t value) {
    return system_clock::time_point(std::chrono::microseconds(value));
}

// One document with every kind of value, written by the writer under test.
struct Sample {
    std::string document;
    std::string longText = std::string(40, 'x') + "\xC3\xA9";  // needs UTF-16 and a count integer
    std::vector<int64_t> numbers = {
        0, 1, 255, 256, 65535, 65536, 4294967295LL, 4294967296LL, INT64_MAX, -1, INT64_MIN};
    system_clock::time_point when = micros(1'790'000'000'123'456);  // 2026, to the microsecond

    Sample() {
        PropertyListWriter writer;
        std::vector<Ref> numberRefs;
        for (int64_t n : numbers)
            numberRefs.push_back(writer.integer(n));
        std::vector<Ref> many;
        for (int i = 0; i < 20; ++i)
            many.push_back(writer.integer(i));
        const std::vector<Ref> keys = {
            writer.string("ascii"), writer.string("long"), writer.string("numbers"),
            writer.string("yes"),   writer.string("no"),   writer.string("when"),
            writer.string("blob"),  writer.string("many"), writer.string("empty")};
        const std::vector<Ref> values = {writer.string("plain"),
                                         writer.string(longText),
                                         writer.array(numberRefs),
                                         writer.boolean(true),
                                         writer.boolean(false),
                                         writer.date(when),
                                         writer.data(std::string("\0\x01\xFF", 3)),
                                         writer.array(many),
                                         writer.dictionary({}, {})};
        document = *writer.finish(writer.dictionary(keys, values));
    }
};

TEST(PropertyListWriter, WritesWhatLibplistReads) {
    Sample sample;
    auto root = parseWithLibplist(sample.document);
    ASSERT_TRUE(root);
    ASSERT_EQ(plist_get_node_type(root.get()), PLIST_DICT);
    EXPECT_EQ(libplistString(plist_dict_get_item(root.get(), "ascii")), "plain");
    EXPECT_EQ(libplistString(plist_dict_get_item(root.get(), "long")), sample.longText);

    plist_t numbers = plist_dict_get_item(root.get(), "numbers");
    ASSERT_EQ(plist_array_get_size(numbers), sample.numbers.size());
    for (uint32_t i = 0; i < sample.numbers.size(); ++i) {
        uint64_t value = 0;
        plist_get_uint_val(plist_array_get_item(numbers, i), &value);
        EXPECT_EQ(static_cast<int64_t>(value), sample.numbers[i]) << i;
    }
    uint8_t yes = 0, no = 1;
    plist_get_bool_val(plist_dict_get_item(root.get(), "yes"), &yes);
    plist_get_bool_val(plist_dict_get_item(root.get(), "no"), &no);
    EXPECT_EQ(yes, 1);
    EXPECT_EQ(no, 0);

    int32_t seconds = 0;
    int32_t microseconds = 0;
    plist_get_date_val(plist_dict_get_item(root.get(), "when"), &seconds, &microseconds);
    EXPECT_EQ(seconds, 1'790'000'000 - 978'307'200);
    EXPECT_NEAR(microseconds, 123'456, 1);  // libplist truncates its double

    uint64_t length = 0;
    const char* blob = plist_get_data_ptr(plist_dict_get_item(root.get(), "blob"), &length);
    EXPECT_EQ(std::string(blob, length), std::string("\0\x01\xFF", 3));
    EXPECT_EQ(plist_array_get_size(plist_dict_get_item(root.get(), "many")), 20u);
    EXPECT_EQ(plist_dict_get_size(plist_dict_get_item(root.get(), "empty")), 0u);
}

TEST(PropertyListReader, ReadsBackEveryKindOfValue) {
    Sample sample;
    auto reader = Reader::open(sample.document);
    ASSERT_TRUE(reader);
    auto root = reader->dictionary(reader->root());
    ASSERT_TRUE(root);
    ASSERT_EQ(root->size(), 9u);
    EXPECT_TRUE(reader->stringEquals(root->key(0), "ascii"));
    EXPECT_EQ(reader->string(root->value(0)), "plain");
    EXPECT_EQ(reader->string(root->value(1)), sample.longText);

    auto numbers = reader->array(root->value(2));
    ASSERT_TRUE(numbers);
    ASSERT_EQ(numbers->size(), sample.numbers.size());
    for (size_t i = 0; i < sample.numbers.size(); ++i) {
        EXPECT_EQ(reader->integer((*numbers)[i]), sample.numbers[i]) << i;
    }
    EXPECT_EQ(reader->boolean(root->value(3)), true);
    EXPECT_EQ(reader->boolean(root->value(4)), false);
    EXPECT_EQ(reader->date(root->value(5)), sample.when);
    EXPECT_EQ(reader->data(root->value(6)), std::string("\0\x01\xFF", 3));
    EXPECT_EQ(reader->array(root->value(7))->size(), 20u);
    EXPECT_EQ(reader->dictionary(root->value(8))->size(), 0u);
    // Asking for the wrong type answers nothing rather than a converted value.
    EXPECT_FALSE(reader->integer(root->value(0)));
    EXPECT_FALSE(reader->string(root->value(2)));
    EXPECT_FALSE(reader->array(root->value(8)));
    EXPECT_EQ(reader->type(root->value(5)), Reader::Type::date);
}

TEST(PropertyListReader, RefusesDatesItCannotKeepToTheMicrosecond) {
    Sample sample;
    const auto at = sample.document.find('\x33');  // the only date marker in the sample
    ASSERT_NE(at, std::string::npos);
    const auto withSeconds = [&](double seconds) {
        std::string document = sample.document;
        const auto bits = std::bit_cast<uint64_t>(seconds);
        for (int i = 0; i < 8; ++i)
            document[at + 1 + i] = static_cast<char>(bits >> (56 - 8 * i));
        auto reader = Reader::open(document);
        return reader->date(reader->dictionary(reader->root())->value(5));
    };
    EXPECT_EQ(withSeconds(0.5), micros(978'307'200'500'000));
    EXPECT_TRUE(withSeconds(7.9e9));  // the year 2251
    EXPECT_FALSE(withSeconds(1e10));  // the year 2317
    EXPECT_FALSE(withSeconds(-1e10));
    EXPECT_FALSE(withSeconds(std::nan("")));
    EXPECT_FALSE(withSeconds(HUGE_VAL));
}

TEST(PropertyListReader, KeepsEveryMicrosecondFrom1747To2254) {
    std::mt19937_64 random(3);
    std::uniform_int_distribution<int64_t> offset(-7'999'999'999'999'999LL,
                                                  7'999'999'999'999'999LL);
    for (int i = 0; i < 20'000; ++i) {
        const auto when = micros(978'307'200'000'000LL + offset(random));
        PropertyListWriter writer;
        const std::string document = *writer.finish(writer.date(when));
        auto reader = Reader::open(document);
        ASSERT_EQ(reader->date(reader->root()), when) << when.time_since_epoch().count();
    }
}

TEST(PropertyListReader, ReadsWhatLibplistWrites) {
    plist_t root = plist_new_dict();
    plist_dict_set_item(root, "name", plist_new_string("r\xC3\xA9sum\xC3\xA9 \xF0\x9F\x93\x81"));
    plist_dict_set_item(root, "count", plist_new_uint(123456789012ULL));
    plist_dict_set_item(root, "when", plist_new_date(-86400, 500000));  // 2000-12-31 00:00:00.5
    plist_t list = plist_new_array();
    for (int i = 0; i < 300; ++i)
        plist_array_append_item(list, plist_new_string(std::to_string(i).c_str()));
    plist_dict_set_item(root, "list", list);
    char* bytes = nullptr;
    uint32_t length = 0;
    plist_to_bin(root, &bytes, &length);
    const std::string document(bytes, length);
    plist_to_bin_free(bytes);
    plist_free(root);

    auto reader = Reader::open(document);
    ASSERT_TRUE(reader);
    auto dict = reader->dictionary(reader->root());
    ASSERT_TRUE(dict);
    std::map<std::string, Reader::Object> values;
    for (size_t i = 0; i < dict->size(); ++i)
        values[*reader->string(dict->key(i))] = dict->value(i);
    EXPECT_EQ(reader->string(values["name"]), "r\xC3\xA9sum\xC3\xA9 \xF0\x9F\x93\x81");
    EXPECT_EQ(reader->integer(values["count"]), 123456789012LL);
    EXPECT_EQ(reader->date(values["when"]), micros((978'307'200LL - 86'400) * 1'000'000 + 500'000));
    auto items = reader->array(values["list"]);
    ASSERT_TRUE(items);
    ASSERT_EQ(items->size(), 300u);
    EXPECT_EQ(reader->string((*items)[299]), "299");
}

TEST(PropertyListWriter, KeepsBytesThatAreNotUtf8) {
    const std::string name = "report-\xFF\xFE-\xC3(\xE9t\xE9).txt";
    PropertyListWriter writer;
    const Ref key = writer.string(name);
    const Ref value = writer.string(name + "/inside");
    const Ref root = writer.dictionary(std::vector<Ref>{key}, std::vector<Ref>{value});
    const std::string document = *writer.finish(root);

    auto reader = Reader::open(document);
    ASSERT_TRUE(reader);
    auto dict = reader->dictionary(reader->root());
    EXPECT_EQ(reader->string(dict->key(0)), name);
    EXPECT_EQ(reader->string(dict->value(0)), name + "/inside");
    // To libplist (and every other reader) it is ordinary Unicode text.
    auto parsed = parseWithLibplist(document);
    ASSERT_TRUE(parsed);
    EXPECT_EQ(plist_dict_get_size(parsed.get()), 1u);
}

TEST(PropertyListWriter, SharesEqualScalarsButNotContainers) {
    PropertyListWriter writer;
    const Ref a = writer.string("node_modules");
    const Ref b = writer.string("node_modules");
    EXPECT_EQ(a, b);
    EXPECT_EQ(writer.integer(5), writer.integer(5));
    EXPECT_NE(writer.integer(5), writer.integer(6));
    const Ref first = writer.array(std::vector<Ref>{a});
    const Ref second = writer.array(std::vector<Ref>{a});
    EXPECT_NE(first, second);
    const std::string document = *writer.finish(writer.array(std::vector<Ref>{first, second}));
    auto reader = Reader::open(document);
    ASSERT_TRUE(reader);
    EXPECT_EQ(reader->objectCount(), 6u);  // string, 5, 6, two arrays, top array
}

TEST(PropertyListWriter, RefusesDocumentsOverTheLimit) {
    PropertyListWriter writer;
    const Ref root = writer.data(std::string(1000, 'a'));
    const auto whole = writer.finish(root);
    ASSERT_TRUE(whole);
    EXPECT_EQ(writer.finish(root, whole->size()), whole);
    EXPECT_FALSE(writer.finish(root, whole->size() - 1));
}

TEST(PropertyListWriter, UsesWiderReferencesForManyObjects) {
    PropertyListWriter writer;
    std::vector<Ref> items;
    for (int i = 0; i < 70'000; ++i)
        items.push_back(writer.integer(i));
    const std::string document = *writer.finish(writer.array(items));
    auto reader = Reader::open(document);
    ASSERT_TRUE(reader);
    auto array = reader->array(reader->root());
    ASSERT_EQ(array->size(), 70'000u);
    EXPECT_EQ(reader->integer((*array)[69'999]), 69'999);
    auto parsed = parseWithLibplist(document);
    ASSERT_TRUE(parsed);
    EXPECT_EQ(plist_array_get_size(parsed.get()), 70'000u);
}

TEST(PropertyListReader, RefusesMalformedDocuments) {
    Sample sample;
    const std::string& good = sample.document;
    EXPECT_FALSE(Reader::open(""));
    EXPECT_FALSE(Reader::open("bplist00"));
    EXPECT_FALSE(Reader::open("bplist01" + good.substr(8)));
    const auto changed = [&](size_t at, char value) {
        std::string document = good;
        document[at] = value;
        return document;
    };
    EXPECT_FALSE(Reader::open(changed(good.size() - 32 + 8, '\x7F')));  // count beyond the file
    EXPECT_FALSE(Reader::open(changed(good.size() - 9, '\x7F')));  // top object beyond the count
    EXPECT_FALSE(Reader::open(changed(good.size() - 32 + 6, 0)));  // offsets of no width
}

// Every prefix and every single-byte change of a valid document must be survivable.
TEST(PropertyListReader, SurvivesTruncationAndCorruption) {
    Sample sample;
    const std::string& good = sample.document;
    const auto walk = [](const std::string& document) {
        auto reader = Reader::open(document);
        if (!reader) return;
        std::vector<Reader::Object> pending{reader->root()};
        for (size_t steps = 0; !pending.empty() && steps < 10'000; ++steps) {
            const Reader::Object object = pending.back();
            pending.pop_back();
            (void)reader->string(object);
            (void)reader->integer(object);
            (void)reader->date(object);
            (void)reader->data(object);
            (void)reader->real(object);
            if (auto array = reader->array(object)) {
                for (size_t i = 0; i < array->size() && i < 64; ++i)
                    pending.push_back((*array)[i]);
            }
            if (auto dict = reader->dictionary(object)) {
                for (size_t i = 0; i < dict->size() && i < 64; ++i) {
                    pending.push_back(dict->key(i));
                    pending.push_back(dict->value(i));
                }
            }
        }
    };
    for (size_t length = 0; length < good.size(); ++length)
        walk(good.substr(0, length));
    for (size_t at = 0; at < good.size(); ++at) {
        for (unsigned char value : {0x00, 0x0F, 0x5F, 0x6F, 0xAF, 0xDF, 0xFF}) {
            std::string corrupt = good;
            corrupt[at] = static_cast<char>(value);
            walk(corrupt);
        }
    }
}

}  // namespace
}  // namespace veldan::platform
