#include "cli/ProgressLine.hpp"

#include <cstdio>

#include "cli/NumberText.hpp"
#include "cli/Terminal.hpp"

namespace veldan::cli {

ProgressLine::ProgressLine() : active_(Terminal::isTerminal(stderr)) {}

ProgressLine::~ProgressLine() {
    clear();
}

void ProgressLine::show(const std::string& text) {
    if (!active_) return;
    std::lock_guard lock(mutex_);
    const auto width = static_cast<size_t>(Terminal::width(stderr));
    const std::string line = Terminal::fit(text, width > 1 ? width - 1 : width);
    std::fprintf(stderr, "\r\033[2K%s", line.c_str());
    std::fflush(stderr);
    shown_ = true;
}

void ProgressLine::clear() {
    if (!active_) return;
    std::lock_guard lock(mutex_);
    if (!shown_) return;
    std::fprintf(stderr, "\r\033[2K");
    std::fflush(stderr);
    shown_ = false;
}

std::string ProgressLine::scanText(const std::string& item, int64_t folders, int64_t files) {
    return "Scanning  " + groupedNumber(folders) + " folders \u00b7 " + groupedNumber(files) +
           " files  " + Terminal::display(item);
}

}  // namespace veldan::cli
