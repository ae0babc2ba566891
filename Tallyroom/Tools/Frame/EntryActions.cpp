#include "Tools/Frame/EntryActions.h"

#include "Bridge/Desktop.h"
#include "Bridge/Terminal.h"
#include "Controls/Shortcut.h"
#include "Properties/PropertiesDialog.h"
#include "Rows/EntryRows.h"
#include "Rows/Selection.h"
#include "Settings/ScanRules.h"
#include "Text/FileUrlText.h"
#include "Theme/SymbolIcon.h"

#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QMenu>

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

/// Excludes an entry, or of a file the folder that holds it, or takes it back.
void addExclusion(QMenu& menu, const Entry& entry, const Subject& subject)
{
    ScanRules& rules = ScanRules::shared();
    const FileUrl folder = entry.isDirectory ? entry.url : entry.url.parent();
    const std::string name{folder.lastPathComponent()};
    const QString shown = FileUrlText::display(name);
    const auto add = [&](const QString& text, const std::function<void()>& act) {
        QObject::connect(menu.addAction(SymbolIcon::icon("minus.circle"), text), &QAction::triggered, &rules,
                         act);
    };
    if (!entry.has(EntryMark::excluded) || !entry.has(EntryMark::unreadable)) {
        // The folder that was scanned is never left out.
        if (folder != subject.listedFolder()) {
            add(entry.isDirectory ? QStringLiteral("Exclure des analyses")
                                  : QStringLiteral("Exclure « %1 » des analyses").arg(shown),
                [&rules, folder, tell = subject.tell, place = FileUrlText::displayFromHome(folder)] {
                    rules.exclude(folder);
                    tell(QStringLiteral("« %1 » est exclu des analyses ; les préférences le montrent.")
                             .arg(place));
                });
        }
    } else if (rules.isNameExcluded(name)) {
        add(QStringLiteral("Ne plus exclure les dossiers « %1 »").arg(shown),
            [&rules, name] { rules.includeName(name); });
    } else if (rules.isFolderExcluded(name)) {
        add(QStringLiteral("Ne plus exclure des analyses"), [&rules, folder] { rules.include(folder); });
    }
}

} // namespace

void install(QWidget& screen, EntryRows& rows, const Subject& subject)
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
    QObject::connect(&rows, &EntryRows::menuMade, &screen,
                     [subject](QMenu* menu, const Entry& entry) { addExclusion(*menu, entry, subject); });
    addKeys(screen, rows, subject.current);
}

} // namespace tallyroom::EntryActions
