#include "Text/RepositoryText.h"

#include "Text/FileUrlText.h"
#include "Text/NumberText.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace tallyroom::RepositoryText {

namespace {

QString unpushedText(const std::optional<std::int64_t>& commits)
{
    return commits ? NumberText::plural(*commits, QStringLiteral("commit non poussé"),
                                        QStringLiteral("commits non poussés"))
                   : QStringLiteral("plus de %1 commits non poussés")
                         .arg(NumberText::grouped(RepositoryState::mostCommits));
}

/// The first of `names` and how many others there are.
QStringList atMost(QStringList names, qsizetype most, const QString& others)
{
    if (const qsizetype left = names.size() - most; left > 0) {
        names = names.first(most);
        names += others + NumberText::plural(left, QStringLiteral("autre"));
    }
    return names;
}

/// Which other work trees break.
QString dependents(const State& state)
{
    constexpr qsizetype mostNames = 3;
    QStringList names;
    if (state) {
        std::ranges::transform(state->worktrees, std::back_inserter(names), FileUrlText::displayFromHome);
    }
    return names.isEmpty()
               ? QString{}
               : QStringLiteral(" (%1)").arg(atMost(names, mostNames, {}).join(QStringLiteral(", ")));
}

} // namespace

QStringList losses(const State& state)
{
    if (!state) {
        return {QStringLiteral("état inconnu")};
    }
    QStringList words;
    if (!state->hasRemote) {
        words += QStringLiteral("sans dépôt distant");
    } else if (state->unpushed != 0) {
        words += unpushedText(state->unpushed);
    }
    if (state->stashes > 0) {
        words += QStringLiteral("modifications en réserve (stash)");
    }
    if (!state->worktrees.empty()) {
        words +=
            NumberText::plural(state->worktrees.size(), QStringLiteral("autre copie de travail en dépend"),
                               QStringLiteral("autres copies de travail en dépendent"));
    }
    return words;
}

QString summary(const EntryList& histories, const StateOf& stateOf)
{
    const auto losing = std::ranges::count_if(histories, [&stateOf](const Entry& history) {
        const State* const state = stateOf(history);
        return state != nullptr && (!*state || (*state)->wouldLoseWork());
    });
    const QString text = NumberText::plural(histories.size(), QStringLiteral("historique"));
    return losing == 0 ? text
                       : text + QStringLiteral(" · %1 avec du travail qui n’est nulle part ailleurs")
                                    .arg(NumberText::grouped(losing));
}

QString warning(const std::vector<Entry>& histories, const StateOf& stateOf)
{
    constexpr qsizetype mostLines = 5;
    QStringList lines;
    for (const Entry& history : histories) {
        const State* const known = stateOf(history);
        const State& state = known != nullptr ? *known : State{};
        if (const QStringList lost = losses(state); !lost.isEmpty()) {
            lines += QStringLiteral("• %1 : %2")
                         .arg(FileUrlText::display(history.url.parent().lastPathComponent()),
                              lost.join(QStringLiteral(", "))) +
                     dependents(state);
        }
    }
    return lines.isEmpty()
               ? QStringLiteral("Tous leurs commits sont aussi dans un dépôt distant, d’après la dernière "
                                "mise à jour connue.")
               : QStringLiteral("Du travail qui n’est nulle part ailleurs peut être perdu :\n") +
                     atMost(lines, mostLines, QStringLiteral("et ")).join(QLatin1Char{'\n'});
}

} // namespace tallyroom::RepositoryText
