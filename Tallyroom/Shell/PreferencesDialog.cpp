#include "Shell/PreferencesDialog.h"

#include "Controls/CheckBox.h"
#include "Layout/Boxes.h"
#include "Settings/FolderProtection.h"
#include "Settings/ScanRules.h"
#include "Settings/Settings.h"
#include "Shell/FolderListEditor.h"
#include "Theme/Theme.h"

#include <QDialogButtonBox>
#include <QPushButton>

namespace tallyroom {

PreferencesDialog::PreferencesDialog(QWidget* parent)
    : QDialog(parent),
      m_excluded(new FolderListEditor(
          QStringLiteral("Dossiers exclus des analyses"),
          QStringLiteral("Ils restent visibles, marqués « exclu », et ne sont ni lus ni comptés."),
          FolderListEditor::Takes::foldersAndNames)),
      m_protected(new FolderListEditor(
          QStringLiteral("Dossiers protégés"),
          QStringLiteral("Tallyroom refuse de les supprimer, et tout ce qu’ils contiennent."),
          FolderListEditor::Takes::folders)),
      m_oneFileSystem(
          new CheckBox(QStringLiteral("Ne pas entrer dans les volumes montés sous le dossier analysé"))),
      m_animations(new CheckBox(QStringLiteral("Animer la carte")))
{
    setWindowTitle(QStringLiteral("Préférences"));
    setAttribute(Qt::WA_DeleteOnClose);
    makeLayout();
    showRules();
    m_protected->setContent(FolderProtection::folders());
    m_animations->setChecked(Theme::shared().isAnimated());
    connect(m_excluded, &FolderListEditor::edited, this, &PreferencesDialog::storeRules);
    connect(m_oneFileSystem, &QCheckBox::toggled, this, &PreferencesDialog::storeRules);
    connect(m_protected, &FolderListEditor::edited, this,
            [this] { FolderProtection::setFolders(m_protected->folders()); });
    connect(m_animations, &QCheckBox::toggled, this, [](bool isOn) {
        Settings::write(Settings::animationsKey(), isOn);
        Theme::shared().setAnimated(isOn);
    });
}

void PreferencesDialog::makeLayout()
{
    auto* const buttons = new QDialogButtonBox;
    auto* const close = buttons->addButton(QStringLiteral("Fermer"), QDialogButtonBox::RejectRole);
    close->setAutoDefault(false); // Enter in the field of names adds one
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* const column = makeColumn(this, pageMargins);
    column->addWidget(m_excluded);
    column->addWidget(m_oneFileSystem);
    column->addSpacing(Theme::gap);
    column->addWidget(m_protected);
    column->addSpacing(Theme::gap);
    column->addWidget(m_animations);
    column->addWidget(buttons);
    setMinimumWidth(Theme::failureListWidth);
}

void PreferencesDialog::showRules()
{
    const ScanScope::Rules& rules = ScanRules::shared().rules();
    m_excluded->setContent(rules.folders, {rules.names.begin(), rules.names.end()});
    m_oneFileSystem->setChecked(rules.staysOnFileSystem);
}

void PreferencesDialog::storeRules()
{
    const std::vector<std::string>& names = m_excluded->names();
    ScanRules::shared().setRules(
        {{names.begin(), names.end()}, m_excluded->folders(), m_oneFileSystem->isChecked()});
}

} // namespace tallyroom
