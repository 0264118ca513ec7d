#include "platform/TrimmedText.hpp"

#include <QChar>

#include "platform/Utf8.hpp"

namespace veldan::platform {

namespace {

constexpr size_t longestSequence = 4;

bool isSpace(std::string_view text, size_t at, size_t length) {
    return QChar::isSpace(decodeSequence(text, at, length));
}

// Length of the white space character that starts at `at`, or 0.
size_t spaceStartingAt(std::string_view text, size_t at) {
    const size_t length = validSequenceLength(text, at);
    return length != 0 && isSpace(text, at, length) ? length : 0;
}

// Length of the white space character that ends just before `end`, or 0. No sequence
// starts with a continuation byte, so the nearest start that fits is the only one.
size_t spaceEndingAt(std::string_view text, size_t end) {
    for (size_t length = 1; length <= longestSequence && length <= end; ++length) {
        if (validSequenceLength(text, end - length) == length) {
            return isSpace(text, end - length, length) ? length : 0;
        }
    }
    return 0;
}

}  // namespace

std::string trimmedText(std::string_view text) {
    size_t start = 0;
    while (start < text.size()) {
        const size_t space = spaceStartingAt(text, start);
        if (space == 0) break;
        start += space;
    }
    size_t end = text.size();
    while (end > start) {
        const size_t space = spaceEndingAt(text, end);
        if (space == 0) break;
        end -= space;
    }
    return std::string(text.substr(start, end - start));
}

}  // namespace veldan::platform
