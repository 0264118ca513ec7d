#include "cache/ScanArchive.hpp"

#include <algorithm>
#include <array>
#include <vector>

#include "platform/PropertyListReader.hpp"
#include "platform/PropertyListWriter.hpp"
#include "scan/DiskCategory.hpp"

namespace veldan {

namespace {

using platform::PropertyListReader;
using platform::PropertyListWriter;
using Ref = PropertyListWriter::Ref;
using Object = PropertyListReader::Object;

template <size_t N>
using Keys = std::array<std::string_view, N>;

constexpr Keys<4> archiveKeys = {"version", "scopePath", "rootIdentity", "snapshot"};
constexpr Keys<9> identityKeys = {"device",
                                  "inode",
                                  "resolvedPath",
                                  "resolvedDevice",
                                  "resolvedInode",
                                  "createdSeconds",
                                  "createdNanoseconds",
                                  "resolvedCreatedSeconds",
                                  "resolvedCreatedNanoseconds"};
constexpr Keys<12> snapshotKeys = {"root",
                                   "volume",
                                   "discoveredDirectories",
                                   "largestFiles",
                                   "visitedFolderCount",
                                   "visitedFileCount",
                                   "unreadableItems",
                                   "unreadablePaths",
                                   "unreadableReasons",
                                   "skippedPhotosLibraries",
                                   "skippedMusicLibraries",
                                   "finishedAt"};
constexpr Keys<9> nodeKeys = {"path",        "name",      "bytes",     "category",     "children",
                              "isDirectory", "isSummary", "isPartial", "excludedPaths"};
constexpr Keys<2> volumeKeys = {"free", "total"};
constexpr Keys<2> largeFileKeys = {"path", "bytes"};

// Field indexes into the key lists above.
enum Snapshot : size_t {
    root,
    volume,
    discovered,
    largest,
    folders,
    files,
    unreadableItems,
    unreadablePaths,
    unreadableReasons,
    photos,
    music,
    finishedAt
};
enum Node : size_t {
    path,
    name,
    bytes,
    category,
    children,
    isDirectory,
    isSummary,
    isPartial,
    excluded
};

class Encoder {
public:
    Encoder(PropertyListWriter::Sink sink, size_t maximumBytes)
        : writer_(std::move(sink), maximumBytes) {
        for (size_t i = 0; i < nodeKeys.size(); ++i)
            nodeKeyRefs_[i] = writer_.string(nodeKeys[i]);
    }

    // The archive's top record; nothing when the tree is deeper than maximumDepth.
    std::optional<Ref> archive(const std::string& scopePath, const RootIdentity& identity,
                               const ScanSnapshot& scanned) {
        const auto snapshotRef = snapshot(scanned);
        if (!snapshotRef) return std::nullopt;
        const Ref identityRef = dictionary(
            identityKeys,
            {writer_.integer(identity.device), writer_.integer(identity.inode),
             writer_.string(identity.resolvedPath), writer_.integer(identity.resolvedDevice),
             writer_.integer(identity.resolvedInode), writer_.integer(identity.createdSeconds),
             writer_.integer(identity.createdNanoseconds),
             writer_.integer(identity.resolvedCreatedSeconds),
             writer_.integer(identity.resolvedCreatedNanoseconds)});
        return dictionary(archiveKeys, {writer_.integer(ScanArchive::currentVersion),
                                        writer_.string(scopePath), identityRef, *snapshotRef});
    }

    PropertyListWriter& writer() { return writer_; }

private:
    template <size_t N>
    Ref dictionary(const Keys<N>& names, const std::array<Ref, N>& values) {
        std::array<Ref, N> keys{};
        for (size_t i = 0; i < N; ++i)
            keys[i] = writer_.string(names[i]);
        return writer_.dictionary(keys, values);
    }

    std::optional<Ref> snapshot(const ScanSnapshot& snapshot) {
        const auto rootRef = node(snapshot.root, 0);
        if (!rootRef) return std::nullopt;
        std::vector<Ref> keys;
        std::vector<Ref> values;
        for (const auto& [folder, size] : snapshot.discoveredDirectories) {
            keys.push_back(writer_.string(folder));
            values.push_back(writer_.integer(size));
        }
        const Ref discoveredRef = writer_.dictionary(keys, values);
        std::vector<Ref> items;
        for (const auto& file : snapshot.largestFiles) {
            items.push_back(dictionary(largeFileKeys,
                                       {writer_.string(file.path), writer_.integer(file.bytes)}));
        }
        const Ref largestRef = writer_.array(items);
        items.clear();
        for (const auto& unreadable : snapshot.unreadablePaths)
            items.push_back(writer_.string(unreadable));
        const Ref unreadableRef = writer_.array(items);

        keys.clear();
        values.clear();
        const auto add = [&](size_t field, Ref value) {
            keys.push_back(writer_.string(snapshotKeys[field]));
            values.push_back(value);
        };
        add(root, *rootRef);
        add(volume, dictionary(volumeKeys, {writer_.integer(snapshot.volume.free),
                                            writer_.integer(snapshot.volume.total)}));
        add(discovered, discoveredRef);
        add(largest, largestRef);
        add(folders, writer_.integer(snapshot.visitedFolderCount));
        add(files, writer_.integer(snapshot.visitedFileCount));
        add(unreadableItems, writer_.integer(snapshot.unreadableItems));
        add(unreadablePaths, unreadableRef);
        if (snapshot.unreadableReasons) {
            std::vector<Ref> reasonKeys;
            std::vector<Ref> reasonValues;
            for (const auto& [item, reason] : *snapshot.unreadableReasons) {
                reasonKeys.push_back(writer_.string(item));
                reasonValues.push_back(writer_.string(reason));
            }
            add(unreadableReasons, writer_.dictionary(reasonKeys, reasonValues));
        }
        add(photos, writer_.integer(snapshot.skippedPhotosLibraries));
        add(music, writer_.integer(snapshot.skippedMusicLibraries));
        add(finishedAt, writer_.date(snapshot.finishedAt));
        return writer_.dictionary(keys, values);
    }

    // A folder's children are written after their paths, so that its summary child lists
    // the siblings it excludes by pointing at those same strings instead of repeating
    // them: nearly every folder of a large map has a summary.
    using Siblings = std::vector<std::pair<std::string_view, Ref>>;

    std::optional<Ref> node(const DiskNode& node, size_t depth) {
        return this->node(node, depth, writer_.string(node.path), {});
    }

    std::optional<Ref> node(const DiskNode& node, size_t depth, Ref pathRef,
                            const Siblings& siblings) {
        if (depth > ScanArchive::maximumDepth) return std::nullopt;
        Siblings childPaths;
        childPaths.reserve(node.children.size());
        for (const auto& child : node.children)
            childPaths.emplace_back(child.path, writer_.string(child.path));
        std::vector<Ref> childRefs;
        childRefs.reserve(node.children.size());
        for (size_t i = 0; i < node.children.size(); ++i) {
            auto ref = this->node(node.children[i], depth + 1, childPaths[i].second, childPaths);
            if (!ref) return std::nullopt;
            childRefs.push_back(*ref);
        }
        // Give up as soon as the document can no longer be written whole.
        if (writer_.failed()) return std::nullopt;
        std::vector<Ref> excludedRefs;
        for (const auto& excludedPath : node.excludedPaths) {
            const auto sibling =
                std::find_if(siblings.begin(), siblings.end(),
                             [&](const auto& entry) { return entry.first == excludedPath; });
            excludedRefs.push_back(sibling != siblings.end() ? sibling->second
                                                             : writer_.string(excludedPath));
        }
        const std::array<Ref, nodeKeys.size()> values = {pathRef,
                                                         writer_.string(node.name),
                                                         writer_.integer(node.bytes),
                                                         writer_.string(title(node.category)),
                                                         writer_.array(childRefs),
                                                         writer_.boolean(node.isDirectory),
                                                         writer_.boolean(node.isSummary),
                                                         writer_.boolean(node.isPartial),
                                                         writer_.array(excludedRefs)};
        return writer_.dictionary(nodeKeyRefs_, values);
    }

    PropertyListWriter writer_;
    std::array<Ref, nodeKeys.size()> nodeKeyRefs_{};
};

class Decoder {
public:
    Decoder(const PropertyListReader& reader, size_t documentBytes)
        : reader_(reader),
          records_(reader.objectCount()),
          // A saved map decodes to text of about its own size; the factor covers names
          // shared by many records (".git", "node_modules") and per-string overhead.
          bytes_(4 * static_cast<uint64_t>(documentBytes) + (1u << 20)) {}

    std::optional<ScanArchive> archive() {
        std::array<Object, archiveKeys.size()> fields;
        if (!record(reader_.root(), archiveKeys_, fields)) return std::nullopt;
        ScanArchive archive;
        auto version = reader_.integer(fields[0]);
        if (!version || *version != ScanArchive::currentVersion) return std::nullopt;
        auto scope = text(fields[1]);
        auto identity = rootIdentity(fields[2]);
        if (!scope || !identity) return std::nullopt;
        archive.scopePath = std::move(*scope);
        archive.rootIdentity = std::move(*identity);
        if (!snapshot(fields[3], archive.snapshot)) return std::nullopt;
        return archive;
    }

private:
    // The key objects found for each record type's names so far. Keys are shared: once a
    // key object is known to spell a name, comparing objects suffices for the thousands of
    // records that use it.
    template <size_t N>
    struct KnownKeys {
        const Keys<N>& names;
        std::array<Object, N> objects{};
    };

    // Looks up every key of `known.names` in the dictionary `object`; false when it is not a
    // dictionary or any key but an optional one is missing. Keys come in the order they
    // were written, so each is tried at its own position first.
    template <size_t N>
    bool record(Object object, KnownKeys<N>& known, std::array<Object, N>& fields,
                size_t optionalField = N) {
        if (records_ == 0) return false;
        --records_;
        auto entries = reader_.dictionary(object);
        if (!entries) return false;
        fields.fill(Object());
        const auto matches = [&](Object key, size_t field) {
            if (key.valid() && known.objects[field] == key) return true;
            if (!reader_.stringEquals(key, known.names[field])) return false;
            known.objects[field] = key;
            return true;
        };
        for (size_t i = 0; i < entries->size(); ++i) {
            const Object key = entries->key(i);
            size_t field = N;
            if (i < N && matches(key, i)) {
                field = i;
            } else {
                for (size_t j = 0; j < N && field == N; ++j) {
                    if (matches(key, j)) field = j;
                }
            }
            if (field < N) fields[field] = entries->value(i);
        }
        for (size_t i = 0; i < N; ++i) {
            if (!fields[i].valid() && i != optionalField) return false;
        }
        return true;
    }

    std::optional<std::string> text(Object object) {
        // Every string costs something, even an empty one repeated endlessly.
        constexpr uint64_t overhead = 16;
        if (bytes_ < overhead) return std::nullopt;
        auto decoded = reader_.string(object, bytes_ - overhead);
        if (!decoded || decoded->size() + overhead > bytes_) return std::nullopt;
        bytes_ -= decoded->size() + overhead;
        return decoded;
    }

    std::optional<RootIdentity> rootIdentity(Object object) {
        std::array<Object, identityKeys.size()> fields;
        if (!record(object, identityKeys_, fields)) return std::nullopt;
        RootIdentity identity;
        auto resolvedPath = text(fields[2]);
        if (!resolvedPath) return std::nullopt;
        identity.resolvedPath = std::move(*resolvedPath);
        const std::pair<size_t, int64_t*> numbers[] = {{0, &identity.device},
                                                       {1, &identity.inode},
                                                       {3, &identity.resolvedDevice},
                                                       {4, &identity.resolvedInode},
                                                       {5, &identity.createdSeconds},
                                                       {6, &identity.createdNanoseconds},
                                                       {7, &identity.resolvedCreatedSeconds},
                                                       {8, &identity.resolvedCreatedNanoseconds}};
        for (const auto& [field, out] : numbers) {
            if (!integer(fields[field], *out)) return std::nullopt;
        }
        return identity;
    }

    bool integer(Object object, int64_t& out) {
        auto value = reader_.integer(object);
        if (value) out = *value;
        return value.has_value();
    }

    bool texts(Object object, std::vector<std::string>& out) {
        auto items = reader_.array(object);
        if (!items) return false;
        out.reserve(std::min<size_t>(items->size(), 1024));
        for (size_t i = 0; i < items->size(); ++i) {
            auto item = text((*items)[i]);
            if (!item) return false;
            out.push_back(std::move(*item));
        }
        return true;
    }

    bool snapshot(Object object, ScanSnapshot& out) {
        std::array<Object, snapshotKeys.size()> fields;
        if (!record(object, snapshotKeys_, fields, unreadableReasons)) return false;
        auto rootNode = node(fields[root], 0);
        if (!rootNode) return false;
        out.root = std::move(*rootNode);

        std::array<Object, volumeKeys.size()> volumeFields;
        if (!record(fields[volume], volumeKeys_, volumeFields)) return false;
        if (!integer(volumeFields[0], out.volume.free) ||
            !integer(volumeFields[1], out.volume.total)) {
            return false;
        }

        auto discoveredEntries = reader_.dictionary(fields[discovered]);
        if (!discoveredEntries) return false;
        for (size_t i = 0; i < discoveredEntries->size(); ++i) {
            auto folder = text(discoveredEntries->key(i));
            auto size = reader_.integer(discoveredEntries->value(i));
            if (!folder || !size) return false;
            out.discoveredDirectories[std::move(*folder)] = *size;
        }

        auto largestItems = reader_.array(fields[largest]);
        if (!largestItems) return false;
        for (size_t i = 0; i < largestItems->size(); ++i) {
            std::array<Object, largeFileKeys.size()> fileFields;
            if (!record((*largestItems)[i], largeFileKeys_, fileFields)) return false;
            LargeFile file;
            auto filePath = text(fileFields[0]);
            if (!filePath || !integer(fileFields[1], file.bytes)) return false;
            file.path = std::move(*filePath);
            out.largestFiles.push_back(std::move(file));
        }

        if (!integer(fields[folders], out.visitedFolderCount) ||
            !integer(fields[files], out.visitedFileCount) ||
            !integer(fields[unreadableItems], out.unreadableItems) ||
            !integer(fields[photos], out.skippedPhotosLibraries) ||
            !integer(fields[music], out.skippedMusicLibraries)) {
            return false;
        }
        if (!texts(fields[unreadablePaths], out.unreadablePaths)) return false;
        if (fields[unreadableReasons].valid()) {
            auto reasons = reader_.dictionary(fields[unreadableReasons]);
            if (!reasons) return false;
            std::map<std::string, std::string> decoded;
            for (size_t i = 0; i < reasons->size(); ++i) {
                auto item = text(reasons->key(i));
                auto reason = text(reasons->value(i));
                if (!item || !reason) return false;
                decoded[std::move(*item)] = std::move(*reason);
            }
            out.unreadableReasons = std::move(decoded);
        }
        auto finished = reader_.date(fields[finishedAt]);
        if (!finished) return false;
        out.finishedAt = *finished;
        return true;
    }

    // The two flags are shared objects too.
    std::optional<bool> flag(Object object) {
        for (size_t value = 0; value < 2; ++value) {
            if (flagObjects_[value] == object && object.valid()) return value == 1;
        }
        auto value = reader_.boolean(object);
        if (value) flagObjects_[*value ? 1 : 0] = object;
        return value;
    }

    std::optional<DiskCategory> diskCategory(Object object) {
        for (const auto& [known, category] : categoryObjects_) {
            if (known == object) return category;
        }
        for (DiskCategory candidate : allDiskCategories) {
            if (reader_.stringEquals(object, title(candidate))) {
                categoryObjects_.emplace_back(object, candidate);
                return candidate;
            }
        }
        return std::nullopt;
    }

    std::optional<DiskNode> node(Object object, size_t depth) {
        if (depth > ScanArchive::maximumDepth) return std::nullopt;
        std::array<Object, nodeKeys.size()> fields;
        if (!record(object, nodeKeys_, fields)) return std::nullopt;
        DiskNode result;
        auto nodePath = text(fields[path]);
        auto nodeName = text(fields[name]);
        auto nodeBytes = reader_.integer(fields[bytes]);
        auto nodeCategory = diskCategory(fields[category]);
        auto directory = flag(fields[isDirectory]);
        auto summary = flag(fields[isSummary]);
        auto partial = flag(fields[isPartial]);
        if (!nodePath || !nodeName || !nodeBytes || !nodeCategory || !directory || !summary ||
            !partial) {
            return std::nullopt;
        }
        result.path = std::move(*nodePath);
        result.name = std::move(*nodeName);
        result.bytes = *nodeBytes;
        result.category = *nodeCategory;
        result.isDirectory = *directory;
        result.isSummary = *summary;
        result.isPartial = *partial;

        auto excludedItems = reader_.array(fields[excluded]);
        if (!excludedItems) return std::nullopt;
        for (size_t i = 0; i < excludedItems->size(); ++i) {
            auto item = text((*excludedItems)[i]);
            if (!item) return std::nullopt;
            result.excludedPaths.insert(std::move(*item));
        }
        auto childItems = reader_.array(fields[children]);
        if (!childItems) return std::nullopt;
        result.children.reserve(
            std::min<size_t>(childItems->size(), DiskNode::maximumKeptChildren + 1));
        for (size_t i = 0; i < childItems->size(); ++i) {
            auto child = node((*childItems)[i], depth + 1);
            if (!child) return std::nullopt;
            result.children.push_back(std::move(*child));
        }
        return result;
    }

    const PropertyListReader& reader_;
    KnownKeys<archiveKeys.size()> archiveKeys_{archiveKeys};
    KnownKeys<identityKeys.size()> identityKeys_{identityKeys};
    KnownKeys<snapshotKeys.size()> snapshotKeys_{snapshotKeys};
    KnownKeys<nodeKeys.size()> nodeKeys_{nodeKeys};
    KnownKeys<volumeKeys.size()> volumeKeys_{volumeKeys};
    KnownKeys<largeFileKeys.size()> largeFileKeys_{largeFileKeys};
    std::vector<std::pair<Object, DiskCategory>> categoryObjects_;
    std::array<Object, 2> flagObjects_{};  // false, true
    uint64_t records_;  // each record decoded uses one: a shared record cannot multiply work
    uint64_t bytes_;    // text still allowed to be decoded
};

}  // namespace

std::optional<std::string> ScanArchive::encode(const std::string& scopePath,
                                               const RootIdentity& rootIdentity,
                                               const ScanSnapshot& snapshot, size_t maximumBytes) {
    std::string document;
    const auto result =
        write(scopePath, rootIdentity, snapshot, maximumBytes, [&](std::string_view piece) {
            document.append(piece);
            return true;
        });
    if (result != PropertyListWriter::WriteResult::written) return std::nullopt;
    return document;
}

PropertyListWriter::WriteResult ScanArchive::write(const std::string& scopePath,
                                                   const RootIdentity& rootIdentity,
                                                   const ScanSnapshot& snapshot,
                                                   size_t maximumBytes,
                                                   const PropertyListWriter::Sink& sink) {
    Encoder encoder(sink, maximumBytes);
    const auto top = encoder.archive(scopePath, rootIdentity, snapshot);
    if (!top) {
        return encoder.writer().failed() ? encoder.writer().complete(0)
                                         : PropertyListWriter::WriteResult::tooLarge;
    }
    return encoder.writer().complete(*top);
}

std::optional<ScanArchive> ScanArchive::decode(std::string_view document) {
    auto reader = PropertyListReader::open(document);
    if (!reader) return std::nullopt;
    Decoder decoder(*reader, document.size());
    return decoder.archive();
}

}  // namespace veldan
