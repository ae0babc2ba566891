#include "Components/TabOrder.h"

#include <QHeaderView>
#include <QLayout>
#include <QTableView>

#include <vector>

namespace tallyroom::TabOrder {

namespace {

using Stops = std::vector<QWidget*>;

void collect(QWidget& widget, Stops& stops);

void collect(const QLayout& layout, Stops& stops)
{
    for (int index = 0; index < layout.count(); ++index) {
        QLayoutItem* const item = layout.itemAt(index);
        if (QWidget* const widget = item->widget()) {
            collect(*widget, stops);
        } else if (const QLayout* const inner = item->layout()) {
            collect(*inner, stops);
        }
    }
}

bool isStop(const QWidget& widget)
{
    return (widget.focusPolicy() & Qt::TabFocus) != 0;
}

void collect(QWidget& widget, Stops& stops)
{
    if (auto* const table = qobject_cast<QTableView*>(&widget); table && isStop(*table->horizontalHeader())) {
        stops.push_back(table->horizontalHeader());
        stops.push_back(table);
        return;
    }
    if (isStop(widget)) {
        stops.push_back(&widget);
    }
    if (const QLayout* const layout = widget.layout()) {
        collect(*layout, stops);
        return;
    }
    for (QWidget* part = widget.nextInFocusChain(); part != &widget; part = part->nextInFocusChain()) {
        if (isStop(*part) && widget.isAncestorOf(part)) {
            stops.push_back(part);
        }
    }
}

} // namespace

void followLayout(QWidget& screen)
{
    Stops stops;
    collect(screen, stops);
    for (std::size_t index = 1; index < stops.size(); ++index) {
        QWidget::setTabOrder(stops[index - 1], stops[index]);
    }
}

} // namespace tallyroom::TabOrder
