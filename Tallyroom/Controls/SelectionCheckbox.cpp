#include "Controls/SelectionCheckbox.h"

namespace tallyroom {

SelectionCheckbox::SelectionCheckbox(FileUrl url, QWidget* parent)
    : CheckBox({}, parent), m_url(std::move(url))
{
    connect(this, &QCheckBox::clicked, this, [this](bool isOn) { Q_EMIT checkRequested(m_url, isOn); });
}

void SelectionCheckbox::showSelection(const UrlSet& selection)
{
    setChecked(selection.contains(m_url));
}

} // namespace tallyroom
