#include "Tools/LargeFiles/LargeFiles.h"

#include "Controls/OptionMenu.h"
#include "Model/FileKind.h"
#include "Settings/Settings.h"
#include "Text/NumberText.h"
#include "Theme/FileKindPresentation.h"
#include "Tools/Frame/ToolStyles.h"

namespace tallyroom {

namespace {

ListToolStyle largeFilesStyle()
{
    ListToolStyle style = ToolStyles::search(
        "doc.text.magnifyingglass", QStringLiteral("Gros fichiers"),
        QStringLiteral("Choisissez un dossier : Tallyroom y cherche les fichiers les plus lourds, à "
                       "n’importe quelle profondeur."));
    style.emptyMessage = QStringLiteral("Aucun fichier dans ce dossier.");
    style.table.firstColumnTitle = QStringLiteral("Fichier");
    for (const FileKind kind : FileKind::all) {
        if (kind != FileKind::folder) {
            style.categories.push_back(
                {std::string{kind.rawValue()}, displayName(kind), std::string{kind.symbolName()}});
        }
    }
    return style;
}

} // namespace

LargeFilesViewModel::LargeFilesViewModel(DeletionRunner& deletions)
    : ListToolViewModel(deletions, [](const Entry& entry) { return FileKind::of(entry).rawValue(); }),
      m_limit(Settings::largeFilesLimit())
{}

void LargeFilesViewModel::setLimit(std::int64_t limit)
{
    if (!assignIfChanged(m_limit, limit)) {
        return;
    }
    Settings::write(QStringLiteral("lf.limit"), QVariant::fromValue<qlonglong>(limit));
    Q_EMIT limitChanged();
    scan();
}

ScanLine LargeFilesViewModel::scanLine() const
{
    return {QStringLiteral("Analyse en cours… ") + NumberText::examinedFiles(scanCompleted()), std::nullopt};
}

FileScanner::ScanStream LargeFilesViewModel::startStream()
{
    return FileScanner::findLargestFilesStream(*rootURL(), m_limit);
}

ListToolScreen* makeLargeFilesScreen(LargeFilesViewModel& tool)
{
    auto* const limits = new OptionMenu(OptionMenu::Choices::one, [&tool] {
        return QStringLiteral("Les %1 plus gros").arg(NumberText::grouped(tool.limit()));
    });
    limits->addChoices(
        LargeFilesViewModel::offeredLimits, [](std::int64_t limit) { return QString::number(limit); },
        [&tool](std::int64_t limit) { return limit == tool.limit(); },
        [&tool](std::int64_t limit, bool) { tool.setLimit(limit); });
    limits->follow(tool, &LargeFilesViewModel::limitChanged);
    auto* const screen = new ListToolScreen(tool, largeFilesStyle());
    screen->addOption(limits);
    return screen;
}

} // namespace tallyroom
