#include "Text/RecoveryText.h"

#include "Text/AgeText.h"
#include "Text/NumberText.h"

namespace tallyroom::RecoveryText {

namespace {

/// "aucun ancien": a zero before a word reads like a form.
QString howMany(std::size_t count, const QString& one, const QString& many)
{
    return count == 0 ? QStringLiteral("aucun ") + one : NumberText::plural(count, one, many);
}

} // namespace

QString caches(std::size_t safe, std::size_t all)
{
    return QStringLiteral("%1 sur %2")
        .arg(howMany(safe, QStringLiteral("cache sans risque"), QStringLiteral("caches sans risque")),
             NumberText::grouped(all));
}

QString nodeModules(std::size_t safe, std::size_t all, AgeThreshold threshold)
{
    return QStringLiteral("%1 sur %2 · projets sans changement depuis %3")
        .arg(howMany(safe, QStringLiteral("ancien"), QStringLiteral("anciens")), NumberText::grouped(all),
             thresholdText(threshold));
}

QString largest(std::size_t count)
{
    return QStringLiteral("les %1 plus gros · à vous de choisir").arg(NumberText::grouped(count));
}

QString copies(std::size_t count)
{
    return NumberText::plural(count, QStringLiteral("copie en trop"), QStringLiteral("copies en trop")) +
           QStringLiteral(" · une copie de chaque reste");
}

} // namespace tallyroom::RecoveryText
