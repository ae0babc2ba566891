#pragma once

#include "Tools/DiskUsage/FolderNavigatorViewModel.h"

#include <QWidget>

#include <vector>

class QAbstractButton;

namespace tallyroom {

/// The way from the root to the folder on screen: every step but the last is a button. Before it, fainter,
/// lie the folders above the root. Where the room is small steps go into a menu: those above the root first,
/// then from the root on, but for the last two. Main thread.
class Breadcrumb : public QWidget {
    Q_OBJECT

public:
    explicit Breadcrumb(QWidget* parent = nullptr);

    void setItems(std::vector<BreadcrumbItem> items, const std::vector<BreadcrumbItem>& above = {});

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    void selected(const tallyroom::FileUrl& url);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    /// The steps without room: the first ones above the root, and some between.
    struct Hidden {
        std::size_t above = 0;
        std::size_t first = 0;
        std::size_t end = 0;

        [[nodiscard]] bool contains(std::size_t step) const
        {
            return step < above || (step >= first && step < end);
        }

        /// The step that the menu stands for.
        [[nodiscard]] std::size_t place() const { return first < end ? first : 0; }
    };

    void arrange();
    void fillMenu();
    [[nodiscard]] Hidden hiddenSteps() const;
    [[nodiscard]] int widthFrom(std::size_t first) const;
    [[nodiscard]] int widthOf(std::size_t step) const;
    [[nodiscard]] int roomFor(std::size_t step, int room) const;

    std::vector<BreadcrumbItem> m_items;   // those above the root too
    std::size_t m_above = 0;               // how many these are
    std::vector<QAbstractButton*> m_steps; // one an item
    QAbstractButton* m_hiddenSteps;        // "…", with a menu of those that have no room
    std::vector<QRect> m_chevrons;
};

} // namespace tallyroom
