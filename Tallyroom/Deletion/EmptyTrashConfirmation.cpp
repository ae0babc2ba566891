#include "Deletion/EmptyTrashConfirmation.h"

#include "Deletion/LargestNames.h"
#include "Text/NumberText.h"
#include "Text/VolumeText.h"
#include "Theme/Theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <iterator>

namespace tallyroom {

namespace {

QString message(const TrashContents& contents, const QString& volume)
{
    return NumberText::plural(contents.items.size(), QStringLiteral("élément")) + QStringLiteral(" · ") +
           VolumeText::atLeast(contents.totalBytes, contents.unread > 0) +
           QStringLiteral(
               "\n\nTout ce que contient votre corbeille sur « %1 » sera supprimé, y compris ce "
               "que d’autres programmes y ont mis. Cette suppression est définitive : elle ne peut "
               "pas être annulée.")
               .arg(volume);
}

/// The items under the names and at the places that people know.
std::vector<Entry> originals(const TrashContents& contents)
{
    std::vector<Entry> entries;
    std::ranges::transform(contents.items, std::back_inserter(entries), [](const TrashContents::Item& item) {
        Entry entry = item.entry;
        if (!item.original.isEmpty()) {
            entry.url = item.original;
            entry.name = item.original.lastPathComponent();
        }
        return entry;
    });
    return entries;
}

} // namespace

EmptyTrashConfirmation::EmptyTrashConfirmation(const TrashContents& contents, const QString& volume,
                                               QWidget* parent)
    : QDialog(parent)
{
    setWindowTitle(QStringLiteral("Vider la corbeille ?"));
    auto* const heading = new QLabel(windowTitle());
    Theme::dress(heading, Theme::Text::title);
    auto* const text = new QLabel(message(contents, volume));
    text->setWordWrap(true);
    auto* const names = new QLabel(largestNames(originals(contents)).join(QLatin1Char{'\n'}));
    for (QLabel* const label : {text, names}) {
        label->setTextFormat(Qt::PlainText);
        Theme::dress(label, Theme::Text::body);
    }
    setAccessibleDescription(text->text() + QStringLiteral("\n\n") + names->text());

    auto* const empty = new QPushButton(QStringLiteral("Vider la corbeille"), this);
    Theme::dress(empty, Theme::Button::danger);
    connect(empty, &QPushButton::clicked, this, &QDialog::accept);
    auto* const cancel = new QPushButton(QStringLiteral("Annuler"), this);
    Theme::dress(cancel, Theme::Button::plain);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    cancel->setDefault(true);
    cancel->setFocus();

    auto* const buttons = new QHBoxLayout;
    buttons->setSpacing(Theme::gap);
    buttons->addStretch(1);
    buttons->addWidget(empty);
    buttons->addWidget(cancel);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(Theme::margin, Theme::margin, Theme::margin, Theme::margin);
    column->setSpacing(Theme::gap);
    column->addWidget(heading);
    column->addWidget(text);
    column->addWidget(names);
    column->addSpacing(Theme::gap);
    column->addLayout(buttons);
    column->setSizeConstraint(QLayout::SetFixedSize);
}

} // namespace tallyroom
