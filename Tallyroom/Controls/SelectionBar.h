#pragma once

#include <QWidget>

#include <cstdint>

class QLabel;
class QPushButton;

namespace tallyroom {

/// The line under a list: the checked items, and what to do with them. Where the room is small two of the
/// buttons are icons: the line stays one. Main thread.
class SelectionBar : public QWidget {
    Q_OBJECT

public:
    explicit SelectionBar(QWidget* parent = nullptr);

    void setSelection(std::int64_t count, std::int64_t bytes);

Q_SIGNALS:
    void selectAllRequested();
    void clearRequested();
    void deleteRequested();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void setUpButtons();
    void measure();
    void fold();
    void showWords(bool areShown);
    void showSymbol();

    bool m_isEmpty = true;
    int m_widthWithWords = 0;
    QLabel* m_symbol;
    QLabel* m_count;
    QLabel* m_size;
    QPushButton* m_selectAll;
    QPushButton* m_clear;
    QPushButton* m_delete;
};

} // namespace tallyroom
