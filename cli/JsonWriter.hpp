#pragma once
// Streams JSON straight to a file, for documents too large to build in memory first
// (the snapshot of a whole disk). Strings are written as appendJsonString() writes them.
//
// Contract: single-threaded; the caller keeps the structure balanced. Commas are placed
// by the writer.

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace veldan::cli {

class JsonWriter {
public:
    explicit JsonWriter(FILE* out);
    ~JsonWriter();

    void beginObject();
    void endObject();
    void beginArray();
    void endArray();
    void key(std::string_view name);
    // A key written in the source: plain ASCII that needs no escaping, so it is copied as
    // it stands (a snapshot writes nine per node).
    template <size_t N>
    void key(const char (&name)[N]) {
        separate();
        buffer_ += '"';
        buffer_.append(name, N - 1);
        buffer_ += "\":";
        afterKey_ = true;
    }
    void value(std::string_view text);
    void value(const char* text) { value(std::string_view(text)); }
    void value(int64_t number);
    void value(bool flag);
    void flush();
    bool failed() const { return failed_; }

private:
    void separate();

    FILE* out_;
    std::string buffer_;
    std::vector<unsigned char> first_;  // per open container: nothing written in it yet
    bool afterKey_ = false;
    bool failed_ = false;
};

}  // namespace veldan::cli
