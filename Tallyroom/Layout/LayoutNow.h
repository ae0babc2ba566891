#pragma once

class QWidget;

namespace tallyroom {

/// Lays out everything around `part`, up to the window or the viewport that it lies in. Left to itself a new
/// height comes up one level an event, and the parts overlap meanwhile. Main thread.
void layOutNow(QWidget* part);

} // namespace tallyroom
