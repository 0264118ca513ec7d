#pragma once
// The 17-child rule of one folder: the 17 largest children (bytes descending, ties by
// the smaller path) are kept, the bytes of every other child are added to `hidden`, and
// finishing turns the hidden bytes into one "Other" summary child.
//
// Contract: single-threaded. All children offered must share one parent folder, which
// is why names can stand in for paths when comparing.

#include <cstdint>
#include <string_view>
#include <vector>

#include "scan/DiskNode.hpp"

namespace veldan {

class KeptChildren {
public:
    // Whether a child of this size and name would be kept if offered now; lets the scanner
    // skip building nodes for the many small files of a big folder.
    bool wouldKeep(int64_t bytes, std::string_view name) const;
    // Keeps `node`, possibly displacing the smallest kept child, or hides its bytes.
    void keepLargest(DiskNode node);
    // Adds bytes of children that were never offered as nodes.
    void hide(int64_t bytes);
    // Offers everything `other` kept or hid, as if its children had been offered here:
    // the 17 largest of both stay, so the order in which parts of a folder were measured
    // never changes what it shows.
    void absorb(KeptChildren other);

    int64_t hiddenBytes() const { return hidden_; }
    bool anythingHidden() const { return anythingHidden_; }
    const std::vector<DiskNode>& kept() const { return kept_; }

    // The kept children and, when anything was hidden, the summary (which takes the
    // parent's category), all in children order.
    std::vector<DiskNode> finish(std::string_view parentPath, DiskCategory parentCategory) &&;
    std::vector<DiskNode> copy(std::string_view parentPath, DiskCategory parentCategory) const;

private:
    void findSmallest();

    std::vector<DiskNode> kept_;
    int64_t hidden_ = 0;
    bool anythingHidden_ = false;  // a summary is due even when the hidden items hold 0 bytes
    size_t smallest_ = 0;          // index of the smallest kept child, valid once the list is full
};

}  // namespace veldan
