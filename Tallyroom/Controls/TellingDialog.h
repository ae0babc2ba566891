#pragma once

#include <QDialog>

class QDialogButtonBox;
class QHBoxLayout;
class QPushButton;
class QVBoxLayout;

namespace tallyroom {

/// A dialog that asks nothing: what it has to tell, and "Fermer" below. Main thread.
class TellingDialog : public QDialog {
    Q_OBJECT

protected:
    TellingDialog(const QString& title, QWidget* parent);

    /// What it tells, from the top.
    [[nodiscard]] QVBoxLayout& column() { return *m_column; }

    /// Called once what it tells is there: the keyboard goes there first.
    void addFoot();

    /// The line of the buttons, which stand at its end.
    [[nodiscard]] QHBoxLayout& foot() { return *m_foot; }

    /// What else it offers.
    [[nodiscard]] QDialogButtonBox& buttons() { return *m_buttons; }

    [[nodiscard]] QPushButton& closeButton() { return *m_close; }

private:
    QVBoxLayout* m_column;
    QHBoxLayout* m_foot;
    QDialogButtonBox* m_buttons;
    QPushButton* m_close;
};

} // namespace tallyroom
