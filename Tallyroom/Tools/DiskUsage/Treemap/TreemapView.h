#pragma once

#include "Controls/OwnKeys.h"
#include "Tools/DiskUsage/Treemap/TreemapCanvas.h"

namespace tallyroom {

/// A map under the user's hands. A click makes a tile the current one; with Ctrl, or on the tile's box, it
/// checks; a double click enters or reveals. The wheel zooms, a drag moves. The keys do the same: arrows go
/// among what one folder holds, page down and up into a folder's tiles and out of them. Main thread.
class TreemapView : public TreemapCanvas {
    Q_OBJECT

public:
    /// `selection` must outlive the view.
    explicit TreemapView(const Selection& selection, QWidget* parent = nullptr)
        : TreemapCanvas(selection, parent)
    {}

    /// What its keys do.
    [[nodiscard]] static std::vector<ToldKeys> keys();

protected:
    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    struct Press {
        FileUrl url;
        bool checks = false; ///< on the box, or with Ctrl
    };

    [[nodiscard]] bool isOnCheckBox(const QPointF& position) const;
    enum class Act { left, right, up, down, first, last, check, enter, goIn, goOut, closer, farther, fit };

    [[nodiscard]] static const OwnKeys<Act>& ownKeys();
    [[nodiscard]] bool take(Act act);
    [[nodiscard]] bool goToSibling(Act act);
    [[nodiscard]] bool changeLevel(Act act);
    [[nodiscard]] bool actOnCurrent(Act act);
    void zoomFromCurrent(Act act);

    std::optional<Press> m_pressed;
    std::optional<QPointF> m_grip; // where a map that is larger than the window is held
    bool m_isDragged = false;
};

} // namespace tallyroom
