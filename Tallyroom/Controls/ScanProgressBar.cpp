#include "Controls/ScanProgressBar.h"

#include "Controls/Spinner.h"
#include "Layout/Boxes.h"
#include "Theme/Theme.h"

#include <QLabel>
#include <QProgressBar>

#include <algorithm>

namespace tallyroom {

namespace {

constexpr int steps = 10'000;

QLabel* secondaryLabel(QWidget* parent)
{
    auto* const label = new QLabel{parent};
    Theme::style(label, Theme::Text::secondary);
    return label;
}

} // namespace

ScanProgressBar::ScanProgressBar(QWidget* parent)
    : QWidget(parent), m_bar(new QProgressBar{this}), m_spinner(new Spinner{Theme::iconSize, this}),
      m_counts(secondaryLabel(this)), m_percentage(secondaryLabel(this))
{
    auto* const line = new QHBoxLayout;
    line->setSpacing(Theme::gap);
    line->addWidget(m_spinner);
    line->addWidget(m_counts);
    line->addStretch();
    line->addWidget(m_percentage);
    auto* const layout = makeColumn(this, {}, Theme::gap / 2);
    layout->addWidget(m_bar);
    layout->addLayout(line);
    m_bar->setRange(0, steps);
    m_bar->setTextVisible(false);
    m_bar->setAccessibleName(QStringLiteral("Analyse en cours"));
    setProgress(0, 0, 0);
}

void ScanProgressBar::setProgress(double fraction, std::int64_t completed, std::int64_t total)
{
    setProgress(QStringLiteral("Analyse en cours… %1/%2").arg(completed).arg(total), fraction);
}

void ScanProgressBar::setProgress(const QString& text, std::optional<double> fraction)
{
    m_counts->setText(text);
    m_spinner->setVisible(!fraction);
    m_bar->setVisible(fraction.has_value());
    m_bar->setValue(static_cast<int>(std::clamp(fraction.value_or(0), 0.0, 1.0) * steps));
    m_percentage->setText(fraction ? QStringLiteral("%1 %").arg(static_cast<std::int64_t>(*fraction * 100))
                                   : QString{});
}

} // namespace tallyroom
