#include "Shell/WindowMenu.h"

#include "Theme/SymbolIcon.h"

#include <QMenu>

namespace tallyroom {

WindowMenu::WindowMenu(QWidget* parent) : MenuButton(parent)
{
    Theme::style(this, Theme::Button::icon);
    setIcon(SymbolIcon::icon("line.3.horizontal"));
    setAccessibleName(QStringLiteral("Menu de Tallyroom"));
    setToolTip(QStringLiteral("Menu (F10)"));
    menu()->addAction(SymbolIcon::icon("folder"), QStringLiteral("Ouvrir un dossier…\tCtrl+O"), this,
                      &WindowMenu::folderRequested);
    menu()->addSeparator();
    menu()->addAction(QStringLiteral("Raccourcis clavier\tF1"), this, &WindowMenu::keysRequested);
    menu()->addAction(QStringLiteral("Préférences…\tCtrl+,"), this, &WindowMenu::preferencesRequested);
    menu()->addAction(QStringLiteral("À propos de Tallyroom"), this, &WindowMenu::aboutRequested);
}

} // namespace tallyroom
