#pragma once

#include "Rows/EntryTable.h"
#include "Tools/DiskUsage/FolderNavigatorViewModel.h"
#include "Tools/Frame/ListToolScreen.h"

#include <map>
#include <optional>

class QPushButton;

namespace tallyroom {

class Breadcrumb;
class TreemapPanel;
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
    void changeFolder();
    void showTreemap(bool isShown);
    void showTiles();
    void showOutline();
    void returnToPlace();
    void forgetPlace();
    void examineDeeperChecks();

    FolderNavigatorViewModel& m_navigator;
    QPushButton* m_back;
    Breadcrumb* m_breadcrumb;
    QPushButton* m_tableButton;
    QPushButton* m_treemapButton;
    TreemapPanel* m_panel;
    TreemapView* m_treemap;
    bool m_isTreemapShown = false;
    std::optional<FileUrl> m_shownFolder;
    std::map<FileUrl, EntryBookmark> m_bookmarks; // of the folders that the way back leads through
    std::optional<EntryBookmark> m_return;        // where the reader was, until the rows are all there
};

} // namespace tallyroom
