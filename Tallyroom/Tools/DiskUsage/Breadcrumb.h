#pragma once

#include "Tools/DiskUsage/FolderNavigatorViewModel.h"

#include <QWidget>

#include <vector>

class QAbstractButton;

namespace tallyroom {

/// The way from the root to the folder on screen: every step but the last is a button. Where the room is
/// small steps go into a menu, from the root on, but for the last two. Main thread.
class Breadcrumb : public QWidget {
    Q_OBJECT

public:
    explicit Breadcrumb(QWidget* parent = nullptr);

    void setItems(std::vector<BreadcrumbItem> items);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    void selected(const tallyroom::FileUrl& url);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    struct Range {
        std::size_t first = 0;
        std::size_t end = 0;
    };

    void arrange();
    void fillMenu();
    [[nodiscard]] Range hiddenSteps() const;
    [[nodiscard]] int widthOf(std::size_t step) const;
    [[nodiscard]] int roomFor(std::size_t step, int room) const;

    std::vector<BreadcrumbItem> m_items;
    std::vector<QAbstractButton*> m_steps; // one an item
    QAbstractButton* m_hiddenSteps;        // "…", with a menu of those that have no room
    std::vector<QRect> m_chevrons;
};

} // namespace tallyroom
