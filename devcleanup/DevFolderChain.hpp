#pragma once
// The chain of open folders of a depth-first walk, innermost last, each carrying the
// walk's own data about it. Opening every folder relative to its parent's descriptor
// walks trees deeper than PATH_MAX; to keep the number of descriptors bounded, at most
// `maximumOpen` stay open and the one that many levels up is parked. Popping back to a
// parked folder reopens it through ".." of the folder just left, and only the very
// folder that was entered (device and inode) is continued.
//
// Contract: single-threaded; descriptors are shared so that a walk can hand a folder's
// subfolders to other workers while it moves on.

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "platform/UniqueFd.hpp"
#include "scan/FolderIdentity.hpp"

namespace veldan {

using SharedFd = std::shared_ptr<const platform::UniqueFd>;

// ".." of `child`, opened and checked to be `expected`; null when it is not (the folder
// was moved or replaced while its subtree was walked) or cannot be opened.
SharedFd reopenParentFolder(const SharedFd& child, const FolderIdentity& expected);

template <typename Data>
class DevFolderChain {
public:
    static constexpr size_t maximumOpen = 48;

    struct Link {
        SharedFd fd;  // null while parked, or once the folder was lost
        FolderIdentity identity;
        Data data;
    };

    bool empty() const { return links_.empty(); }
    size_t size() const { return links_.size(); }
    Link& top() { return links_.back(); }

    void push(SharedFd fd, FolderIdentity identity, Data data) {
        links_.push_back(Link{std::move(fd), identity, std::move(data)});
        if (links_.size() > maximumOpen) links_[links_.size() - 1 - maximumOpen].fd.reset();
    }

    // Drops the innermost folder. False when the folder now innermost was parked and is
    // no longer the one entered: it stays without a descriptor, and nothing more may be
    // read or entered in it.
    bool pop() {
        Link dropped = std::move(links_.back());
        links_.pop_back();
        if (links_.empty() || links_.back().fd) return true;
        links_.back().fd = reopenParentFolder(dropped.fd, links_.back().identity);
        return links_.back().fd != nullptr;
    }

    void clear() { links_.clear(); }

private:
    std::vector<Link> links_;
};

}  // namespace veldan
