#include "Deletion/DeletionQuestion.h"

#include "Layout/Boxes.h"
#include "Theme/Theme.h"

#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>

namespace tallyroom {

DeletionQuestion::DeletionQuestion(const QString& title, QWidget* parent)
    : QDialog(parent), m_texts(new QVBoxLayout), m_buttons(new QHBoxLayout),
      m_cancel(new QPushButton(QStringLiteral("Annuler"), this))
{
    setWindowTitle(title);
    setAttribute(Qt::WA_DeleteOnClose);
    auto* const heading = new QLabel(title);
    Theme::style(heading, Theme::Text::title);
    Theme::style(m_cancel, Theme::Button::plain);
    m_cancel->installEventFilter(this);
    connect(m_cancel, &QPushButton::clicked, this, &QDialog::reject);
    m_texts->setSpacing(Theme::gap);
    m_texts->addWidget(heading);
    m_buttons->setSpacing(Theme::gap);
    m_buttons->addStretch(1);
    m_buttons->addWidget(m_cancel);
    auto* const column = makeColumn(this, pageMargins, 2 * Theme::gap);
    column->addLayout(m_texts);
    column->addLayout(m_buttons);
    column->setSizeConstraint(QLayout::SetFixedSize);
}

QLabel* DeletionQuestion::addText(const QString& text)
{
    auto* const label = new QLabel(text);
    Theme::style(label, Theme::Text::body);
    addWidget(label);
    return label;
}

QLabel* DeletionQuestion::addWrappedText(const QString& text)
{
    QLabel* const label = addText(text);
    label->setWordWrap(true);
    return label;
}

void DeletionQuestion::addWidget(QWidget* widget)
{
    m_texts->addWidget(widget);
}

QPushButton* DeletionQuestion::addChoice(const QString& text, bool isFinal)
{
    auto* const button = new QPushButton(text, this);
    button->installEventFilter(this);
    Theme::style(button, isFinal ? Theme::Button::danger : Theme::Button::primary);
    m_buttons->insertWidget(m_buttons->count() - 1, button);
    setTabOrder(button, m_cancel); // which was there first
    return button;
}

/// In a window that has just come the toolkit takes a repeated key for a new one. X tells of such a key that
/// it is released and pressed at the same moment.
bool DeletionQuestion::isOfKeptEnter(const QKeyEvent& event)
{
    if (event.key() != Qt::Key_Return && event.key() != Qt::Key_Enter) {
        return false;
    }
    if (event.type() == QEvent::KeyRelease) {
        m_enterReleased = event.timestamp();
        return false;
    }
    return event.isAutoRepeat() || (event.timestamp() > 0 && event.timestamp() == m_enterReleased);
}

/// An answer closes the question: no button of it is ever clicked twice.
bool DeletionQuestion::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::MouseButtonDblClick) {
        static_cast<QPushButton*>(watched)->setDown(false); // pressed by the event before this one
        return true;
    }
    if (event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease) {
        return isOfKeptEnter(*static_cast<QKeyEvent*>(event));
    }
    return QDialog::eventFilter(watched, event);
}

void DeletionQuestion::prefer(QPushButton* button)
{
    button->setDefault(true);
    button->setFocus();
}

} // namespace tallyroom
