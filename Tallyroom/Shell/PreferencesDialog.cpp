#include "Shell/PreferencesDialog.h"

#include "Controls/CheckBox.h"
#include "Controls/OptionMenu.h"
#include "Layout/Boxes.h"
#include "Settings/FolderProtection.h"
#include "Settings/ScanRules.h"
#include "Settings/Settings.h"
#include "Shell/FolderListEditor.h"
#include "Shell/ToolRegistry.h"
#include "Theme/Theme.h"

#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>

#include <utility>

namespace tallyroom {

namespace {

/// As high as what stands beside it: the form puts a label at the top of its row.
QLabel* rowLabel(const QString& text)
{
    auto* const label = new QLabel(text);
    label->setMinimumHeight(Theme::controlHeight);
    return label;
}

} // namespace

PreferencesDialog::PreferencesDialog(SessionStore& store, QWidget* parent)
    : TellingDialog(QStringLiteral("Préférences"), parent), m_pages(new QTabWidget),
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
      m_animations(new CheckBox(QStringLiteral("Animer ses mouvements")))
{
    setAttribute(Qt::WA_DeleteOnClose);
    closeButton().setAutoDefault(false); // Enter in the field of names adds one
    QVBoxLayout& scans = addPage(QStringLiteral("Analyses"));
    scans.addWidget(m_excluded);
    scans.addWidget(m_oneFileSystem);
    scans.addStretch(1);
    QVBoxLayout& protection = addPage(QStringLiteral("Protection"));
    protection.addWidget(m_protected);
    protection.addStretch(1);
    addToolPage(store);
    column().addWidget(m_pages, 1);
    addFoot();
    setMinimumWidth(Theme::failureListWidth);
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

QVBoxLayout& PreferencesDialog::addPage(const QString& name)
{
    auto* const page = new QWidget;
    auto* const column = makeColumn(page, {0, Theme::gap * 2, 0, 0});
    m_pages->addTab(page, name);
    return *column;
}

void PreferencesDialog::addToolPage(SessionStore& store)
{
    auto* const form = new QFormLayout;
    form->setHorizontalSpacing(Theme::margin);
    form->setVerticalSpacing(Theme::gap);
    form->setLabelAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    for (const ToolDescriptor& descriptor : ToolRegistry::all()) {
        if (auto* const tool = qobject_cast<ScanToolViewModel*>(&descriptor.tool(store))) {
            addOptions(*form, descriptor.name, *tool);
        }
    }
    form->addRow(rowLabel(QStringLiteral("Carte")), m_animations);
    QVBoxLayout& page = addPage(QStringLiteral("Outils"));
    page.addLayout(form);
    page.addStretch(1);
}

/// The same menus as on the tool's own screen, of the choices that last.
void PreferencesDialog::addOptions(QFormLayout& form, const QString& name, ScanToolViewModel& tool)
{
    QString shown = name;
    for (const Option& option : tool.options()) {
        if (option.isKept) {
            auto* const menu = new OptionMenu(option);
            menu->setAutoDefault(false);
            connect(&tool, &ScanToolViewModel::remarksChanged, menu, &OptionMenu::showTitle);
            form.addRow(rowLabel(std::exchange(shown, {})), menu);
        }
    }
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
