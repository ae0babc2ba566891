#include "Tools/Frame/EntryActions.h"

#include "Bridge/Desktop.h"
#include "Bridge/Terminal.h"
#include "Controls/Shortcut.h"
#include "Properties/PropertiesDialog.h"
#include "Rows/EntryRows.h"
#include "Rows/Selection.h"

#include <QContextMenuEvent>
#include <QCoreApplication>

#include <algorithm>
#include <utility>
#include <vector>

namespace tallyroom::EntryActions {

namespace {

/// Tells about an entry, or about all that are checked where it is one of several.
void showProperties(QWidget& screen, const EntryRows& rows, const Entry& entry)
{
    std::vector<Entry> entries = rows.selection().checkedEntries();
    if (std::ranges::find(entries, entry.url, &Entry::url) == entries.end()) {
        entries = {entry};
    }
    PropertiesDialog::open(std::move(entries), &screen);
}

void openMenuByKey(const QWidget& screen)
{
    if (QWidget* const focused = screen.focusWidget()) {
        const QPoint middle = focused->rect().center();
        QContextMenuEvent byKey{QContextMenuEvent::Keyboard, middle, focused->mapToGlobal(middle)};
        QCoreApplication::sendEvent(focused, &byKey);
    }
}

void addKeys(QWidget& screen, const EntryRows& rows, const std::function<std::optional<Entry>()>& current)
{
    addShortcut(&screen, Qt::CTRL | Qt::Key_C, QStringLiteral("Copier le chemin"), [&rows, current] {
        const auto entry = current();
        Desktop::copyPaths(entry ? std::vector{*entry} : rows.selection().checkedEntries());
    });
    // The toolkit knows the menu key only.
    addShortcut(&screen, Qt::SHIFT | Qt::Key_F10, QStringLiteral("Ouvrir le menu de la ligne"),
                [&screen] { openMenuByKey(screen); });
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        addShortcut(&screen, Qt::ALT | key, QStringLiteral("Montrer les propriétés"),
                    [&screen, &rows, current] {
                        if (const auto entry = current()) {
                            showProperties(screen, rows, *entry);
                        } else if (const auto checked = rows.selection().checkedEntries(); !checked.empty()) {
                            showProperties(screen, rows, checked.front());
                        }
                    });
    }
}

} // namespace

void install(QWidget& screen, EntryRows& rows, const std::function<std::optional<Entry>()>& current)
{
    QObject::connect(&rows, &EntryRows::revealRequested, &screen,
                     [](const Entry& entry) { Desktop::reveal(entry.url); });
    QObject::connect(&rows, &EntryRows::openRequested, &screen,
                     [](const Entry& entry) { Desktop::open(entry.url); });
    QObject::connect(&rows, &EntryRows::terminalRequested, &screen, [](const Entry& entry) {
        Terminal::openIn(entry.isDirectory ? entry.url : entry.url.parent());
    });
    QObject::connect(&rows, &EntryRows::propertiesRequested, &screen,
                     [&screen, &rows](const Entry& entry) { showProperties(screen, rows, entry); });
    QObject::connect(&rows, &EntryRows::copyPathRequested, &screen,
                     [](const Entry& entry) { Desktop::copyPaths({entry}); });
    addKeys(screen, rows, current);
}

} // namespace tallyroom::EntryActions
