#pragma once

#include "Tools/DiskUsage/FolderNavigatorViewModel.h"
#include "Tools/Frame/ListToolScreen.h"

#include <optional>

class QAbstractButton;
class QPushButton;

namespace tallyroom {

class Breadcrumb;
class TreemapView;

/// The screen of the disk-usage explorer: the frame of all list tools with the way back, the breadcrumb, and
/// the choice between table and treemap. Main thread.
class DiskUsageView : public ListToolScreen {
    Q_OBJECT

public:
    /// `navigator` must outlive the screen.
    explicit DiskUsageView(FolderNavigatorViewModel& navigator, QWidget* parent = nullptr);

    [[nodiscard]] bool isTreemapShown() const { return m_isTreemapShown; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    [[nodiscard]] QString exportName() const override;
    void activate(const Entry& entry) override;
    [[nodiscard]] std::optional<Entry> currentEntry() const override;
    void resetView() override;
    void showRows() override;

private:
    [[nodiscard]] QWidget* makeWayBack();
    [[nodiscard]] QWidget* makeListChoice();
    void connectTreemap();
    void addNavigationShortcuts();
    void showPlace();
    void showTreemap(bool isShown);
    void showTiles();
    void returnToChild();

    FolderNavigatorViewModel& m_navigator;
    QPushButton* m_back;
    Breadcrumb* m_breadcrumb;
    QAbstractButton* m_tableButton;
    QAbstractButton* m_treemapButton;
    TreemapView* m_treemap;
    bool m_isTreemapShown = false;
    std::optional<FileUrl> m_shownFolder;
    std::optional<FileUrl> m_cameFrom; // the child that the way back left, until its row is there
};

} // namespace tallyroom
