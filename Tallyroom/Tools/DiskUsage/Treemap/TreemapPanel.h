#pragma once

#include "Tools/DiskUsage/Treemap/TreemapView.h"

namespace tallyroom {

class TreemapLegend;
class TreemapStatusLine;

/// A map with the line that tells what is pointed at, and the legend of its kinds. Main thread.
class TreemapPanel : public QWidget {
    Q_OBJECT

public:
    /// `selection` must outlive the panel.
    explicit TreemapPanel(const Selection& selection, QWidget* parent = nullptr);

    [[nodiscard]] TreemapView& map() const { return *m_map; }

    /// Another folder is about to be shown.
    void forgetFolder();

private:
    void showPointed();
    void showLegend();

    TreemapView* m_map;
    TreemapStatusLine* m_status;
    TreemapLegend* m_legend;
};

} // namespace tallyroom
