#include "Controls/SearchField.h"

#include "Theme/SymbolIcon.h"

#include <QAction>
#include <QKeyEvent>
#include <QPainter>

namespace tallyroom {

SearchField::SearchField(const QString& placeholder, QWidget* parent) : QLineEdit(parent)
{
    setPlaceholderText(placeholder);
    setAccessibleName(placeholder);
    setFixedHeight(Theme::controlHeight);
    setTextMargins(Theme::iconSize + Theme::gap, 0, 0, 0);
    m_clear = addAction(SymbolIcon::icon("xmark", Theme::Colour::secondary), TrailingPosition);
    m_clear->setText(QStringLiteral("Effacer le filtre"));
    m_clear->setToolTip(m_clear->text());
    m_clear->setVisible(false);
    connect(m_clear, &QAction::triggered, this, &QLineEdit::clear);
    connect(this, &QLineEdit::textChanged, this,
            [this](const QString& text) { m_clear->setVisible(!text.isEmpty()); });
}

QSize SearchField::minimumSizeHint() const
{
    const int around = textMargins().left() + 3 * Theme::gap; // the style's frame and padding
    return {around + fontMetrics().horizontalAdvance(placeholderText()),
            QLineEdit::minimumSizeHint().height()};
}

/// The magnifier is drawn: an action would be a button that does nothing, and that screen readers name.
void SearchField::paintEvent(QPaintEvent* event)
{
    QLineEdit::paintEvent(event);
    QPainter painter{this};
    SymbolIcon::paint(painter, {Theme::gap, 0, Theme::iconSize, height()}, "magnifyingglass",
                      Theme::shared().colour(Theme::Colour::secondary));
}

bool SearchField::event(QEvent* event)
{
    // Before it stops a scan, Escape clears what was typed.
    if (event->type() == QEvent::ShortcutOverride && !text().isEmpty() &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        event->accept();
        return true;
    }
    // The toolkit has Ctrl+E go to the end of the line; here it exports what the filter leaves.
    if (event->type() == QEvent::ShortcutOverride &&
        static_cast<QKeyEvent*>(event)->keyCombination() == (Qt::CTRL | Qt::Key_E)) {
        event->ignore();
        return true;
    }
    return QLineEdit::event(event);
}

void SearchField::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape && !text().isEmpty()) {
        clear();
    } else if (event->key() == Qt::Key_Down) {
        Q_EMIT listRequested();
    } else {
        QLineEdit::keyPressEvent(event);
    }
}

} // namespace tallyroom
