#include "Shell/Sidebar.h"

#include "Controls/Spinner.h"
#include "Layout/Boxes.h"
#include "Theme/SymbolIcon.h"
#include "Theme/Theme.h"

#include <QLabel>
#include <QListWidget>
#include <QMouseEvent>
#include <QPainter>
#include <QStyledItemDelegate>

namespace tallyroom {

namespace {

constexpr int idRole = Qt::UserRole;
constexpr int symbolRole = Qt::UserRole + 1;
constexpr int inset = Theme::gap + Theme::gap / 4;
constexpr int rowGap = Theme::gap / 4;

/// Draws a tool: symbol and name, in the accent on a wash of it when selected.
class ToolDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& /*option*/,
                                 const QModelIndex& /*index*/) const override
    {
        return {0, Theme::rowHeight + rowGap};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        const Theme& theme = Theme::shared();
        const bool isSelected = option.state.testFlag(QStyle::State_Selected);
        const bool hasFocus = option.state.testFlag(QStyle::State_HasFocus) &&
                              option.state.testFlag(QStyle::State_KeyboardFocusChange);
        const QRect row = option.rect.adjusted(inset, 0, -inset, -rowGap);
        const QColor accent = theme.colour(Theme::Colour::accent);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(hasFocus ? QPen{accent} : QPen{Qt::NoPen});
        if (isSelected) {
            painter->setBrush(theme.wash(accent, Theme::trackOpacity));
        } else if (option.state.testFlag(QStyle::State_MouseOver)) {
            painter->setBrush(theme.colour(Theme::Colour::hover));
        }
        // The ring lies inside of the row: paint beyond it would stay when the ring goes.
        painter->drawRoundedRect(QRectF{row}.adjusted(0.5, 0.5, -0.5, -0.5), Theme::controlRadius,
                                 Theme::controlRadius);
        const QColor ink = isSelected ? accent : theme.colour(Theme::Colour::text);
        const QRect symbol{row.left() + inset, row.top(), Theme::iconSize, row.height()};
        SymbolIcon::paint(*painter, symbol, index.data(symbolRole).toString().toStdString(), ink);
        painter->setPen(ink);
        painter->setFont(isSelected ? theme.strong() : theme.body());
        const QRect name = row.adjusted(2 * inset + Theme::iconSize, 0, -inset, 0);
        painter->drawText(name, Qt::AlignLeft | Qt::AlignVCenter, index.data().toString());
        painter->restore();
    }
};

/// A click beside the tools leaves the one on show.
class ToolList : public QListWidget {
protected:
    void mousePressEvent(QMouseEvent* event) override
    {
        if (indexAt(event->position().toPoint()).isValid()) {
            QListWidget::mousePressEvent(event);
        }
    }
};

} // namespace

Sidebar::Sidebar(const std::vector<ToolDescriptor>& tools, QWidget* parent)
    : QWidget(parent), m_list(new ToolList)
{
    setFixedWidth(Theme::sidebarWidth);
    Theme::style(this, Theme::Surface::side);
    auto* const title = new QLabel(QStringLiteral("Outils"));
    Theme::style(title, Theme::Text::section);
    title->setIndent(inset + Theme::gap);

    m_list->setAccessibleName(title->text());
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setItemDelegate(new ToolDelegate(m_list));
    m_list->setMouseTracking(true);
    m_list->setUniformItemSizes(true);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    Theme::style(m_list, Theme::Surface::side);
    for (const ToolDescriptor& tool : tools) {
        auto* const item = new QListWidgetItem(tool.name, m_list);
        item->setData(idRole, tool.id);
        item->setData(symbolRole, QString::fromStdString(tool.icon));
        auto* const spinner = new Spinner(Theme::smallIconSize, m_list->viewport());
        spinner->hide();
        m_spinners.push_back(spinner);
    }
    auto* const column = makeColumn(this, {0, Theme::gap * 2, 1, Theme::gap}, Theme::gap + Theme::gap / 4);
    column->addWidget(title);
    column->addWidget(m_list, 1);
    setFocusProxy(m_list);
    connect(m_list, &QListWidget::itemSelectionChanged, this, [this] {
        const QList<QListWidgetItem*> items = m_list->selectedItems();
        Q_EMIT selected(items.isEmpty() ? QString{} : items.first()->data(idRole).toString());
    });
    connect(&Theme::shared(), &Theme::changed, m_list->viewport(), qOverload<>(&QWidget::update));
}

void Sidebar::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter{this};
    painter.fillRect(width() - 1, 0, 1, height(), Theme::shared().colour(Theme::Colour::line));
}

void Sidebar::showSelected(const QString& id)
{
    m_list->setCurrentRow(rowOf(id));
}

void Sidebar::showBusy(const QString& id, bool isBusy)
{
    const int row = rowOf(id);
    if (row < 0) {
        return;
    }
    // The rows stand still: there is room for all of them in the smallest window.
    Spinner* const spinner = m_spinners[static_cast<std::size_t>(row)];
    const QRect place = m_list->visualItemRect(m_list->item(row)).adjusted(0, 0, -2 * inset, -rowGap);
    spinner->move(place.right() - spinner->width(), place.center().y() - spinner->height() / 2);
    spinner->setVisible(isBusy);
}

int Sidebar::rowOf(const QString& id) const
{
    for (int row = 0; row < m_list->count(); ++row) {
        if (m_list->item(row)->data(idRole).toString() == id) {
            return row;
        }
    }
    return -1;
}

} // namespace tallyroom
