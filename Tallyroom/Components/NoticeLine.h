#pragma once

#include <QWidget>

class QLabel;

namespace tallyroom {

/// A sentence that the reader must not miss, with a sign before it; hidden while there is none. Main thread.
class NoticeLine : public QWidget {
    Q_OBJECT

public:
    explicit NoticeLine(QWidget* parent = nullptr);

    void setText(const QString& text);

private:
    void showColours();

    QLabel* m_symbol;
    QLabel* m_text;
};

} // namespace tallyroom
