#pragma once

class QWidget;

namespace tallyroom::TabOrder {

/// Moves the keyboard to the next part of `window`, or the one before, as they are seen: along the layouts,
/// and in reading order where no layout holds them. Goes round at the end; false when there is nowhere to go.
/// The toolkit's own order is that in which parts were made, which is another one. Main thread.
bool moveFocus(QWidget& window, bool isForward);

} // namespace tallyroom::TabOrder
