#pragma once

#include <QDialog>
#include <QString>

#include <cstdint>
#include <optional>

class QHBoxLayout;
class QKeyEvent;
class QLabel;
class QPushButton;
class QVBoxLayout;

namespace tallyroom {

/// The frame of a question before a deletion: a heading, what goes, and a row of buttons that ends with
/// "Annuler". It is destroyed when it closes. The second click of two, and a key that is kept down, were
/// meant for what opened it, and answer nothing. Main thread.
class DeletionQuestion : public QDialog {
    Q_OBJECT

protected:
    DeletionQuestion(const QString& title, QWidget* parent);

    bool eventFilter(QObject* watched, QEvent* event) override;

    /// Adds a paragraph of plain text; the dialog is as wide as its longest line.
    QLabel* addText(const QString& text);

    /// The same, broken into lines.
    QLabel* addWrappedText(const QString& text);

    /// Adds anything else below the texts.
    void addWidget(QWidget* widget);

    /// Adds a button that goes on, before "Annuler". `isFinal`: what it takes cannot come back.
    QPushButton* addChoice(const QString& text, bool isFinal);

    [[nodiscard]] QPushButton* cancelButton() const { return m_cancel; }

    /// Makes `button` the one that Enter takes.
    static void prefer(QPushButton* button);

private:
    /// Whether Enter has been down since before the question.
    [[nodiscard]] bool isOfKeptEnter(const QKeyEvent& event);

    QVBoxLayout* m_texts;
    QHBoxLayout* m_buttons;
    QPushButton* m_cancel;
    std::optional<std::uint64_t> m_enterReleased; // the moment, as events tell it
};

} // namespace tallyroom
