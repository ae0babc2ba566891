#pragma once

#include "Theme/Theme.h"

#include <QBoxLayout>
#include <QMargins>

namespace tallyroom {

inline constexpr QMargins pageMargins{Theme::margin, Theme::margin, Theme::margin, Theme::margin};
inline constexpr QMargins cardMargins{Theme::cardPadding, Theme::cardPadding, Theme::cardPadding,
                                      Theme::cardPadding};

/// Lays out `owner` in a row or a column. Main thread.
template <class Box>
Box* makeBox(QWidget* owner, const QMargins& margins, int spacing)
{
    auto* const box = new Box(owner);
    box->setContentsMargins(margins);
    box->setSpacing(spacing);
    return box;
}

inline QHBoxLayout* makeRow(QWidget* owner, const QMargins& margins = {}, int spacing = Theme::gap)
{
    return makeBox<QHBoxLayout>(owner, margins, spacing);
}

inline QVBoxLayout* makeColumn(QWidget* owner, const QMargins& margins = {}, int spacing = Theme::gap)
{
    return makeBox<QVBoxLayout>(owner, margins, spacing);
}

} // namespace tallyroom
