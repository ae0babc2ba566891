#include "Layout/LayoutNow.h"

#include <QAbstractScrollArea>
#include <QCoreApplication>
#include <QEvent>
#include <QLayout>

namespace tallyroom {

void layOutNow(QWidget* part)
{
    for (; part != nullptr; part = part->parentWidget()) {
        if (auto* const area = qobject_cast<QAbstractScrollArea*>(part)) {
            // Its page has grown or shrunk.
            QEvent request{QEvent::LayoutRequest};
            QCoreApplication::sendEvent(area, &request);
            return;
        }
        if (part->layout() != nullptr) {
            part->layout()->invalidate();
            part->layout()->activate();
        }
    }
}

} // namespace tallyroom
