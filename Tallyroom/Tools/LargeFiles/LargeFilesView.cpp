#include "Tools/LargeFiles/LargeFilesView.h"

#include "Controls/OptionMenu.h"
#include "Theme/FileKindPresentation.h"
#include "Tools/Frame/ToolHeader.h"
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

LargeFilesView::LargeFilesView(LargeFilesViewModel& tool, QWidget* parent)
    : ListToolScreen(tool, largeFilesStyle(), parent), m_largeFiles(tool),
      m_limit(new OptionMenu(OptionMenu::Choices::one))
{
    for (const std::int64_t limit : LargeFilesViewModel::offeredLimits) {
        m_limit->addChoice(QString::number(limit), limit == tool.limit(),
                           [&tool, limit](bool) { tool.setLimit(limit); });
    }
    header().addOption(m_limit);
    connect(&tool, &LargeFilesViewModel::limitChanged, this, &LargeFilesView::showLimit);
    showLimit();
}

void LargeFilesView::showLimit()
{
    m_limit->setTitle(QStringLiteral("Les %1 plus gros").arg(m_largeFiles.limit()));
}

} // namespace tallyroom
