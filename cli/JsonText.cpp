#include "cli/JsonText.hpp"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "cli/Utf8.hpp"

namespace veldan::cli {

namespace {

void newline(std::string& out, int indent, int depth) {
    if (indent < 0) return;
    out += '\n';
    out.append(static_cast<size_t>(indent * depth), ' ');
}

void write(std::string& out, const Json& value, int indent, int depth) {
    switch (value.type()) {
        case Json::value_t::string:
            appendJsonString(out, value.get_ref<const std::string&>());
            return;
        case Json::value_t::array: {
            if (value.empty()) {
                out += "[]";
                return;
            }
            out += '[';
            bool first = true;
            for (const auto& item : value) {
                if (!first) out += ',';
                first = false;
                newline(out, indent, depth + 1);
                write(out, item, indent, depth + 1);
            }
            newline(out, indent, depth);
            out += ']';
            return;
        }
        case Json::value_t::object: {
            if (value.empty()) {
                out += "{}";
                return;
            }
            out += '{';
            bool first = true;
            for (const auto& [key, item] : value.items()) {
                if (!first) out += ',';
                first = false;
                newline(out, indent, depth + 1);
                appendJsonString(out, key);
                out += indent >= 0 ? ": " : ":";
                write(out, item, indent, depth + 1);
            }
            newline(out, indent, depth);
            out += '}';
            return;
        }
        default:
            out += value.dump();  // numbers, booleans and null are plain ASCII
            return;
    }
}

// Bytes that stand for themselves inside a JSON string: printable ASCII but the quote and
// the backslash. A snapshot is megabytes of paths, so they are skipped by table.
constexpr auto plainBytes = [] {
    std::array<bool, 256> plain{};
    for (int byte = 0x20; byte < 0x80; ++byte)
        plain[static_cast<size_t>(byte)] = byte != '"' && byte != '\\';
    return plain;
}();

}  // namespace

void appendJsonString(std::string& out, std::string_view text) {
    out += '"';
    char escape[8];
    size_t run = 0;  // start of the pending stretch that needs no escaping
    for (size_t i = 0; i < text.size();) {
        // Eight plain bytes at a time: none at or above 0x80, below 0x20, '"' or '\\'.
        if (i + 8 <= text.size()) {
            uint64_t word = 0;
            std::memcpy(&word, text.data() + i, 8);
            constexpr uint64_t ones = 0x0101010101010101ULL;
            constexpr uint64_t highs = 0x8080808080808080ULL;
            const auto zeroIn = [](uint64_t bytes) { return (bytes - ones) & ~bytes & highs; };
            if (((word | (word - 0x20 * ones)) & highs) == 0 &&
                (zeroIn(word ^ ('"' * ones)) | zeroIn(word ^ ('\\' * ones))) == 0) {
                i += 8;
                continue;
            }
        }
        const auto byte = static_cast<unsigned char>(text[i]);
        if (plainBytes[byte]) {
            ++i;
            continue;
        }
        if (byte >= 0x80) {
            const size_t length = validSequenceLength(text, i);
            if (length > 0) {
                i += length;
                continue;
            }
        }
        out.append(text.data() + run, i - run);
        switch (byte) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            case '\b':
                out += "\\b";
                break;
            case '\f':
                out += "\\f";
                break;
            default:
                // Below 0x20 a control character; above 0x7F a byte that is not UTF-8.
                std::snprintf(escape, sizeof escape, byte < 0x20 ? "\\u%04x" : "\\udc%02x", byte);
                out += escape;
        }
        run = ++i;
    }
    out.append(text.data() + run, text.size() - run);
    out += '"';
}

void writeJson(std::ostream& out, const Json& value, int indent) {
    const std::string text = jsonText(value, indent);
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
}

std::string jsonText(const Json& value, int indent) {
    std::string out;
    write(out, value, indent, 0);
    return out;
}

}  // namespace veldan::cli
