#include "Layout/TabOrder.h"

#include <QHeaderView>
#include <QLayout>
#include <QTableView>

#include <algorithm>
#include <tuple>
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

void collectParts(const QWidget& widget, Stops& stops)
{
    auto parts = widget.findChildren<QWidget*>(QString{}, Qt::FindDirectChildrenOnly);
    std::ranges::stable_sort(parts, {}, [](const QWidget* part) { return std::tuple{part->y(), part->x()}; });
    std::ranges::for_each(parts, [&stops](QWidget* part) { collect(*part, stops); });
}

void add(QWidget& widget, Stops& stops)
{
    if (widget.isEnabled() && (widget.focusPolicy() & Qt::TabFocus) != 0) {
        stops.push_back(&widget);
    }
}

void collect(QWidget& widget, Stops& stops)
{
    if (!widget.isVisible() || widget.isWindow()) {
        return;
    }
    if (const auto* const table = qobject_cast<QTableView*>(&widget)) {
        add(*table->horizontalHeader(), stops);
        add(widget, stops);
        return;
    }
    add(widget, stops);
    if (const QLayout* const layout = widget.layout()) {
        collect(*layout, stops);
    } else {
        collectParts(widget, stops);
    }
}

} // namespace

bool moveFocus(QWidget& window, bool isForward)
{
    Stops stops;
    if (const QLayout* const layout = window.layout()) {
        collect(*layout, stops);
    }
    if (!isForward) {
        std::ranges::reverse(stops);
    }
    const auto current = std::ranges::find(stops, window.focusWidget());
    if (stops.empty() || (stops.size() == 1 && current != stops.end())) {
        return false;
    }
    const bool isLast = current == stops.end() || std::next(current) == stops.end();
    QWidget* const next = isLast ? stops.front() : *std::next(current);
    next->setFocus(isForward ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

} // namespace tallyroom::TabOrder
