#pragma once

class QWidget;

namespace tallyroom::TabOrder {

/// Lets Tab go through the parts of `screen` as its layouts set them out, whichever was made first. Parts
/// that no layout holds keep the order among themselves that their owner gave them. For parts that come
/// later their owner has to see to their place. Main thread.
void followLayout(QWidget& screen);

} // namespace tallyroom::TabOrder
