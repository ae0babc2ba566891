#include "Rows/EntryRows.h"
#include "Rows/Selection.h"

#include <QApplication>
#include <QKeyEvent>
#include <QScopedValueRollback>

namespace tallyroom {

const OwnKeys<EntryRows::Act>& EntryRows::ownKeys()
{
    static const OwnKeys<Act> keys{
        {QStringLiteral("Entrer dans le dossier, montrer le fichier"),
         {{Qt::Key_Return, Act::enter}, {Qt::Key_Enter, Act::enter}}},
        {QStringLiteral("Cocher ou décocher la ligne"),
         {{Qt::Key_Space, Act::check}, {Qt::CTRL | Qt::Key_Space, Act::check}}},
        {QStringLiteral("Cocher jusqu’à la ligne"), {{Qt::SHIFT | Qt::Key_Space, Act::checkRange}}},
    };
    return keys;
}

std::vector<ToldKeys> EntryRows::keys()
{
    std::vector<ToldKeys> keys = ownKeys().told();
    keys.push_back({QStringLiteral("Aller à la ligne de ce nom"), QStringLiteral("Lettres")});
    return keys;
}

void EntryRows::keyPressEvent(QKeyEvent* event)
{
    m_staysAtFirst = m_staysAtFirst && event->isAutoRepeat();
    const bool isTyping = m_typed.isValid() && m_typed.elapsed() < QApplication::keyboardInputInterval();
    if (event->key() == Qt::Key_Space && isTyping) {
        m_typed.start();
        keyboardSearch(event->text()); // of a name that holds a space
    } else if (event->matches(QKeySequence::SelectAll)) {
        selection().setAll();
    } else if (currentRow() >= 0 && event->matches(QKeySequence::Copy)) {
        if (const auto entry = currentEntry()) {
            Q_EMIT copyPathRequested(*entry);
        }
    } else if (const auto act = ownKeys().find(*event)) {
        take(*act, event->isAutoRepeat());
    } else {
        const QString text = event->text();
        if (!text.isEmpty() && text.at(0).isPrint()) {
            m_typed.start();
        }
        const int previous = currentRow();
        QTableView::keyPressEvent(event);
        if (currentRow() != previous) {
            viewport()->update();
        }
    }
}

void EntryRows::take(Act act, bool isRepeated)
{
    const int row = currentRow();
    if (row < 0) {
        goToFirstOnScreen(); // rows came after the focus: the first key only says where one is
    } else if (act != Act::enter) {
        toggle(row, act == Act::checkRange);
    } else if (!isRepeated) {
        const QScopedValueRollback entering{m_isEntering, true};
        activateRow(row);
    }
}

} // namespace tallyroom
