#include "Tools/GitRepos/GitReposView.h"

#include "Tools/Frame/ToolStyles.h"

namespace tallyroom {

namespace {

ListToolStyle gitReposStyle()
{
    ListToolStyle style = ToolStyles::search(
        "arrow.triangle.branch", QStringLiteral("Dépôts Git"),
        QStringLiteral("Choisissez un dossier de projets : Tallyroom mesure l’historique de chaque dépôt, "
                       "du plus lourd au plus léger."));
    style.emptyMessage = QStringLiteral("Aucun dépôt Git dans ce dossier.");
    style.deletionWarning =
        QStringLiteral("C’est l’historique des dépôts choisis (versions, branches, étiquettes) : supprimé "
                       "définitivement, il est perdu. Les fichiers de travail restent en place.");
    style.table.firstColumnTitle = QStringLiteral("Dépôt");
    style.table.name = ToolStyles::projectName;
    style.table.symbol = [](const Entry&) { return std::string{"arrow.triangle.branch"}; };
    style.table.columns.push_back(ToolStyles::ageColumn());
    return style;
}

} // namespace

GitReposView::GitReposView(GitReposViewModel& tool, QWidget* parent)
    : ListToolScreen(tool, gitReposStyle(), parent)
{}

} // namespace tallyroom
