#pragma once

#include <QWidget>

class QLabel;
class QPushButton;

namespace tallyroom {

/// A sentence that the reader must not miss, with a sign before it and maybe a way on; hidden while there is
/// none. Main thread.
class NoticeLine : public QWidget {
    Q_OBJECT

public:
    explicit NoticeLine(QWidget* parent = nullptr);

    /// `action` is the text of a button; none where it is empty.
    void setText(const QString& text, const QString& action = {});

Q_SIGNALS:
    void actionRequested();

private:
    void showColours();

    QLabel* m_symbol;
    QLabel* m_text;
    QPushButton* m_action;
};

} // namespace tallyroom
