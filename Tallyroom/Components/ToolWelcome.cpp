#include "Components/ToolWelcome.h"

#include "Bridge/FileUrlText.h"
#include "Components/SymbolIcon.h"

#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace tallyroom {

namespace {

/// A recent folder as a card that opens it: symbol, name, and its path in a quieter line.
class RecentFolderButton : public QPushButton {
public:
    RecentFolderButton(const FileUrl& location, QWidget* parent)
        : QPushButton(parent), m_name(FileUrlText::display(location.lastPathComponent())),
          m_path(FileUrlText::display(location))
    {
        Theme::dress(this, Theme::Button::row);
        setFixedHeight(Theme::tallRowHeight);
        setToolTip(m_path.toHtmlEscaped());
        setAccessibleName(m_name);
        setAccessibleDescription(m_path);
    }

    [[nodiscard]] QSize sizeHint() const override { return {Theme::recentsWidth, Theme::tallRowHeight}; }

    [[nodiscard]] QSize minimumSizeHint() const override { return {0, Theme::tallRowHeight}; }

protected:
    void paintEvent(QPaintEvent* event) override
    {
        QPushButton::paintEvent(event);
        const Theme& theme = Theme::shared();
        QPainter painter{this};
        QRect line = rect().adjusted(Theme::gap + 2, 0, -Theme::gap - 2, 0);
        SymbolIcon::paint(painter, {line.left(), 0, Theme::iconSize, height()}, "folder",
                          theme.colour(Theme::Colour::accent));
        line.adjust(Theme::iconSize + Theme::gap, 0, 0, 0);
        const int nameHeight = QFontMetrics{theme.body()}.height();
        const int pathHeight = QFontMetrics{theme.small()}.height();
        line.setTop((height() - nameHeight - pathHeight) / 2);
        line.setHeight(nameHeight);
        drawLine(painter, line, m_name, theme.body(), Theme::Colour::text);
        line.translate(0, nameHeight);
        line.setHeight(pathHeight);
        drawLine(painter, line, m_path, theme.small(), Theme::Colour::secondary);
    }

private:
    static void drawLine(QPainter& painter, const QRect& line, const QString& text, const QFont& font,
                         Theme::Colour colour)
    {
        painter.setFont(font);
        painter.setPen(Theme::shared().colour(colour));
        painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                         painter.fontMetrics().elidedText(text, Qt::ElideMiddle, line.width()));
    }

    QString m_name;
    QString m_path;
};

QLabel* addCentredText(QVBoxLayout& column, const QString& text, Theme::Text look)
{
    auto* const label = new QLabel{text};
    label->setTextFormat(Qt::PlainText);
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    Theme::dress(label, look);
    column.addWidget(label);
    return label;
}

} // namespace

ToolWelcome::ToolWelcome(Content content, QWidget* parent)
    : QScrollArea(parent), m_content(std::move(content))
{
    auto* const column = new QWidget;
    column->setMaximumWidth(Theme::recentsWidth);
    auto* const lines = new QVBoxLayout{column};
    lines->setContentsMargins({});
    lines->setSpacing(Theme::gap);
    addIntroduction(*lines);
    addHint(*lines);
    addAction(*lines);
    m_recents = new QWidget;
    lines->addWidget(m_recents);

    auto* const page = new QWidget;
    auto* const middle = new QHBoxLayout;
    middle->addStretch(1);
    middle->addWidget(column, 1000); // as wide as it may be, what is left goes to both sides
    middle->addStretch(1);
    auto* const layout = new QVBoxLayout{page};
    layout->setContentsMargins(Theme::margin, Theme::margin, Theme::margin, Theme::margin);
    layout->addStretch(2);
    layout->addLayout(middle);
    layout->addStretch(3);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWidget(page);
    Theme::dress(page, Theme::Surface::window);
    Theme::dress(this, Theme::Surface::window);
    setAccessibleName(m_content.title);
    connect(&Theme::shared(), &Theme::changed, this, &ToolWelcome::showSymbols);
    showSymbols();
    setRecents({});
}

void ToolWelcome::addIntroduction(QVBoxLayout& column)
{
    m_icon = new QLabel;
    m_icon->setFixedSize(Theme::welcomeCircle, Theme::welcomeCircle);
    column.addWidget(m_icon, 0, Qt::AlignHCenter);
    column.addSpacing(Theme::gap);
    addCentredText(column, m_content.title, Theme::Text::heading);
    QLabel* const message = addCentredText(column, m_content.message, Theme::Text::secondary);
    // The column is wider than the message may be.
    constexpr int inset = (Theme::recentsWidth - Theme::messageWidth) / 2;
    message->setMaximumWidth(Theme::recentsWidth);
    message->setContentsMargins(inset, 0, inset, 0);
}

void ToolWelcome::addHint(QVBoxLayout& column)
{
    if (!m_content.hint) {
        return;
    }
    m_hintIcon = new QLabel;
    auto* const hint = new QLabel{*m_content.hint};
    hint->setTextFormat(Qt::PlainText);
    hint->setWordWrap(true);
    Theme::dress(hint, Theme::Text::secondary);
    // Beside its symbol the hint is as wide as its text, and wraps only where that has no room.
    const int wanted = QFontMetrics{Theme::shared().body()}.horizontalAdvance(*m_content.hint) + Theme::gap;
    hint->setMaximumWidth(std::min(wanted, Theme::messageWidth));
    auto* const line = new QHBoxLayout;
    line->setSpacing(Theme::gap);
    line->addStretch(1);
    line->addWidget(m_hintIcon, 0, Qt::AlignTop);
    line->addWidget(hint, 1000);
    line->addStretch(1);
    column.addSpacing(Theme::gap / 2);
    column.addLayout(line);
}

void ToolWelcome::addAction(QVBoxLayout& column)
{
    auto* const action = new QPushButton{m_content.actionTitle};
    Theme::dress(action, Theme::Button::prominent);
    connect(action, &QPushButton::clicked, this, [this] { Q_EMIT actionRequested(); });
    column.addSpacing(Theme::gap);
    column.addWidget(action, 0, Qt::AlignHCenter);
    setFocusProxy(action);
}

void ToolWelcome::showSymbols()
{
    const Theme& theme = Theme::shared();
    const QColor accent = m_content.accent.isValid() ? m_content.accent : theme.colour(Theme::Colour::accent);
    const qreal scale = devicePixelRatioF();
    QPixmap circle{QSize{Theme::welcomeCircle, Theme::welcomeCircle} * scale};
    circle.setDevicePixelRatio(scale);
    circle.fill(Qt::transparent);
    QPainter painter{&circle};
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.wash(accent, Theme::trackOpacity));
    painter.drawEllipse(0, 0, Theme::welcomeCircle, Theme::welcomeCircle);
    SymbolIcon::paint(painter, m_icon->rect(), m_content.icon, accent, Theme::welcomeIconSize);
    painter.end();
    m_icon->setPixmap(circle);
    if (m_hintIcon != nullptr) {
        m_hintIcon->setPixmap(
            SymbolIcon::pixmap("lightbulb", theme.colour(Theme::Colour::secondary), Theme::iconSize, scale));
    }
}

void ToolWelcome::setRecents(const std::vector<FileUrl>& recents)
{
    // A button may be what asks for the new list: it goes once its click is over.
    for (QWidget* const child : m_recents->findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        child->hide();
        child->deleteLater();
    }
    delete m_recents->layout();
    m_recents->setVisible(!recents.empty());
    if (!recents.empty()) {
        addRecents(recents);
    }
    // At once: event by event the new heights would come up one level a frame, and the rows overlap
    // meanwhile.
    for (QWidget* part = m_recents; part != viewport(); part = part->parentWidget()) {
        if (part->layout() != nullptr) {
            part->layout()->invalidate();
            part->layout()->activate();
        }
    }
}

void ToolWelcome::addRecents(const std::vector<FileUrl>& recents)
{
    auto* const rows = new QVBoxLayout{m_recents};
    rows->setContentsMargins(0, 3 * Theme::gap, 0, 0);
    rows->setSpacing(Theme::gap - 2);
    auto* const title = new QLabel{QStringLiteral("Récents")};
    Theme::dress(title, Theme::Text::section);
    rows->addWidget(title);
    for (std::size_t place = 0; place < std::min(recents.size(), shownRecents); ++place) {
        const FileUrl& location = recents[place];
        auto* const button = new RecentFolderButton{location, m_recents};
        connect(button, &QPushButton::clicked, this,
                [this, location] { Q_EMIT recentRequested(FileUrl{location}); });
        rows->addWidget(button);
    }
}

} // namespace tallyroom
