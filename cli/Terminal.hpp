#pragma once
// What the command writes to a terminal: whether a stream is one, whether colour is
// wanted (never with NO_COLOR set), its width, and names made safe to show.

#include <cstdio>
#include <string>
#include <string_view>

namespace veldan::cli {

class Terminal {
public:
    static bool isTerminal(FILE* stream);
    // A terminal, NO_COLOR unset or empty, and TERM not "dumb".
    static bool wantsColor(FILE* stream);
    static int width(FILE* stream, int fallback = 100);

    // A name shown as text: control characters as \n, \t or \xHH, bytes that are not
    // UTF-8 as \xHH and a backslash as \\, so a hostile name can neither break a line,
    // move the cursor, nor pass for another name.
    static std::string display(std::string_view text);
    // Columns taken by display text (one per UTF-8 character; wide glyphs are rare in
    // names and are counted as one).
    static size_t columns(std::string_view displayText);
    // Cuts display text to at most `columns`, marking the cut with "…".
    static std::string fit(std::string_view displayText, size_t columns);
};

// ANSI styling that turns into nothing when colour is off.
class Style {
public:
    explicit Style(bool enabled) : enabled_(enabled) {}
    std::string bold(std::string_view text) const { return wrap("1", text); }
    std::string dim(std::string_view text) const { return wrap("2", text); }
    std::string color(int code, std::string_view text) const {
        return wrap(std::to_string(code), text);
    }
    bool enabled() const { return enabled_; }

private:
    std::string wrap(const std::string& code, std::string_view text) const;
    bool enabled_;
};

}  // namespace veldan::cli
