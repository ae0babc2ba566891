#pragma once

#include <QAbstractButton>
#include <QLabel>
#include <QStringList>

namespace tallyroom {

/// The words of all labels that are on show in `screen`.
[[nodiscard]] inline QStringList visibleTexts(const QWidget& screen)
{
    QStringList all;
    for (const QLabel* const label : screen.findChildren<QLabel*>()) {
        if (label->isVisible()) {
            all << label->text();
        }
    }
    return all;
}

/// The button on show with that text or name; null when there is none.
[[nodiscard]] inline QAbstractButton* visibleButton(const QWidget& screen, const QString& text)
{
    for (QAbstractButton* const one : screen.findChildren<QAbstractButton*>()) {
        if (one->isVisible() && (one->text() == text || one->accessibleName() == text)) {
            return one;
        }
    }
    return nullptr;
}

} // namespace tallyroom
