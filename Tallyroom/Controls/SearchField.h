#pragma once

#include <QLineEdit>

namespace tallyroom {

/// A field that filters the list beside it: magnifier, placeholder, clear button. Escape clears it; the down
/// arrow hands the keyboard to the list. Main thread.
class SearchField : public QLineEdit {
    Q_OBJECT

public:
    /// `placeholder` is the accessible name too.
    explicit SearchField(const QString& placeholder, QWidget* parent = nullptr);

    /// Wide enough for the placeholder.
    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// The reader goes on to the list.
    void listRequested();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QAction* m_clear;
};

} // namespace tallyroom
