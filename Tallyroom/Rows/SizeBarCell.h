#pragma once

#include <QColor>
#include <QString>

#include <cstdint>

class QPainter;
class QRect;

namespace tallyroom {

/// A size as a bar across its cell, its text on it. Takes no clicks. Main thread.
struct SizeBarCell {
    std::int64_t sizeBytes = 0;
    /// The filled part, 0 to 1; values outside are drawn as the nearest end.
    double fraction = 0;
    QColor tint;
    /// What is written instead of the size, where it is not the whole truth.
    QString text{};

    /// Draws the bar in the middle of `cell`, over its whole width.
    void paint(QPainter& painter, const QRect& cell) const;
};

} // namespace tallyroom
