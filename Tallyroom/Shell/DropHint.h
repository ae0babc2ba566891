#pragma once

#include <QWidget>

namespace tallyroom {

/// Lies over a tool's screen while something is dragged over the window, and says where it lands. Takes no
/// mouse and no keys. Main thread.
class DropHint : public QWidget {
    Q_OBJECT

public:
    explicit DropHint(QWidget* parent);

    /// Covers `screen`, a part of the parent, with the words for a drop there.
    void showOver(const QWidget& screen, const QString& words);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_words;
};

} // namespace tallyroom
