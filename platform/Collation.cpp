#include "platform/Collation.hpp"

#include <QCollator>
#include <QLocale>
#include <QString>

namespace veldan::platform {

namespace {

QCollator& threadCollator() {
    thread_local QCollator collator = [] {
        // Under the "C" locale Qt collates by code point and ignores numeric mode, which
        // would put "file10" before "File2"; a file browser never does.
        QLocale locale = QLocale::system();
        if (locale.language() == QLocale::C)
            locale = QLocale(QLocale::English, QLocale::UnitedStates);
        QCollator c(locale);
        c.setNumericMode(true);
        c.setCaseSensitivity(Qt::CaseInsensitive);
        c.setIgnorePunctuation(false);
        return c;
    }();
    return collator;
}

QString fromBytes(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

// Removes accents so that "resume" finds "Résumé": decompose, then drop combining marks.
// Canonical decomposition only: compatibility forms ("ﬁ", full-width letters) are
// different text, not the same letters with accents.
QString foldForSearch(const QString& text) {
    const QString decomposed = text.normalized(QString::NormalizationForm_D);
    QString out;
    out.reserve(decomposed.size());
    for (QChar c : decomposed) {
        const auto category = c.category();
        if (category == QChar::Mark_NonSpacing || category == QChar::Mark_SpacingCombining ||
            category == QChar::Mark_Enclosing) {
            continue;
        }
        out.append(c);
    }
    return out.toCaseFolded();
}

}  // namespace

int localizedStandardCompare(std::string_view a, std::string_view b) {
    const int order = threadCollator().compare(fromBytes(a), fromBytes(b));
    return order < 0 ? -1 : (order > 0 ? 1 : 0);
}

bool localizedContains(std::string_view text, std::string_view query) {
    if (query.empty()) return true;
    return foldForSearch(fromBytes(text)).contains(foldForSearch(fromBytes(query)));
}

}  // namespace veldan::platform
