#include "Tools/DiskUsage/Treemap/TreemapPanel.h"

#include "Layout/Boxes.h"
#include "Text/FileUrlText.h"
#include "Text/SizeText.h"
#include "Text/TreemapText.h"
#include "Theme/Theme.h"
#include "Tools/DiskUsage/Treemap/TreemapLegend.h"
#include "Tools/DiskUsage/Treemap/TreemapStatusLine.h"

#include <chrono>

namespace tallyroom {

TreemapPanel::TreemapPanel(const Selection& selection, QWidget* parent)
    : QWidget(parent), m_map(new TreemapView(selection)), m_status(new TreemapStatusLine),
      m_legend(new TreemapLegend)
{
    auto* const column = makeColumn(this, {Theme::margin, 0, Theme::margin, Theme::gap}, Theme::gap / 2);
    column->addWidget(m_map, 1);
    column->addWidget(m_status);
    column->addWidget(m_legend);
    setFocusProxy(m_map);
    connect(m_map, &TreemapView::pointedChanged, this, &TreemapPanel::showPointed);
    connect(m_map, &TreemapView::laidOut, this, &TreemapPanel::showLegend);
    connect(m_legend, &TreemapLegend::chosen, m_map, &TreemapView::setDistinguished);
}

void TreemapPanel::forgetFolder()
{
    m_legend->forgetChoice();
    m_map->forgetCurrent();
}

void TreemapPanel::showPointed()
{
    const TreemapScene& scene = m_map->scene();
    if (const TreemapScene::Rest* const rest = m_map->pointedRest()) {
        const bool isDeep = rest->parent != TreemapScene::none;
        m_status->show(isDeep ? FileUrlText::displayFromHome(scene.entry(rest->parent).url) : QString{},
                       TreemapText::tooSmall(rest->count) + QStringLiteral(" · ") +
                           sizeText(rest->sizeBytes));
        return;
    }
    const auto tile = m_map->pointedTile();
    if (!tile) {
        m_status->show({}, {});
        return;
    }
    const std::uint32_t parent = scene.tiles()[*tile].parent;
    const QString holder =
        parent == TreemapScene::none ? QString{} : FileUrlText::display(scene.entry(parent).name);
    m_status->show(FileUrlText::displayFromHome(scene.entry(*tile).url),
                   TreemapText::facts(scene.entry(*tile),
                                      {scene.shareOfParent(*tile), holder, scene.share(*tile)},
                                      std::chrono::system_clock::now()));
}

/// The sums are the whole folder's: what one looks closer at leaves folders off the screen closed.
void TreemapPanel::showLegend()
{
    if (m_map->magnification().isFitting()) {
        m_legend->show(m_map->scene().bytesByKind());
    }
}

} // namespace tallyroom
