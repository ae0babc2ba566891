#include "Welcome/RecentFolderList.h"

#include "Bridge/FolderPresence.h"
#include "Bridge/Observable.h"
#include "Layout/Boxes.h"
#include "Text/FileUrlText.h"
#include "Text/PlainText.h"
#include "Theme/SymbolIcon.h"

#include <QLabel>
#include <QPainter>
#include <QPushButton>

#include <algorithm>

namespace tallyroom {

namespace {

/// A recent folder as a card that opens it: symbol, name, and its path in a quieter line.
class RecentFolderButton : public QPushButton {
public:
    RecentFolderButton(const FileUrl& location, QWidget* parent)
        : QPushButton(parent), m_name(FileUrlText::display(location.lastPathComponent())),
          m_path(FileUrlText::display(location)), m_location(location)
    {
        Theme::style(this, Theme::Button::row);
        setFixedHeight(Theme::tallRowHeight);
        setToolTip(plainToolTip(m_path));
        setAccessibleName(m_name);
        connect(&FolderPresence::shared(), &FolderPresence::changed, this, [this] { showPresence(); });
        showPresence();
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
                          theme.colour(m_isMissing ? Theme::Colour::secondary : Theme::Colour::accent));
        line.adjust(Theme::iconSize + Theme::gap, 0, 0, 0);
        const int nameHeight = QFontMetrics{theme.body()}.height();
        const int pathHeight = QFontMetrics{theme.small()}.height();
        line.setTop((height() - nameHeight - pathHeight) / 2);
        line.setHeight(nameHeight);
        drawLine(painter, line, m_name, theme.body(),
                 m_isMissing ? Theme::Colour::secondary : Theme::Colour::text);
        line.translate(0, nameHeight);
        line.setHeight(pathHeight);
        drawLine(painter, line, accessibleDescription(), theme.small(), Theme::Colour::secondary);
    }

private:
    void showPresence()
    {
        m_isMissing = FolderPresence::shared().isMissing(m_location);
        setAccessibleDescription(m_isMissing ? QStringLiteral("Introuvable · ") + m_path : m_path);
        update();
    }

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
    FileUrl m_location;
    bool m_isMissing = false;
};

} // namespace

RecentFolderList::RecentFolderList(QWidget* parent) : QWidget(parent)
{
    hide();
}

void RecentFolderList::setRecents(const std::vector<FileUrl>& recents)
{
    // The same ones keep their buttons, and so the focus.
    if (!assignIfChanged(m_recents, recents)) {
        return;
    }
    if (isVisible()) {
        FolderPresence::shared().look(m_recents);
    }
    // A button may be what asks for the new list: it goes once its click is over.
    for (QWidget* const child : findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        child->hide();
        child->deleteLater();
    }
    delete layout();
    setVisible(!recents.empty());
    if (recents.empty()) {
        return;
    }
    auto* const rows = makeColumn(this, {0, 3 * Theme::gap, 0, 0}, Theme::gap - 2);
    auto* const title = new QLabel{QStringLiteral("Récents")};
    Theme::style(title, Theme::Text::section);
    rows->addWidget(title);
    for (std::size_t place = 0; place < std::min(recents.size(), shownCount); ++place) {
        const FileUrl& location = recents[place];
        auto* const button = new RecentFolderButton{location, this};
        connect(button, &QPushButton::clicked, this,
                [this, location] { Q_EMIT requested(FileUrl{location}); });
        rows->addWidget(button);
    }
}

void RecentFolderList::showEvent(QShowEvent* event)
{
    FolderPresence::shared().look(m_recents);
    QWidget::showEvent(event);
}

} // namespace tallyroom
