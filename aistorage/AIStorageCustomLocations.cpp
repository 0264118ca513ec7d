#include "aistorage/AIStorageCustomLocations.hpp"

#include <algorithm>

#include "platform/FileStatus.hpp"
#include "platform/Paths.hpp"
#include "platform/Preferences.hpp"
#include "platform/PropertyListReader.hpp"
#include "platform/PropertyListWriter.hpp"

namespace veldan {

namespace {

using Reader = platform::PropertyListReader;

auto byPath(const std::string& path) {
    return [&path](const AIStorageCustomLocation& location) { return location.path == path; };
}

std::optional<AIStorageCustomLocation> decodeEntry(const Reader& reader, Reader::Object entry) {
    const auto fields = reader.dictionary(entry);
    if (!fields) return std::nullopt;
    std::optional<std::string> path;
    std::optional<AIStorageToolID> tool;
    std::optional<AIStorageKind> kind;
    for (size_t i = 0; i < fields->size(); ++i) {
        const auto key = fields->key(i);
        const auto value = fields->value(i);
        if (reader.stringEquals(key, "path")) {
            path = reader.string(value);
        } else if (reader.stringEquals(key, "tool")) {
            if (auto raw = reader.string(value, 64)) tool = aiStorageToolFromRawValue(*raw);
        } else if (reader.stringEquals(key, "kind")) {
            if (auto ordinal = reader.integer(value)) kind = aiStorageKindFromOrdinal(*ordinal);
        }
    }
    if (!path || path->empty() || path->front() != '/' || !tool || !kind) return std::nullopt;
    return AIStorageCustomLocation{platform::standardizePath(*path), *tool, *kind};
}

}  // namespace

std::optional<std::vector<AIStorageCustomLocation>> AIStorageCustomLocations::load() {
    const auto data = platform::Preferences::data(preferenceKey);
    if (!data) {
        // Present but not data (edited by hand) is as unreadable as a damaged list.
        if (platform::Preferences::string(preferenceKey)) return std::nullopt;
        return std::vector<AIStorageCustomLocation>{};
    }
    return decode(*data);
}

bool AIStorageCustomLocations::save(const std::vector<AIStorageCustomLocation>& locations) {
    return platform::Preferences::setData(preferenceKey, encode(locations));
}

std::string AIStorageCustomLocations::encode(
    const std::vector<AIStorageCustomLocation>& locations) {
    platform::PropertyListWriter writer;
    std::vector<platform::PropertyListWriter::Ref> entries;
    for (const auto& location : locations) {
        const platform::PropertyListWriter::Ref keys[] = {
            writer.string("path"), writer.string("tool"), writer.string("kind")};
        const platform::PropertyListWriter::Ref values[] = {
            writer.string(location.path), writer.string(aiStorageToolRawValue(location.tool)),
            writer.integer(static_cast<int64_t>(location.kind))};
        entries.push_back(writer.dictionary(keys, values));
    }
    return *writer.finish(writer.array(entries));
}

std::optional<std::vector<AIStorageCustomLocation>> AIStorageCustomLocations::decode(
    std::string_view data) {
    const auto reader = Reader::open(data);
    if (!reader) return std::nullopt;
    const auto entries = reader->array(reader->root());
    if (!entries) return std::nullopt;
    std::vector<AIStorageCustomLocation> out;
    for (size_t i = 0; i < entries->size(); ++i) {
        auto entry = decodeEntry(*reader, (*entries)[i]);
        if (entry && std::none_of(out.begin(), out.end(), byPath(entry->path))) {
            out.push_back(std::move(*entry));
        }
    }
    return out;
}

std::string AIStorageCustomLocations::keyPath(const std::string& path) {
    return platform::resolveSymlinks(platform::absolutePath(path));
}

bool AIStorageCustomLocations::add(std::vector<AIStorageCustomLocation>& locations,
                                   const std::string& path, AIStorageToolID tool,
                                   AIStorageKind kind,
                                   const std::vector<AIStorageTool>& catalogue) {
    if (path.empty()) return false;
    const std::string key = keyPath(path);
    const auto status = platform::statPath(key, true);
    if (!status || !status->isDirectory()) return false;
    if (std::any_of(locations.begin(), locations.end(), byPath(key))) return false;
    for (const auto& catalogueTool : catalogue) {
        for (const auto& source : catalogueTool.sources) {
            if (source.path == key) return false;
        }
    }
    locations.push_back({key, tool, kind});
    return true;
}

bool AIStorageCustomLocations::update(std::vector<AIStorageCustomLocation>& locations,
                                      const std::string& path, AIStorageToolID tool,
                                      AIStorageKind kind) {
    const std::string standardized = platform::standardizePath(path);
    const auto found = std::find_if(locations.begin(), locations.end(), byPath(standardized));
    if (found == locations.end()) return false;
    found->tool = tool;
    found->kind = kind;
    return true;
}

bool AIStorageCustomLocations::remove(std::vector<AIStorageCustomLocation>& locations,
                                      const std::string& path) {
    const std::string standardized = platform::standardizePath(path);
    const auto found = std::find_if(locations.begin(), locations.end(), byPath(standardized));
    if (found == locations.end()) return false;
    locations.erase(found);
    return true;
}

}  // namespace veldan
