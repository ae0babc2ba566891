#pragma once

#include <QWidget>

#include <cstdint>

class QBoxLayout;
class QLabel;
class QPushButton;

namespace tallyroom {

/// The line under a list: what is checked, and what can be done with it. Main thread.
class SelectionBar : public QWidget {
    Q_OBJECT

public:
    explicit SelectionBar(QWidget* parent = nullptr);

    void setSelection(std::int64_t count, std::int64_t bytes);

    /// Narrow bars put the buttons on a line of their own.
    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    void selectAllRequested();
    void clearRequested();
    void deleteRequested();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void setUpButtons();
    void fold();
    void showSymbol();

    bool m_isEmpty = true;
    QBoxLayout* m_lines = nullptr;
    QLabel* m_symbol;
    QLabel* m_count;
    QLabel* m_size;
    QPushButton* m_selectAll;
    QPushButton* m_clear;
    QPushButton* m_delete;
};

} // namespace tallyroom
