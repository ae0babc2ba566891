#include "Deletion/FailureList.h"

#include "Layout/Boxes.h"
#include "Text/FileUrlText.h"
#include "Text/NumberText.h"
#include "Text/PlainText.h"
#include "Theme/Theme.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPlainTextEdit>

namespace tallyroom {

FailureList::FailureList(const std::vector<FileRemover::RemovalFailure>& failures, const QString& note,
                         QWidget* parent)
    : QDialog(parent)
{
    const QString title =
        failures.empty()
            ? QStringLiteral("Espace libéré")
            : QStringLiteral("Éléments laissés en place (%1)").arg(NumberText::grouped(failures.size()));
    setWindowTitle(title);
    auto* const heading = new QLabel(title);
    Theme::style(heading, Theme::Text::title);
    heading->setMinimumHeight(Theme::headerHeight); // the accent of a capital reaches above the line
    auto* const list = new QPlainTextEdit;
    list->setReadOnly(true);
    list->setTabChangesFocus(true);
    list->setAccessibleName(title);
    QStringList lines;
    for (const FileRemover::RemovalFailure& failure : failures) {
        lines += FileUrlText::displayFromHome(failure.url) + QStringLiteral("\n    ") +
                 toSentence(failure.message);
    }
    if (!note.isEmpty()) {
        lines += note;
    }
    list->setPlainText(lines.join(QLatin1Char{'\n'}));
    auto* const buttons = new QDialogButtonBox;
    buttons->addButton(QStringLiteral("Fermer"), QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* const column = makeColumn(this, pageMargins);
    column->addWidget(heading);
    column->addWidget(list, 1);
    column->addWidget(buttons);
}

QSize FailureList::sizeHint() const
{
    return {Theme::failureListWidth, Theme::failureListHeight};
}

} // namespace tallyroom
