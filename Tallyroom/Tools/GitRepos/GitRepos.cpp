#include "Tools/GitRepos/GitRepos.h"

#include "Text/FileUrlText.h"
#include "Text/NumberText.h"
#include "Tools/Frame/ToolStyles.h"

#include <algorithm>
#include <iterator>

namespace tallyroom {

namespace {

using KnownState = GitReposViewModel::State;

QString unpushedText(const std::optional<std::int64_t>& commits)
{
    return commits ? NumberText::plural(*commits, QStringLiteral("commit non poussé"),
                                        QStringLiteral("commits non poussés"))
                   : QStringLiteral("plus de %1 commits non poussés")
                         .arg(NumberText::grouped(RepositoryState::mostCommits));
}

/// What would be lost, a few words each; none where nothing would.
QStringList lossesOf(const RepositoryState& state)
{
    QStringList losses;
    if (!state.hasRemote) {
        losses += QStringLiteral("sans dépôt distant");
    } else if (state.unpushed != 0) {
        losses += unpushedText(state.unpushed);
    }
    if (state.stashes > 0) {
        losses += QStringLiteral("modifications en réserve (stash)");
    }
    if (!state.worktrees.empty()) {
        losses +=
            NumberText::plural(state.worktrees.size(), QStringLiteral("autre copie de travail en dépend"),
                               QStringLiteral("autres copies de travail en dépendent"));
    }
    return losses;
}

/// Which other work trees break, for the question before a deletion.
QString dependentsOf(const RepositoryState& state)
{
    constexpr std::ptrdiff_t mostNames = 3;
    QStringList names;
    const auto shown = std::min(std::ssize(state.worktrees), mostNames);
    std::transform(state.worktrees.begin(), state.worktrees.begin() + shown, std::back_inserter(names),
                   [](const FileUrl& tree) { return FileUrlText::displayFromHome(tree); });
    if (const auto others = std::ssize(state.worktrees) - shown; others > 0) {
        names += NumberText::plural(others, QStringLiteral("autre"));
    }
    return names.isEmpty() ? QString{} : QStringLiteral(" (%1)").arg(names.join(QStringLiteral(", ")));
}

const QString unknownState = QStringLiteral("état inconnu");

std::vector<EntryBadge> badgesOf(const KnownState& state)
{
    if (!state) {
        return {{unknownState, Theme::Colour::secondary}};
    }
    std::vector<EntryBadge> badges;
    for (const QString& loss : lossesOf(*state)) {
        badges.push_back({loss, Theme::Colour::old});
    }
    return badges;
}

/// The repositories that would lose work, by name, and why.
QString warningOf(const GitReposViewModel& tool, const std::vector<Entry>& entries)
{
    constexpr qsizetype mostNames = 5;
    QStringList lines;
    for (const Entry& entry : entries) {
        const KnownState* const state = tool.repositoryState(entry.url);
        const bool isKnown = state != nullptr && state->has_value();
        const QStringList losses = isKnown ? lossesOf(**state) : QStringList{unknownState};
        if (!losses.isEmpty()) {
            lines += QStringLiteral("• %1 : %2")
                         .arg(FileUrlText::display(ToolStyles::projectName(entry)),
                              losses.join(QStringLiteral(", "))) +
                     (isKnown ? dependentsOf(**state) : QString{});
        }
    }
    if (lines.isEmpty()) {
        return QStringLiteral("Tous leurs commits sont aussi dans un dépôt distant, d’après la dernière mise "
                              "à jour connue.");
    }
    if (const qsizetype others = lines.size() - mostNames; others > 0) {
        lines = lines.first(mostNames);
        lines += QStringLiteral("et ") + NumberText::plural(others, QStringLiteral("autre"));
    }
    return QStringLiteral("Du travail qui n’est nulle part ailleurs peut être perdu :\n") +
           lines.join(QLatin1Char{'\n'});
}

} // namespace

GitReposViewModel::GitReposViewModel(DeletionRunner& deletions)
    : ListToolViewModel(deletions),
      m_states(RepositoryState::read, [this] { Q_EMIT repositoryStatesChanged(); })
{
    connect(this, &ScanToolViewModel::progressChanged, this, [this] { m_states.follow(entries()); });
    connect(this, &GitReposViewModel::repositoryStatesChanged, this, &ScanToolViewModel::recoveryChanged);
}

Recovery GitReposViewModel::recovery() const
{
    Recovery recovery = Recovery::parted(entries(), [](const Entry&) { return false; });
    std::size_t losing = 0;
    for (const Entry& entry : entries()) {
        const State* const state = repositoryState(entry.url);
        recovery.isKnown = recovery.isKnown && state != nullptr;
        losing += state != nullptr && (!*state || (*state)->wouldLoseWork()) ? 1 : 0;
    }
    recovery.words = NumberText::plural(entries().size(), QStringLiteral("historique"));
    if (losing > 0) {
        recovery.words += QStringLiteral(" · %1 avec du travail qui n’est nulle part ailleurs")
                              .arg(NumberText::grouped(losing));
    }
    return recovery;
}

ListToolScreen* makeGitReposScreen(GitReposViewModel& tool)
{
    ListToolStyle style = ToolStyles::projects(
        "arrow.triangle.branch", QStringLiteral("Dépôts Git"),
        QStringLiteral("Choisissez un dossier de projets : Tallyroom mesure l’historique de chaque dépôt, "
                       "du plus lourd au plus léger."));
    style.emptyMessage = QStringLiteral("Aucun dépôt Git dans ce dossier.");
    style.deletionWarning =
        QStringLiteral("C’est l’historique des dépôts choisis (versions, branches, étiquettes) : supprimé "
                       "définitivement, il est perdu. Les fichiers de travail restent en place.");
    style.warning = [&tool](const std::vector<Entry>& entries) { return warningOf(tool, entries); };
    style.table.firstColumnTitle = QStringLiteral("Dépôt");
    style.table.badges = [&tool](const Entry& entry) {
        const KnownState* const state = tool.repositoryState(entry.url);
        return state != nullptr ? badgesOf(*state) : std::vector<EntryBadge>{};
    };
    auto* const screen = new ListToolScreen(tool, style);
    QObject::connect(&tool, &GitReposViewModel::repositoryStatesChanged, screen, &ListToolScreen::showAgain);
    return screen;
}

} // namespace tallyroom
