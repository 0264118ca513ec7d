#pragma once
// Writes JSON documents for scripts. The structure is built with nlohmann::json; this
// writer only differs in how it writes strings, because names are raw bytes: each byte
// that is not part of well-formed UTF-8 is written as the escape \udcXX (XX = the byte),
// the convention of Python's "surrogateescape", so that every file name gives valid JSON
// and the original bytes can be recovered exactly.

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <string_view>

namespace veldan::cli {

using Json = nlohmann::ordered_json;

// `indent` < 0 writes everything on one line.
void writeJson(std::ostream& out, const Json& value, int indent = -1);
std::string jsonText(const Json& value, int indent = -1);
void appendJsonString(std::string& out, std::string_view text);

}  // namespace veldan::cli
