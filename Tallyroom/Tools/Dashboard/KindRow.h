#pragma once

#include "Tools/Dashboard/KindShare.h"

#include <QPushButton>

#include <cstdint>

namespace tallyroom {

/// A kind of files as a line: symbol and name, how many files, which share, and the size as a bar. Has two
/// lines where the window is narrow. A click, or Enter on it, leads to the largest files of the kind. Main
/// thread.
class KindRow : public QPushButton {
    Q_OBJECT

public:
    struct Content {
        KindShare kind;
        std::int64_t largest = 0; ///< the bytes that a full bar stands for
        bool isLast = false;      ///< nothing follows that a line would part it from
    };

    explicit KindRow(const Content& content, QWidget* parent = nullptr);

    [[nodiscard]] const Content& content() const { return m_content; }

    [[nodiscard]] bool hasHeightForWidth() const override { return true; }

    [[nodiscard]] int heightForWidth(int width) const override;
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    [[nodiscard]] bool isNarrow() const;
    void paintName(QPainter& painter, const QRect& room) const;

    Content m_content;
};

} // namespace tallyroom
