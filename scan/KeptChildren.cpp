#include "scan/KeptChildren.hpp"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <set>
#include <utility>

#include "scan/SaturatingAdd.hpp"

namespace veldan {

namespace {

std::vector<DiskNode> ordered(std::vector<DiskNode> children, bool anythingHidden, int64_t hidden,
                              std::string_view parentPath, DiskCategory parentCategory) {
    if (anythingHidden) {
        std::set<std::string> shown;
        for (const auto& child : children)
            shown.insert(child.path);
        children.push_back(DiskNode::summary(parentPath, hidden, std::move(shown), parentCategory));
    }
    // Sorted by index and moved once into a list of the exact size: the list grew by
    // doubling, and a finished tree holds one per folder, so the slack would otherwise be
    // most of a large map's memory.
    std::vector<uint32_t> order(children.size());
    std::iota(order.begin(), order.end(), uint32_t{0});
    std::sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) {
        return DiskNode::ordersBefore(children[a], children[b]);
    });
    std::vector<DiskNode> sorted;
    sorted.reserve(children.size());
    for (uint32_t index : order)
        sorted.push_back(std::move(children[index]));
    return sorted;
}

}  // namespace

bool KeptChildren::wouldKeep(int64_t bytes, std::string_view name) const {
    if (kept_.size() < DiskNode::maximumKeptChildren) return true;
    const DiskNode& smallest = kept_[smallest_];
    return bytes > smallest.bytes || (bytes == smallest.bytes && name < smallest.name);
}

void KeptChildren::keepLargest(DiskNode node) {
    if (kept_.size() < DiskNode::maximumKeptChildren) {
        kept_.push_back(std::move(node));
        if (kept_.size() == DiskNode::maximumKeptChildren) findSmallest();
        return;
    }
    DiskNode& smallest = kept_[smallest_];
    if (DiskNode::ordersBefore(node, smallest)) {
        hide(smallest.bytes);
        smallest = std::move(node);
        findSmallest();
    } else {
        hide(node.bytes);
    }
}

void KeptChildren::hide(int64_t bytes) {
    hidden_ = saturatingAdd(hidden_, bytes);
    anythingHidden_ = true;
}

void KeptChildren::absorb(KeptChildren other) {
    for (auto& node : other.kept_)
        keepLargest(std::move(node));
    if (other.anythingHidden_) hide(other.hidden_);
}

void KeptChildren::findSmallest() {
    smallest_ = 0;
    for (size_t i = 1; i < kept_.size(); ++i) {
        if (DiskNode::ordersBefore(kept_[smallest_], kept_[i])) smallest_ = i;
    }
}

std::vector<DiskNode> KeptChildren::finish(std::string_view parentPath,
                                           DiskCategory parentCategory) && {
    return ordered(std::move(kept_), anythingHidden_, hidden_, parentPath, parentCategory);
}

std::vector<DiskNode> KeptChildren::copy(std::string_view parentPath,
                                         DiskCategory parentCategory) const {
    return ordered(kept_, anythingHidden_, hidden_, parentPath, parentCategory);
}

}  // namespace veldan
