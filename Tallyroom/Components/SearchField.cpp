#include "Components/SearchField.h"

#include "Components/SymbolIcon.h"

#include <QAction>
#include <QKeyEvent>

namespace tallyroom {

SearchField::SearchField(const QString& placeholder, QWidget* parent) : QLineEdit(parent)
{
    setPlaceholderText(placeholder);
    setAccessibleName(placeholder);
    setFixedHeight(Theme::controlHeight);
    addAction(SymbolIcon::icon("magnifyingglass", Theme::Colour::secondary), LeadingPosition);
    m_clear = addAction(SymbolIcon::icon("xmark", Theme::Colour::secondary), TrailingPosition);
    m_clear->setText(QStringLiteral("Effacer le filtre"));
    m_clear->setToolTip(m_clear->text());
    m_clear->setVisible(false);
    connect(m_clear, &QAction::triggered, this, &QLineEdit::clear);
    connect(this, &QLineEdit::textChanged, this,
            [this](const QString& text) { m_clear->setVisible(!text.isEmpty()); });
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
