#include "Text/ToolText.h"

namespace tallyroom::ToolTexts {

const ToolText dashboard{
    .id = QStringLiteral("dashboard"), .name = QStringLiteral("Tableau de bord"), .icon = "chart.pie"};

const ToolText diskUsage{
    .id = QStringLiteral("disk-usage"),
    .name = QStringLiteral("Espace disque"),
    .icon = "internaldrive",
    .message = QStringLiteral("Choisissez un dossier : Tallyroom mesure ce qu’il contient, niveau "
                              "par niveau, du plus lourd au plus léger."),
    .emptyMessage = QStringLiteral("Ce dossier est vide."),
    .firstColumnTitle = QStringLiteral("Nom"),
    .searchPlaceholder = QStringLiteral("Filtrer par nom")};

const ToolText nodeModules{
    .id = QStringLiteral("node-modules"),
    .name = QStringLiteral("node_modules"),
    .icon = "shippingbox",
    .message = QStringLiteral("Choisissez un dossier de projets : Tallyroom y cherche les dossiers "
                              "node_modules et signale ceux qui n’ont plus servi depuis longtemps."),
    .emptyMessage = QStringLiteral("Aucun dossier node_modules ici."),
    .firstColumnTitle = QStringLiteral("Projet")};

const ToolText largeFiles{
    .id = QStringLiteral("large-files"),
    .name = QStringLiteral("Gros fichiers"),
    .icon = "doc.text.magnifyingglass",
    .message = QStringLiteral("Choisissez un dossier : Tallyroom y cherche les fichiers les plus lourds, à "
                              "n’importe quelle profondeur."),
    .emptyMessage = QStringLiteral("Aucun fichier dans ce dossier."),
    .firstColumnTitle = QStringLiteral("Fichier")};

const ToolText duplicates{
    .id = QStringLiteral("duplicates"),
    .name = QStringLiteral("Doublons"),
    .icon = "doc.on.doc",
    .message = QStringLiteral("Choisissez un dossier : Tallyroom y cherche les fichiers au contenu "
                              "identique et dit ce que leurs copies occupent."),
    .emptyMessage = QStringLiteral("Aucun doublon dans ce dossier.")};

const ToolText buildCaches{
    .id = QStringLiteral("build-caches"),
    .name = QStringLiteral("Caches de build"),
    .icon = "hammer",
    .message = QStringLiteral("Choisissez un dossier de code : Tallyroom y cherche ce que vos outils de "
                              "développement savent refaire."),
    .emptyMessage = QStringLiteral("Aucun cache de build ici."),
    .firstColumnTitle = QStringLiteral("Cache")};

const ToolText gitRepos{
    .id = QStringLiteral("git-repos"),
    .name = QStringLiteral("Dépôts Git"),
    .icon = "arrow.triangle.branch",
    .message = QStringLiteral("Choisissez un dossier de projets : Tallyroom mesure l’historique de "
                              "chaque dépôt, du plus lourd au plus léger."),
    .emptyMessage = QStringLiteral("Aucun dépôt Git dans ce dossier."),
    .firstColumnTitle = QStringLiteral("Dépôt"),
    .deletionWarning =
        QStringLiteral("C’est l’historique des dépôts choisis (versions, branches, étiquettes) : "
                       "supprimé définitivement, il est perdu. Les fichiers de travail restent en "
                       "place.")};

} // namespace tallyroom::ToolTexts
