#pragma once

#include <QWidget>

#include <string>

class QHBoxLayout;
class QLabel;
class QPushButton;

namespace tallyroom {

/// A page that stands where a list has nothing to show: a symbol, a sentence, and the ways on. Main thread.
class MessagePage : public QWidget {
    Q_OBJECT

public:
    explicit MessagePage(std::string symbol, QWidget* parent = nullptr);

    /// `title` may be empty.
    void setText(const QString& title, const QString& message);

    /// Adds a way on; the first one is the prominent one.
    QPushButton* addAction(const QString& text);

private:
    void showSymbol();

    std::string m_symbolName;
    QLabel* m_symbol;
    QLabel* m_title;
    QLabel* m_message;
    QHBoxLayout* m_actions;
};

} // namespace tallyroom
