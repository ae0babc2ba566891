#pragma once

class QColor;
class QPainter;
class QRectF;

namespace tallyroom {

/// Paints `bar` with round ends in `track`, its left part in `fill`: `fraction` of the width, where what lies
/// outside 0 to 1 counts as the nearest end. Leaves the painter as it was. Main thread.
void paintCapsule(QPainter& painter, const QRectF& bar, double fraction, const QColor& track,
                  const QColor& fill);

} // namespace tallyroom
