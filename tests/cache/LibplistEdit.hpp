#pragma once
// Edits a saved map with libplist, an encoder and decoder independent of Veldan's own,
// to make the damaged or foreign files the cache must cope with.

#include <plist/plist.h>

#include <functional>
#include <string>

namespace veldan::test {

inline std::string editWithLibplist(const std::string& document,
                                    const std::function<void(plist_t root)>& edit) {
    plist_t root = nullptr;
    plist_from_bin(document.data(), static_cast<uint32_t>(document.size()), &root);
    if (!root) return {};
    edit(root);
    char* bytes = nullptr;
    uint32_t length = 0;
    plist_to_bin(root, &bytes, &length);
    std::string edited(bytes, length);
    plist_to_bin_free(bytes);
    plist_free(root);
    return edited;
}

// The node dictionary of the snapshot's root folder.
inline plist_t rootNode(plist_t archive) {
    return plist_dict_get_item(plist_dict_get_item(archive, "snapshot"), "root");
}

}  // namespace veldan::test
