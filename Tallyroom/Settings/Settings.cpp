#include "Settings/Settings.h"

#include <QFile>
#include <QIODevice>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <memory>
#include <sys/stat.h>

namespace tallyroom::Settings {

namespace {

bool readJson(QIODevice& file, QSettings::SettingsMap& values)
{
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    values = document.object().toVariantMap();
    return document.isObject();
}

bool writeJson(QIODevice& file, const QSettings::SettingsMap& values)
{
    const QByteArray text = QJsonDocument{QJsonObject::fromVariantMap(values)}.toJson();
    return file.write(text) == text.size();
}

} // namespace

QSettings::Format format()
{
    // The INI format of the library builds whatever object a damaged file names, of any size.
    static const QSettings::Format json =
        QSettings::registerFormat(QStringLiteral("json"), readJson, writeJson);
    return json;
}

QSettings& store()
{
    static const std::unique_ptr<QSettings> settings =
        open(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
             QStringLiteral("/tallyroom/tallyroom.json"));
    return *settings;
}

std::unique_ptr<QSettings> open(const QString& path)
{
    // The library waits for whatever it opens, and a FIFO may never answer.
    struct stat file = {};
    if (::stat(QFile::encodeName(path).constData(), &file) == 0 && !S_ISREG(file.st_mode)) {
        static const QTemporaryDir folder;
        return std::make_unique<QSettings>(folder.filePath(QStringLiteral("tallyroom.json")), format());
    }
    return std::make_unique<QSettings>(path, format());
}

std::optional<std::int64_t> integer(const QString& key)
{
    const QVariant value = store().value(key);
    const bool hasFraction =
        value.typeId() == QMetaType::Double && value.toDouble() != std::trunc(value.toDouble());
    return hasFraction ? std::nullopt : truncatedNumber(key);
}

std::optional<std::int64_t> truncatedNumber(const QString& key)
{
    static constexpr double limit = 9.2e18;
    const QVariant value = store().value(key);
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::LongLong:
        return value.toLongLong();
    case QMetaType::Double:
        return std::abs(value.toDouble()) < limit ? std::optional{static_cast<std::int64_t>(value.toDouble())}
                                                  : std::nullopt;
    default:
        return std::nullopt;
    }
}

std::optional<QString> text(const QString& key)
{
    const QVariant value = store().value(key);
    return value.typeId() == QMetaType::QString ? std::optional{value.toString()} : std::nullopt;
}

std::optional<QStringList> textList(const QString& key)
{
    const QVariant value = store().value(key);
    const bool isList = value.typeId() == QMetaType::QStringList || value.typeId() == QMetaType::QVariantList;
    const QVariantList list = value.toList();
    return isList && std::ranges::all_of(
                         list, [](const QVariant& one) { return one.typeId() == QMetaType::QString; })
               ? std::optional{value.toStringList()}
               : std::nullopt;
}

bool flag(const QString& key, bool otherwise)
{
    const QVariant value = store().value(key);
    return value.typeId() == QMetaType::Bool ? value.toBool() : otherwise;
}

void write(const QString& key, const QVariant& value)
{
    store().setValue(key, value);
}

std::int64_t largeFilesLimit()
{
    static constexpr std::int64_t usual = 100;
    const std::int64_t limit = integer(QStringLiteral("lf.limit")).value_or(usual);
    return limit < 1 ? usual : limit;
}

std::int64_t duplicatesMinSize()
{
    return truncatedNumber(QStringLiteral("dup.minSize")).value_or(1'048'576);
}

std::int64_t longWorkSeconds()
{
    return truncatedNumber(QStringLiteral("reports.seconds")).value_or(10);
}

QString animationsKey()
{
    return QStringLiteral("view.animations");
}

} // namespace tallyroom::Settings
