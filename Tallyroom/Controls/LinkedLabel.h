#pragma once

#include <QLabel>

namespace tallyroom {

/// A line of plain text that may end in a link. Main thread.
class LinkedLabel : public QLabel {
    Q_OBJECT

public:
    explicit LinkedLabel(QWidget* parent = nullptr);

    /// Both are shown letter by letter, whatever they hold; no link where it is empty.
    void setContent(const QString& text, const QString& link);

Q_SIGNALS:
    void linkRequested();

protected:
    void focusInEvent(QFocusEvent* event) override;

private:
    void showContent();

    QString m_text;
    QString m_link;
};

} // namespace tallyroom
