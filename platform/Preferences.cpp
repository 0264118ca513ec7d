#include "platform/Preferences.hpp"

#include <QByteArray>
#include <QDateTime>
#include <QSettings>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantList>
#include <memory>

#include "platform/FileContents.hpp"
#include "platform/Paths.hpp"
#include "platform/UserFolders.hpp"
#include "platform/Utf8.hpp"

namespace veldan::platform {

namespace {

bool isUtf8(const std::string& text) {
    for (size_t at = 0; at < text.size();) {
        const size_t length = validSequenceLength(text, at);
        if (length == 0) return false;
        at += length;
    }
    return true;
}

// QSettings' native format on Linux is this INI file; naming it explicitly (rather than by
// organisation and application) makes it follow XDG_CONFIG_HOME on every call, where
// QSettings would fix its search path once per process.
std::unique_ptr<QSettings> settingsFile() {
    return std::make_unique<QSettings>(QString::fromStdString(Preferences::filePath()),
                                       QSettings::IniFormat);
}

QString keyText(const std::string& key) {
    return QString::fromUtf8(key.data(), qsizetype(key.size()));
}

QVariant textValue(const std::string& value) {
    if (isUtf8(value)) return QString::fromUtf8(value.data(), qsizetype(value.size()));
    return QByteArray(value.data(), qsizetype(value.size()));
}

std::optional<std::string> textFrom(const QVariant& value) {
    if (value.typeId() == QMetaType::QByteArray) return value.toByteArray().toStdString();
    if (value.typeId() == QMetaType::QString) return value.toString().toStdString();
    return std::nullopt;
}

std::optional<QVariant> read(const std::string& key) {
    auto settings = settingsFile();
    const QVariant value = settings->value(keyText(key));
    if (!value.isValid()) return std::nullopt;
    return value;
}

bool write(const std::string& key, const QVariant& value) {
    // The folder is private, like every folder Veldan keeps its state in.
    if (createFolders(parentPath(Preferences::filePath()), 0700) != 0) return false;
    auto settings = settingsFile();
    if (value.isValid()) {
        settings->setValue(keyText(key), value);
    } else {
        settings->remove(keyText(key));
    }
    settings->sync();
    return settings->status() == QSettings::NoError;
}

}  // namespace

std::string Preferences::filePath() {
    return joinPath(configHome(), "Veldan/Veldan.conf");
}

std::optional<std::chrono::system_clock::time_point> Preferences::date(const std::string& key) {
    auto value = read(key);
    if (!value || value->typeId() != QMetaType::QDateTime) return std::nullopt;
    const QDateTime time = value->toDateTime();
    if (!time.isValid()) return std::nullopt;
    return std::chrono::system_clock::time_point(
        std::chrono::milliseconds(time.toMSecsSinceEpoch()));
}

bool Preferences::setDate(const std::string& key, std::chrono::system_clock::time_point value) {
    const auto ms = std::chrono::floor<std::chrono::milliseconds>(value).time_since_epoch().count();
    return write(key, QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC));
}

std::optional<std::string> Preferences::string(const std::string& key) {
    auto value = read(key);
    return value ? textFrom(*value) : std::nullopt;
}

bool Preferences::setString(const std::string& key, const std::string& value) {
    return write(key, textValue(value));
}

std::optional<bool> Preferences::boolean(const std::string& key) {
    auto value = read(key);
    if (!value) return std::nullopt;
    if (value->typeId() == QMetaType::Bool) return value->toBool();
    // The INI format keeps no types: a value written by hand or by Qt comes back as text.
    const QString text = value->toString();
    if (text == QStringLiteral("true")) return true;
    if (text == QStringLiteral("false")) return false;
    return std::nullopt;
}

bool Preferences::setBoolean(const std::string& key, bool value) {
    return write(key, value);
}

std::optional<int64_t> Preferences::integer(const std::string& key) {
    auto value = read(key);
    if (!value) return std::nullopt;
    bool ok = false;
    const qlonglong number = value->toLongLong(&ok);
    if (!ok) return std::nullopt;
    return number;
}

bool Preferences::setInteger(const std::string& key, int64_t value) {
    return write(key, QVariant::fromValue<qlonglong>(value));
}

std::optional<std::string> Preferences::data(const std::string& key) {
    auto value = read(key);
    if (!value || value->typeId() != QMetaType::QByteArray) return std::nullopt;
    return value->toByteArray().toStdString();
}

bool Preferences::setData(const std::string& key, const std::string& value) {
    return write(key, QByteArray(value.data(), qsizetype(value.size())));
}

std::optional<std::vector<std::string>> Preferences::strings(const std::string& key) {
    auto value = read(key);
    if (!value) return std::nullopt;
    std::vector<std::string> result;
    if (value->typeId() == QMetaType::QVariantList || value->typeId() == QMetaType::QStringList) {
        for (const QVariant& item : value->toList()) {
            auto text = textFrom(item);
            if (!text) return std::nullopt;
            result.push_back(std::move(*text));
        }
        return result;
    }
    // One element is read back from the INI file as a single string.
    auto single = textFrom(*value);
    if (!single) return std::nullopt;
    result.push_back(std::move(*single));
    return result;
}

bool Preferences::setStrings(const std::string& key, const std::vector<std::string>& value) {
    QVariantList list;
    for (const auto& item : value)
        list.push_back(textValue(item));
    return write(key, list);
}

bool Preferences::remove(const std::string& key) {
    return write(key, QVariant());
}

}  // namespace veldan::platform
