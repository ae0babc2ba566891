#include "Controls/CategoryChips.h"

#include "Layout/FlowLayout.h"
#include "Text/NumberText.h"
#include "Theme/SymbolIcon.h"
#include "Theme/Theme.h"

#include <QPushButton>

#include <algorithm>

namespace tallyroom {

CategoryChips::CategoryChips(const std::vector<Chip>& chips, QWidget* parent) : QWidget(parent)
{
    auto* const flow = new FlowLayout(this);
    for (const Chip& chip : chips) {
        auto* const button = new QPushButton(chip.label);
        button->setIcon(SymbolIcon::icon(chip.symbol));
        button->setCheckable(true);
        Theme::style(button, Theme::Button::chip);
        button->setIconSize({Theme::smallIconSize + Theme::gap / 2, Theme::smallIconSize});
        connect(button, &QPushButton::clicked, this, [this, category = chip.category](bool isOn) {
            Q_EMIT chosen(isOn ? std::optional{category} : std::nullopt);
        });
        flow->addWidget(button);
        m_chips[chip.category] = {button, chip.label};
    }
    showButtons();
}

void CategoryChips::showCounts(const CategoryCounts& counts, bool isFinal)
{
    for (auto& [category, chip] : m_chips) {
        const auto found = counts.find(category);
        chip.count = found == counts.end() ? 0 : found->second;
        chip.isOffered = isFinal ? chip.count > 0 : chip.isOffered;
    }
    showButtons();
}

void CategoryChips::showChoice(const std::optional<std::string>& category)
{
    m_choice = category;
    showButtons();
}

void CategoryChips::showButtons()
{
    const auto present = std::ranges::count_if(m_chips, [](const auto& one) { return one.second.isOffered; });
    for (const auto& [category, chip] : m_chips) {
        const bool isChosen = m_choice == category;
        chip.button->setText(QStringLiteral("%1 · %2").arg(chip.label, NumberText::grouped(chip.count)));
        chip.button->setChecked(isChosen);
        // One category alone has nothing to narrow down.
        chip.button->setVisible(isChosen || (chip.isOffered && present > 1));
    }
    setVisible(present > 1 || m_choice.has_value());
}

} // namespace tallyroom
