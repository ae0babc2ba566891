#include "Components/ToolWelcome.h"

#include "Bridge/FileUrlText.h"
#include "Components/SymbolIcon.h"
#include "Components/Theme.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tallyroom {

ToolWelcome::ToolWelcome(Content content, QWidget* parent)
    : QScrollArea(parent), m_content(std::move(content))
{
    auto* const page = new QWidget;
    auto* const layout = new QVBoxLayout{page};
    layout->addStretch();
    auto* const title = new QLabel{m_content.title};
    layout->addWidget(title, 0, Qt::AlignHCenter);
    auto* const action = new QPushButton{m_content.actionTitle};
    Theme::dress(action, Theme::Button::primary);
    connect(action, &QPushButton::clicked, this, [this] { Q_EMIT actionRequested(); });
    layout->addWidget(action, 0, Qt::AlignHCenter);
    m_recents = new QWidget;
    m_recentRows = new QVBoxLayout{m_recents};
    layout->addWidget(m_recents);
    layout->addStretch();
    setWidgetResizable(true);
    setWidget(page);
    setRecents({});
}

void ToolWelcome::setRecents(const std::vector<FileUrl>& recents)
{
    m_recents->setVisible(!recents.empty());
}

} // namespace tallyroom
