#include "Text/AgeText.h"

#include "Text/NumberText.h"
#include "Text/PlainText.h"

#include <QDateTime>
#include <QLocale>

namespace tallyroom {

namespace {

QString inFrench(Timestamp date, const QString& format)
{
    const auto seconds = std::chrono::floor<std::chrono::seconds>(date).time_since_epoch().count();
    return QLocale{QLocale::French}.toString(QDateTime::fromSecsSinceEpoch(seconds), format);
}

} // namespace

QString ageText(const std::optional<Timestamp>& date, Timestamp now)
{
    if (!date) {
        return QStringLiteral("date inconnue");
    }
    if (*date > now) {
        return QStringLiteral("dans le futur");
    }
    const std::int64_t days = std::chrono::floor<std::chrono::days>(now - *date).count();
    if (days < 1) {
        return QStringLiteral("aujourd’hui");
    }
    if (days < 2) {
        return QStringLiteral("hier");
    }
    const QString ago = QStringLiteral("il y a ");
    if (days < 14) {
        return ago + NumberText::plural(days, QStringLiteral("jour"));
    }
    if (days < 60) {
        return ago + NumberText::plural(days / 7, QStringLiteral("semaine"));
    }
    if (days < 730) {
        return ago + NumberText::plural(days / 30, QStringLiteral("mois"), QStringLiteral("mois"));
    }
    return ago + NumberText::plural(days / 365, QStringLiteral("an"));
}

QString thresholdText(AgeThreshold threshold)
{
    return toText(threshold.label());
}

QString dateText(const std::optional<Timestamp>& date)
{
    if (!date) {
        return QStringLiteral("date inconnue");
    }
    return inFrench(*date, QStringLiteral("d MMMM yyyy 'à' HH:mm:ss"));
}

QString dayText(Timestamp date)
{
    return inFrench(date, QStringLiteral("d MMM yyyy"));
}

double modifiedAtSortKey(const Entry& entry)
{
    return entry.modifiedAt ? std::chrono::duration<double>(entry.modifiedAt->time_since_epoch()).count() : 0;
}

} // namespace tallyroom
