#pragma once

#include <QCheckBox>

namespace tallyroom {

/// A check box as the lists draw theirs. Main thread.
class CheckBox : public QCheckBox {
    Q_OBJECT

public:
    /// How a box is drawn, in cells as well.
    struct Look {
        bool isChecked = false;
        bool isEnabled = true;
        bool isHovered = false;
        bool hasFocus = false;
        bool isPartial = false; ///< not checked, but a part of what it stands for is
    };

    explicit CheckBox(const QString& text = {}, QWidget* parent = nullptr);

    /// Draws a box in the middle of `rect`.
    static void paintBox(QPainter& painter, const QRect& rect, const Look& look);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    [[nodiscard]] bool hitButton(const QPoint& position) const override;
};

} // namespace tallyroom
