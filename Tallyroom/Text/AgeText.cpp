#include "Text/AgeText.h"

namespace tallyroom {

namespace {

QString ago(std::int64_t count, const QString& one, const QString& many)
{
    return QStringLiteral("il y a %1 %2").arg(QString::number(count), count < 2 ? one : many);
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
    if (days < 14) {
        return ago(days, QStringLiteral("jour"), QStringLiteral("jours"));
    }
    if (days < 60) {
        return ago(days / 7, QStringLiteral("semaine"), QStringLiteral("semaines"));
    }
    if (days < 730) {
        return ago(days / 30, QStringLiteral("mois"), QStringLiteral("mois"));
    }
    return ago(days / 365, QStringLiteral("an"), QStringLiteral("ans"));
}

double modifiedAtSortKey(const Entry& entry)
{
    return entry.modifiedAt ? std::chrono::duration<double>(entry.modifiedAt->time_since_epoch()).count() : 0;
}

} // namespace tallyroom
