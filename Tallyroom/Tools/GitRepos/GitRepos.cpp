#include "Tools/GitRepos/GitRepos.h"

#include "Tools/Frame/ToolStyles.h"

namespace tallyroom {

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
    style.table.firstColumnTitle = QStringLiteral("Dépôt");
    return new ListToolScreen(tool, style);
}

} // namespace tallyroom
