#include "Controls/TellingDialog.h"

#include "Layout/Boxes.h"

#include <QDialogButtonBox>
#include <QPushButton>

namespace tallyroom {

TellingDialog::TellingDialog(const QString& title, QWidget* parent)
    : QDialog(parent), m_column(new QVBoxLayout), m_foot(new QHBoxLayout), m_buttons(new QDialogButtonBox),
      m_close(m_buttons->addButton(QStringLiteral("Fermer"), QDialogButtonBox::RejectRole))
{
    setWindowTitle(title);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    m_column->setSpacing(Theme::gap);
    m_foot->addWidget(m_buttons, 1);
    makeColumn(this, pageMargins, Theme::gap * 2)->addLayout(m_column, 1);
}

void TellingDialog::addFoot()
{
    static_cast<QVBoxLayout*>(layout())->addLayout(m_foot);
}

} // namespace tallyroom
