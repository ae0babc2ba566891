#pragma once

#include "Model/FileUrl.h"

#include <QCheckBox>

#include <unordered_set>

namespace tallyroom {

/// A check box that is on exactly when the selection that it was last shown holds its location; a click
/// asks the selection's owner for the change. Main thread.
class SelectionCheckbox : public QCheckBox {
    Q_OBJECT

public:
    /// How a box is drawn, in cells as well.
    struct Look {
        bool isChecked = false;
        bool isEnabled = true;
        bool isHovered = false;
        bool hasFocus = false;
    };

    explicit SelectionCheckbox(FileUrl url, QWidget* parent = nullptr);

    [[nodiscard]] const FileUrl& url() const { return m_url; }

    void showSelection(const std::unordered_set<FileUrl>& selection);

    /// Draws a box in the middle of `rect`.
    static void paintBox(QPainter& painter, const QRect& rect, const Look& look);

    [[nodiscard]] QSize sizeHint() const override;

Q_SIGNALS:
    /// The user switched the box: `url` belongs into the selection, or out of it.
    void checkRequested(const tallyroom::FileUrl& url, bool isChecked);

protected:
    void paintEvent(QPaintEvent* event) override;
    [[nodiscard]] bool hitButton(const QPoint& position) const override;

private:
    FileUrl m_url;
};

} // namespace tallyroom
