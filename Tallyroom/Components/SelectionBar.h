#pragma once

#include <QWidget>

#include <cstdint>

class QLabel;
class QPushButton;

namespace tallyroom {

/// The line under a list: what is checked, and what can be done with it. Main thread.
class SelectionBar : public QWidget {
    Q_OBJECT

public:
    explicit SelectionBar(QWidget* parent = nullptr);

    void setSelection(std::int64_t count, std::int64_t bytes);

Q_SIGNALS:
    void selectAllRequested();
    void clearRequested();
    void deleteRequested();

private:
    void setUpButtons();
    void showSymbol();

    bool m_isEmpty = true;
    QLabel* m_symbol;
    QLabel* m_count;
    QLabel* m_size;
    QPushButton* m_selectAll;
    QPushButton* m_clear;
    QPushButton* m_delete;
};

} // namespace tallyroom
