#include "Shell/FolderListEditor.h"

#include "Bridge/Desktop.h"
#include "Layout/Boxes.h"
#include "Text/FileUrlText.h"
#include "Theme/SymbolIcon.h"

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

#include <algorithm>

namespace tallyroom {

namespace {

constexpr int shownRows = 3;

QPushButton* plainButton(const QString& text)
{
    auto* const button = new QPushButton(text);
    Theme::style(button, Theme::Button::plain);
    button->setAutoDefault(false); // Enter in the field adds its name, and presses no button
    return button;
}

} // namespace

FolderListEditor::FolderListEditor(const QString& title, const QString& explanation, Takes takes,
                                   QWidget* parent)
    : QWidget(parent), m_list(new QListWidget), m_name(new QLineEdit),
      m_remove(plainButton(QStringLiteral("Retirer")))
{
    makeLayout(title, explanation, takes);
    connect(m_remove, &QPushButton::clicked, this, &FolderListEditor::removeCurrent);
    connect(m_name, &QLineEdit::returnPressed, this, &FolderListEditor::addTyped);
    connect(m_list, &QListWidget::currentRowChanged, m_remove,
            [this](int row) { m_remove->setEnabled(row >= 0); });
    showRows(0);
}

void FolderListEditor::makeLayout(const QString& title, const QString& explanation, Takes takes)
{
    auto* const heading = new QLabel(title);
    Theme::style(heading, Theme::Text::strong);
    auto* const hint = new QLabel(explanation);
    Theme::style(hint, Theme::Text::secondary);
    hint->setWordWrap(true);
    m_list->setAccessibleName(title);
    m_list->setFixedHeight(shownRows * Theme::headerHeight);
    Theme::style(m_list, Theme::Surface::card);
    auto* const add = plainButton(QStringLiteral("Ajouter un dossier…"));
    add->setAccessibleName(title + QStringLiteral(" : ajouter un dossier"));
    m_remove->setAccessibleName(title + QStringLiteral(" : retirer le dossier choisi"));
    connect(add, &QPushButton::clicked, this, [this] {
        Desktop::chooseFolder(window(), {}, [this](const FolderChoice& choice) {
            if (choice && !choice->empty()) {
                addFolder(choice->front());
            }
        });
    });
    auto* const buttons = new QHBoxLayout;
    buttons->setSpacing(Theme::gap);
    buttons->addWidget(add);
    m_name->setPlaceholderText(QStringLiteral("Nom de dossiers"));
    m_name->setAccessibleName(QStringLiteral("Nom de dossiers à ajouter"));
    m_name->setVisible(takes == Takes::foldersAndNames);
    buttons->addWidget(m_name, 1);
    if (takes == Takes::foldersAndNames) {
        auto* const addName = plainButton(QStringLiteral("Ajouter"));
        connect(addName, &QPushButton::clicked, this, &FolderListEditor::addTyped);
        buttons->addWidget(addName);
    } else {
        buttons->addStretch(1);
    }
    buttons->addWidget(m_remove);
    auto* const column = makeColumn(this);
    column->addWidget(heading);
    column->addWidget(hint);
    column->addWidget(m_list);
    column->addLayout(buttons);
}

void FolderListEditor::setContent(const std::vector<FileUrl>& folders, const std::vector<std::string>& names)
{
    m_folders = folders;
    m_names = names;
    showRows(0);
}

/// One row stays the current one, so that the keyboard goes on at the same place.
void FolderListEditor::showRows(int current)
{
    m_list->clear();
    const auto add = [this](const QString& text) {
        (new QListWidgetItem(text, m_list))->setSizeHint({0, Theme::headerHeight});
    };
    for (const FileUrl& folder : m_folders) {
        add(FileUrlText::displayFromHome(folder));
    }
    for (const std::string& name : m_names) {
        add(QStringLiteral("Tout dossier « %1 »").arg(FileUrlText::display(name)));
    }
    m_list->setCurrentRow(std::min(current, m_list->count() - 1));
    m_remove->setEnabled(m_list->currentRow() >= 0);
}

/// Where it lies without links: that is what scans and removals look at.
void FolderListEditor::addFolder(const FileUrl& folder)
{
    Desktop::findRealPlace(this, folder, [this](const FileUrl& place) {
        if (std::ranges::find(m_folders, place) == m_folders.end()) {
            m_folders.push_back(place);
            showRows(static_cast<int>(m_folders.size()) - 1);
            Q_EMIT edited();
        }
    });
}

/// A path is a folder, anything else a name.
void FolderListEditor::addTyped()
{
    const std::string typed = m_name->text().trimmed().toStdString();
    m_name->clear();
    if (typed.empty()) {
        return;
    }
    if (typed.find('/') != std::string::npos) {
        if (const auto folder = FileUrlText::parse(typed, FileUrlText::homeFolder())) {
            addFolder(*folder);
        }
        return;
    }
    if (std::ranges::find(m_names, typed) == m_names.end()) {
        m_names.push_back(typed);
        showRows(static_cast<int>(m_folders.size() + m_names.size()) - 1);
        Q_EMIT edited();
    }
}

void FolderListEditor::removeCurrent()
{
    const int row = m_list->currentRow();
    const auto folders = static_cast<int>(m_folders.size());
    if (row < 0) {
        return;
    }
    if (row < folders) {
        m_folders.erase(m_folders.begin() + row);
    } else {
        m_names.erase(m_names.begin() + (row - folders));
    }
    showRows(row);
    Q_EMIT edited();
}

} // namespace tallyroom
