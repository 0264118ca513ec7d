#include "scan/LargestFileCollector.hpp"

#include <algorithm>

namespace veldan {

namespace {

bool ranksBefore(int64_t bytes, const std::string& path, const LargeFile& other) {
    return bytes > other.bytes || (bytes == other.bytes && path < other.path);
}

}  // namespace

void LargestFileCollector::record(const std::string& path, int64_t bytes) {
    if (bytes < minimumBytes) return;
    std::lock_guard lock(mutex_);
    if (files_.size() >= limit && !ranksBefore(bytes, path, files_.back())) return;
    const auto position = std::find_if(files_.begin(), files_.end(), [&](const LargeFile& file) {
        return ranksBefore(bytes, path, file);
    });
    files_.insert(position, LargeFile{path, bytes});
    if (files_.size() > limit) files_.pop_back();
}

std::vector<LargeFile> LargestFileCollector::files() const {
    std::lock_guard lock(mutex_);
    return files_;
}

}  // namespace veldan
