#include "Tools/Frame/UnreadList.h"

#include "Bridge/Desktop.h"
#include "Controls/Shortcut.h"
#include "Layout/Boxes.h"
#include "Text/FileUrlText.h"
#include "Text/NumberText.h"
#include "Text/PlainText.h"
#include "Text/UnreadText.h"
#include "Theme/Theme.h"

#include <QClipboard>
#include <QDialogButtonBox>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>

#include <algorithm>
#include <utility>

namespace tallyroom {

UnreadList::UnreadList(SharedUnreadPlaces unread, QWidget* parent)
    : TellingDialog(UnreadText::count(unread), parent), m_unread(std::move(unread)), m_list(new QTreeWidget),
      m_refusal(new QLabel)
{
    auto* const heading = new QLabel(windowTitle());
    Theme::style(heading, Theme::Text::title);
    heading->setMinimumHeight(Theme::headerHeight); // the accent of a capital reaches above the line
    auto* const remark = new QLabel;
    Theme::style(remark, Theme::Text::secondary);
    remark->setWordWrap(true);
    QString text = QStringLiteral("Ce qu’ils contiennent n’est pas compté : les tailles sont des minimums.");
    if (const auto others = m_unread->count - std::ssize(m_unread->places); others > 0) {
        text += QStringLiteral(" %1 ne sont pas dans cette liste.")
                    .arg(NumberText::plural(others, QStringLiteral("autre")));
    }
    remark->setText(text);
    m_list->setAccessibleName(windowTitle());
    fillList();
    m_refusal->setTextFormat(Qt::PlainText);
    m_refusal->setWordWrap(true);
    m_refusal->hide();
    connect(&DesktopRefusals::shared(), &DesktopRefusals::refused, this, [this](const QString& message) {
        m_refusal->setText(message);
        m_refusal->show();
    });
    column().addWidget(heading);
    column().addWidget(remark);
    column().addWidget(m_list, 1);
    column().addWidget(m_refusal);
    addButtons();
    addFoot();
    addShortcut(this, Qt::CTRL | Qt::Key_C, QStringLiteral("Copier les chemins"), [this] { copyPaths(); });
}

void UnreadList::open(const SharedUnreadPlaces& unread, QWidget* parent)
{
    if (unread != nullptr) {
        auto* const list = new UnreadList(unread, parent);
        list->setAttribute(Qt::WA_DeleteOnClose);
        static_cast<QDialog*>(list)->open();
    }
}

void UnreadList::fillList()
{
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->setTextElideMode(Qt::ElideMiddle);
    m_list->setHeaderLabels({QStringLiteral("Emplacement"), QStringLiteral("Raison")});
    QList<QTreeWidgetItem*> rows;
    for (const UnreadPlace& place : m_unread->places) {
        auto* const row =
            new QTreeWidgetItem({FileUrlText::displayFromHome(place.url), toSentence(place.error.message())});
        row->setToolTip(0, plainToolTip(row->text(0)));
        rows.append(row);
    }
    m_list->addTopLevelItems(rows);
    m_list->header()->setStretchLastSection(false);
    m_list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_list->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    if (!rows.isEmpty()) {
        m_list->setCurrentItem(rows.front());
    }
}

void UnreadList::addButtons()
{
    closeButton().setAutoDefault(false);
    const auto add = [this](const QString& text) {
        auto* const button = buttons().addButton(text, QDialogButtonBox::ActionRole);
        button->setAutoDefault(false);
        return button;
    };
    const auto* const show = add(QStringLiteral("Révéler dans le gestionnaire de fichiers"));
    const auto* const copy = add(QStringLiteral("Copier les chemins"));
    connect(show, &QPushButton::clicked, this, &UnreadList::reveal);
    connect(copy, &QPushButton::clicked, this, &UnreadList::copyPaths);
}

/// The selected places from the top.
std::vector<FileUrl> UnreadList::chosen() const
{
    std::vector<FileUrl> urls;
    for (int row = 0; row < m_list->topLevelItemCount(); ++row) {
        if (m_list->topLevelItem(row)->isSelected()) {
            urls.push_back(m_unread->places[static_cast<std::size_t>(row)].url);
        }
    }
    return urls;
}

/// The selected ones; all where none is.
void UnreadList::copyPaths() const
{
    std::vector<FileUrl> urls = chosen();
    if (urls.empty()) {
        urls.resize(m_unread->places.size());
        std::ranges::transform(m_unread->places, urls.begin(), &UnreadPlace::url);
    }
    QStringList paths;
    std::ranges::transform(urls, std::back_inserter(paths),
                           [](const FileUrl& url) { return FileUrlText::toFileName(url); });
    QGuiApplication::clipboard()->setText(paths.join(QLatin1Char{'\n'}));
}

void UnreadList::reveal() const
{
    if (const std::vector<FileUrl> urls = chosen(); !urls.empty()) {
        Desktop::reveal(urls.front());
    }
}

QSize UnreadList::sizeHint() const
{
    return {Theme::failureListWidth, Theme::failureListHeight};
}

} // namespace tallyroom
