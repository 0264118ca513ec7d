#include "platform/LocaleFormat.hpp"

#include <QDateTime>
#include <QLocale>
#include <QRegularExpression>
#include <QString>

namespace veldan::platform {

struct LocaleFormat::Locale {
    QLocale locale;
    QString dateFormat;
    QString timeFormat;
};

namespace {

// Qt offers long and short date formats only. The abbreviated style is the long one with
// the weekday left out and the month name shortened ("dddd, MMMM d, yyyy" becomes
// "MMM d, yyyy"), which is how the platform's abbreviated style reads in each language.
QString abbreviatedDateFormat(const QLocale& locale) {
    QString format = locale.dateFormat(QLocale::LongFormat);
    format.remove(QRegularExpression(QStringLiteral("dddd[,.]?\\s*")));
    format.remove(QRegularExpression(QStringLiteral("[,\\s]+$")));
    format.replace(QStringLiteral("MMMM"), QStringLiteral("MMM"));
    return format.trimmed();
}

std::shared_ptr<const LocaleFormat::Locale> make(const QLocale& locale) {
    auto made = std::make_shared<LocaleFormat::Locale>();
    made->locale = locale;
    made->dateFormat = abbreviatedDateFormat(locale);
    // Some locales' short time still shows seconds ("HH:mm:ss" in C); the short style is
    // hours and minutes.
    made->timeFormat = locale.timeFormat(QLocale::ShortFormat);
    made->timeFormat.remove(QRegularExpression(QStringLiteral("[:.]ss")));
    return made;
}

}  // namespace

LocaleFormat::LocaleFormat(std::shared_ptr<const Locale> locale) : locale_(std::move(locale)) {}

LocaleFormat::LocaleFormat(const std::string& name)
    : locale_(make(QLocale(QString::fromStdString(name)))) {}

LocaleFormat LocaleFormat::system() {
    return LocaleFormat(make(QLocale::system()));
}

std::string LocaleFormat::integer(int64_t value) const {
    return locale_->locale.toString(static_cast<qlonglong>(value)).toStdString();
}

namespace {

QDateTime localTime(std::chrono::system_clock::time_point time) {
    const auto ms = std::chrono::floor<std::chrono::milliseconds>(time).time_since_epoch().count();
    return QDateTime::fromMSecsSinceEpoch(ms, Qt::LocalTime);
}

}  // namespace

std::string LocaleFormat::abbreviatedDate(std::chrono::system_clock::time_point time) const {
    return locale_->locale.toString(localTime(time), locale_->dateFormat).toStdString();
}

std::string LocaleFormat::abbreviatedDateTime(std::chrono::system_clock::time_point time) const {
    const QDateTime local = localTime(time);
    const QString text = locale_->locale.toString(local, locale_->dateFormat) +
                         QStringLiteral(", ") +
                         locale_->locale.toString(local, locale_->timeFormat);
    return text.toStdString();
}

}  // namespace veldan::platform
