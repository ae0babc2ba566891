#pragma once

#include "Tools/DiskUsage/FolderNavigatorViewModel.h"

#include <QWidget>

#include <vector>

class QAbstractButton;

namespace tallyroom {

/// The way from the root to the folder on screen: every step but the last is a button. Where the room is
/// small the middle steps go into a menu, the last one is cut short. Main thread.
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
    void arrange();
    void fillMenu();
    [[nodiscard]] int firstVisible() const;

    std::vector<BreadcrumbItem> m_items;
    std::vector<QAbstractButton*> m_steps; // one an item
    QAbstractButton* m_hiddenSteps;        // "…", with a menu of those that have no room
    std::vector<QRect> m_chevrons;
};

} // namespace tallyroom
