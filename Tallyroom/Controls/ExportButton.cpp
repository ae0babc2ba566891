#include "Controls/ExportButton.h"

#include "Theme/SymbolIcon.h"

namespace tallyroom {

ExportButton::ExportButton(QWidget* parent) : QPushButton(QStringLiteral("Exporter"), parent)
{
    Theme::style(this, Theme::Button::plain);
    setIcon(SymbolIcon::icon("square.and.arrow.up"));
    setEntryCount(0);
}

void ExportButton::setEntryCount(std::size_t count)
{
    setEnabled(count > 0);
}

} // namespace tallyroom
