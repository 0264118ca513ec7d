#pragma once
// One self-rewriting status line on standard error, shown only when standard error is
// a terminal. Callable from any thread.

#include <cstdint>
#include <mutex>
#include <string>

namespace veldan::cli {

class ProgressLine {
public:
    ProgressLine();
    ~ProgressLine();

    bool active() const { return active_; }
    void show(const std::string& text);
    void clear();

    // "Scanning  1,234 folders · 56,789 files  /current/folder"
    static std::string scanText(const std::string& item, int64_t folders, int64_t files);

private:
    bool active_;
    bool shown_ = false;
    std::mutex mutex_;
};

}  // namespace veldan::cli
