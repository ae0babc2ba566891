#include "Tools/Frame/FolderButton.h"

#include "Bridge/FolderPresence.h"
#include "Settings/RecentFolders.h"
#include "Text/FileUrlText.h"
#include "Theme/SymbolIcon.h"

#include <QMenu>

#include <algorithm>

namespace tallyroom {

FolderButton::FolderButton(QWidget* parent) : MenuButton(parent)
{
    Theme::style(this, Theme::Button::icon);
    setIcon(SymbolIcon::icon("folder"));
    setAccessibleName(QStringLiteral("Changer de dossier"));
    setToolTip(accessibleName());
    connect(menu(), &QMenu::aboutToShow, this, &FolderButton::fillMenu);
}

void FolderButton::fillMenu()
{
    menu()->clear();
    menu()->addAction(SymbolIcon::icon("folder"), QStringLiteral("Choisir un dossier…\tCtrl+O"), this,
                      &FolderButton::folderRequested);
    const std::vector<FileUrl>& recents = RecentFolders::shared().urls();
    if (recents.empty()) {
        return;
    }
    menu()->addSeparator();
    std::ranges::for_each(recents, [this](const FileUrl& folder) { addRecent(folder); });
    FolderPresence::shared().look(recents);
}

void FolderButton::addRecent(const FileUrl& folder)
{
    // A menu takes "&" for a mark of its own.
    const QString name = FileUrlText::displayFromHome(folder).replace(QLatin1Char{'&'}, QStringLiteral("&&"));
    auto* const action = menu()->addAction(SymbolIcon::icon("clock"), name);
    const auto show = [action, name, folder] {
        action->setText(FolderPresence::shared().isMissing(folder) ? name + QStringLiteral(" (introuvable)")
                                                                   : name);
    };
    show();
    connect(&FolderPresence::shared(), &FolderPresence::changed, action, show);
    connect(action, &QAction::triggered, this, [this, folder] { Q_EMIT recentRequested(folder); });
}

} // namespace tallyroom
