#pragma once
// Numbers and dates as the user's locale writes them (QLocale): digit grouping for byte
// counts, and the abbreviated date with the short time for "when was this scanned".
//
// Contract: immutable once made; copies share the locale and may be used on any thread.

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

namespace veldan::platform {

class LocaleFormat {
public:
    // The locale of the environment (LC_ALL, LC_NUMERIC/LC_TIME, LANG).
    static LocaleFormat system();
    // A named locale such as "en_US" or "de_DE"; an unknown name gives the "C" locale.
    explicit LocaleFormat(const std::string& name);

    // "1,234,567" in en_US, "1.234.567" in de_DE; no grouping in the C locale.
    std::string integer(int64_t value) const;
    // The date with abbreviated month and no weekday, then the short time, in the local
    // time zone: "Nov 21, 2026, 12:39 PM" in en_US, "21 Nov 2026, 12:39" in C.
    std::string abbreviatedDateTime(std::chrono::system_clock::time_point time) const;
    // The same date without the time: "Nov 21, 2026" in en_US.
    std::string abbreviatedDate(std::chrono::system_clock::time_point time) const;

    struct Locale;  // the QLocale and its formats, kept out of this header

private:
    explicit LocaleFormat(std::shared_ptr<const Locale> locale);
    std::shared_ptr<const Locale> locale_;
};

}  // namespace veldan::platform
