#include "cli/JsonText.hpp"

#include <gtest/gtest.h>

#include "cli/JsonWriter.hpp"
#include "cli/Terminal.hpp"
#include "cli/Utf8.hpp"

namespace veldan::cli {

TEST(JsonText, EscapesControlsAndWritesInvalidBytesAsLoneSurrogates) {
    std::string out;
    appendJsonString(out, std::string("a\"b\\c\n\t\x01\x7f", 9));
    EXPECT_EQ(out, "\"a\\\"b\\\\c\\n\\t\\u0001\x7f\"");
    out.clear();
    appendJsonString(out, "caf\xc3\xa9 \xff \xc3 \xed\xa0\x80 \xf4\x90\x80\x80 \xe2\x82\xac");
    EXPECT_EQ(out,
              "\"caf\xc3\xa9 \\udcff \\udcc3 \\udced\\udca0\\udc80 \\udcf4\\udc90\\udc80\\udc80 "
              "\xe2\x82\xac\"");
}

TEST(JsonText, WritesNestedDocumentsCompactlyInInsertionOrder) {
    Json value{{"z", 1}, {"a", Json::array({true, nullptr, "x"})}, {"m", Json::object()}};
    EXPECT_EQ(jsonText(value), "{\"z\":1,\"a\":[true,null,\"x\"],\"m\":{}}");
    EXPECT_EQ(jsonText(Json{{"k", Json::array({1})}}, 2), "{\n  \"k\": [\n    1\n  ]\n}");
}

TEST(JsonWriter, PlacesCommasAcrossNestedContainers) {
    char* text = nullptr;
    size_t size = 0;
    FILE* memory = open_memstream(&text, &size);
    {
        JsonWriter writer(memory);
        writer.beginObject();
        writer.key("a");
        writer.beginArray();
        writer.value(int64_t{1});
        writer.beginObject();
        writer.endObject();
        writer.value("s");
        writer.endArray();
        writer.key("b");
        writer.value(false);
        writer.endObject();
    }
    std::fclose(memory);
    EXPECT_EQ(std::string(text, size), "{\"a\":[1,{},\"s\"],\"b\":false}");
    std::free(text);
}

TEST(Terminal, DisplayTextCannotBreakLinesOrMoveTheCursor) {
    EXPECT_EQ(Terminal::display("a\nb\tc\x1b[2J\xff\xc2\x9b"), "a\\nb\\tc\\x1B[2J\\xFF\\xC2\\x9B");
    EXPECT_EQ(Terminal::display("\xc3\xa9t\xc3\xa9"), "\xc3\xa9t\xc3\xa9");
    EXPECT_NE(Terminal::display("a\\nb"), Terminal::display("a\nb"));
    EXPECT_EQ(Terminal::columns("\xc3\xa9t\xc3\xa9"), 3u);
    EXPECT_EQ(Terminal::fit("abcdef", 4), "abc\u2026");
    EXPECT_EQ(Terminal::fit("abc", 4), "abc");
}

}  // namespace veldan::cli
