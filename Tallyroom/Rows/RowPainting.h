#pragma once

#include "Rows/EntryTableStyle.h"

#include <vector>

class QModelIndex;
class QPainter;
class QRect;

namespace tallyroom {

class EntryRows;

/// What the rows of all lists are drawn with. Main thread.
namespace RowPainting {

/// The row background when neither hovered nor current.
enum class Ground { striped, plain, section };

/// The ground of a cell, as the row is current, under the mouse, or neither.
void paintGround(QPainter& painter, const QRect& cell, const QModelIndex& index, const EntryRows& view,
                 Ground ground);

/// Draws the badges from `left` on; what does not fit into the line is cut short with an ellipsis.
void paintBadges(QPainter& painter, const QRect& line, int left, const std::vector<EntryBadge>& badges);

/// The room that badges take, with the gap after each.
[[nodiscard]] int badgesWidth(const std::vector<EntryBadge>& badges);

} // namespace RowPainting

} // namespace tallyroom
