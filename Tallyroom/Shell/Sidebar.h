#pragma once

#include "Shell/ToolDescriptor.h"

#include <QWidget>

#include <vector>

class QListWidget;

namespace tallyroom {

class Spinner;

/// The list of tools on the left of the window. Main thread.
class Sidebar : public QWidget {
    Q_OBJECT

public:
    explicit Sidebar(const std::vector<ToolDescriptor>& tools, QWidget* parent = nullptr);

    /// Shows the tool as the selected one; none for an id that no tool has.
    void showSelected(const QString& id);

    /// Shows whether the tool is at work.
    void showBusy(const QString& id, bool isBusy);

Q_SIGNALS:
    /// The user chose a tool, or none ("").
    void selected(const QString& id);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    [[nodiscard]] int rowOf(const QString& id) const;

    QListWidget* m_list;
    std::vector<Spinner*> m_spinners; // one a row
};

} // namespace tallyroom
