#include "Text/MarkText.h"

#include "Model/Ecosystem.h"
#include "Text/AgeText.h"
#include "Text/NumberText.h"
#include "Text/PlainText.h"

#include <algorithm>
#include <array>

namespace tallyroom::MarkText {

namespace {

struct MarkRow {
    EntryMark mark;
    QString word;
    QString explanation;
    QString warning; ///< goes on after the number of entries
};

const std::array<MarkRow, 4>& markRows()
{
    static const std::array<MarkRow, 4> rows{{
        {EntryMark::toVerify, QStringLiteral("à vérifier"),
         QStringLiteral(
             "Rien ne prouve que ce dossier soit un cache, ou Git suit ses fichiers : regardez ce qu’il "
             "contient."),
         QStringLiteral(" à vérifier : rien ne prouve que ce soit un cache qui se refait.")},
        {EntryMark::inUse, QStringLiteral("en cours d’utilisation"),
         QStringLiteral("Un programme s’en sert, ou il a changé il y a moins de dix minutes."),
         QStringLiteral(" en cours d’utilisation : un programme peut en avoir besoin maintenant.")},
        {EntryMark::application, QStringLiteral("application"),
         QStringLiteral("Fait partie d’un programme installé, qui en a besoin."),
         QStringLiteral(" d’un programme installé, qui en a besoin.")},
        {EntryMark::excluded, QStringLiteral("exclusions"),
         QStringLiteral("Un dossier exclu des analyses s’y trouve, ou c’en est un."),
         QStringLiteral(" avec un dossier exclu des analyses : il serait supprimé aussi.")},
    }};
    return rows;
}

template <class Add>
void forEachMark(const Entry& entry, const Add& add)
{
    for (const MarkRow& row : markRows()) {
        if (entry.has(row.mark)) {
            add(row);
        }
    }
}

} // namespace

QStringList words(const Entry& entry)
{
    QStringList all;
    forEachMark(entry, [&all](const MarkRow& row) { all += row.word; });
    return all;
}

QStringList nodeModulesWords(const Entry& nodeModules, AgeThreshold threshold)
{
    QStringList all = words(nodeModules);
    if (threshold.isOld(nodeModules.modifiedAt, std::chrono::system_clock::now())) {
        all += QStringLiteral("ancien");
    }
    return all;
}

QString explanation(const Entry& entry)
{
    QStringList all;
    forEachMark(entry, [&all](const MarkRow& row) { all += row.explanation; });
    return all.join(QLatin1Char{'\n'});
}

QString cacheExplanation(const Entry& cache)
{
    const auto ecosystem = Ecosystem::of(cache);
    const CacheFolder* const folder = ecosystem ? ecosystem->folder(cache.name) : nullptr;
    QStringList lines{explanation(cache)};
    if (folder != nullptr && !cache.has(EntryMark::toVerify)) {
        lines.prepend(folder->remedy.empty()
                          ? QStringLiteral("Se refait tout seul à la prochaine exécution.")
                          : QStringLiteral("Se refait par « %1 ».").arg(toText(folder->remedy)));
    }
    lines.removeAll(QString{});
    return lines.join(QLatin1Char{'\n'});
}

QString nodeModulesExplanation(const Entry& nodeModules, const std::optional<Timestamp>& projectDate)
{
    const Timestamp now = std::chrono::system_clock::now();
    // Both ages: installing changes one of them, working on the project the other.
    QStringList lines{QStringLiteral("node_modules modifié : ") + ageText(nodeModules.modifiedAt, now),
                      explanation(nodeModules)};
    if (projectDate) {
        lines.insert(1, QStringLiteral("Fichiers du projet modifiés : ") + ageText(projectDate, now));
    }
    lines.removeAll(QString{});
    return lines.join(QLatin1Char{'\n'});
}

QString warning(const std::vector<Entry>& entries)
{
    QStringList lines;
    for (const MarkRow& row : markRows()) {
        const auto count =
            std::ranges::count_if(entries, [&row](const Entry& entry) { return entry.has(row.mark); });
        if (count > 0) {
            lines += NumberText::plural(count, QStringLiteral("élément")) + row.warning;
        }
    }
    return lines.join(QLatin1Char{'\n'});
}

} // namespace tallyroom::MarkText
