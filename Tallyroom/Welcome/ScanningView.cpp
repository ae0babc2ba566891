#include "Welcome/ScanningView.h"

#include "Controls/Spinner.h"
#include "Layout/Boxes.h"
#include "Theme/Theme.h"

#include <QLabel>

namespace tallyroom {

ScanningView::ScanningView(const QString& message, QWidget* parent)
    : QWidget(parent), m_message(new QLabel{this})
{
    auto* const layout = makeColumn(this, pageMargins, 2 * Theme::gap);
    layout->addStretch();
    layout->addWidget(new Spinner{Theme::controlHeight, this}, 0, Qt::AlignHCenter);
    layout->addWidget(m_message);
    layout->addStretch();
    Theme::style(m_message, Theme::Text::secondary);
    m_message->setAlignment(Qt::AlignCenter);
    m_message->setWordWrap(true);
    setMessage(message);
}

QString ScanningView::message() const
{
    return m_message->text();
}

void ScanningView::setMessage(const QString& message)
{
    m_message->setText(message);
    setAccessibleName(message);
}

} // namespace tallyroom
