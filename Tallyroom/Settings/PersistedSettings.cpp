#include "Settings/PersistedSettings.h"

#include <cmath>

namespace tallyroom::Settings {

QSettings& store()
{
    static QSettings settings{QSettings::IniFormat, QSettings::UserScope, QStringLiteral("tallyroom"),
                              QStringLiteral("tallyroom")};
    return settings;
}

std::optional<std::int64_t> integer(const QString& key)
{
    // The file keeps texts: what counts is whether the text is a number, not how it was put there.
    bool isInteger = false;
    const std::int64_t value = text(key).value_or(QString{}).toLongLong(&isInteger);
    return isInteger ? std::optional{value} : std::nullopt;
}

std::optional<std::int64_t> truncatedNumber(const QString& key)
{
    if (const auto whole = integer(key)) {
        return whole;
    }
    static constexpr double limit = 9.2e18;
    bool isNumber = false;
    const double value = text(key).value_or(QString{}).toDouble(&isNumber);
    return isNumber && std::abs(value) < limit ? std::optional{static_cast<std::int64_t>(value)}
                                               : std::nullopt;
}

std::optional<QString> text(const QString& key)
{
    const QVariant value = store().value(key);
    return value.canConvert<QString>() && value.typeId() != QMetaType::QStringList
               ? std::optional{value.toString()}
               : std::nullopt;
}

std::optional<QStringList> textList(const QString& key)
{
    // A list of one text is kept as that text, an empty one as an invalid value under its key.
    const QVariant value = store().value(key);
    if (value.typeId() == QMetaType::QStringList || value.typeId() == QMetaType::QString) {
        return value.toStringList();
    }
    return store().contains(key) && !value.isValid() ? std::optional{QStringList{}} : std::nullopt;
}

bool flag(const QString& key, bool otherwise)
{
    const auto stored = text(key);
    return stored ? *stored == QStringLiteral("true") : otherwise;
}

void write(const QString& key, const QVariant& value)
{
    store().setValue(key, value);
}

std::int64_t largeFilesLimit()
{
    return integer(QStringLiteral("lf.limit")).value_or(100);
}

std::int64_t duplicatesMinSize()
{
    return truncatedNumber(QStringLiteral("dup.minSize")).value_or(1'048'576);
}

} // namespace tallyroom::Settings
