#include "cli/JsonWriter.hpp"

#include <charconv>

#include "cli/JsonText.hpp"

namespace veldan::cli {

namespace {
constexpr size_t flushThreshold = 1 << 16;
}

JsonWriter::JsonWriter(FILE* out) : out_(out) {
    buffer_.reserve(flushThreshold * 2);
}

JsonWriter::~JsonWriter() {
    flush();
}

void JsonWriter::separate() {
    if (afterKey_) {
        afterKey_ = false;
        return;
    }
    if (!first_.empty()) {
        if (!first_.back()) buffer_ += ',';
        first_.back() = false;
    }
    if (buffer_.size() >= flushThreshold) flush();
}

void JsonWriter::beginObject() {
    separate();
    buffer_ += '{';
    first_.push_back(true);
}

void JsonWriter::endObject() {
    buffer_ += '}';
    first_.pop_back();
}

void JsonWriter::beginArray() {
    separate();
    buffer_ += '[';
    first_.push_back(true);
}

void JsonWriter::endArray() {
    buffer_ += ']';
    first_.pop_back();
}

void JsonWriter::key(std::string_view name) {
    separate();
    appendJsonString(buffer_, name);
    buffer_ += ':';
    afterKey_ = true;
}

void JsonWriter::value(std::string_view text) {
    separate();
    appendJsonString(buffer_, text);
}

void JsonWriter::value(int64_t number) {
    separate();
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    buffer_.append(digits, end);
}

void JsonWriter::value(bool flag) {
    separate();
    buffer_ += flag ? "true" : "false";
}

void JsonWriter::flush() {
    if (buffer_.empty()) return;
    if (std::fwrite(buffer_.data(), 1, buffer_.size(), out_) != buffer_.size()) failed_ = true;
    buffer_.clear();
}

}  // namespace veldan::cli
