#include "Deletion/FailureList.h"

#include "Layout/Boxes.h"
#include "Text/FileUrlText.h"
#include "Text/NumberText.h"
#include "Text/PlainText.h"
#include "Theme/Theme.h"

#include <QLabel>
#include <QPlainTextEdit>

namespace tallyroom {

namespace {

QString titleFor(std::size_t failures)
{
    return failures == 0
               ? QStringLiteral("Espace libéré")
               : QStringLiteral("Éléments laissés en place (%1)").arg(NumberText::grouped(failures));
}

} // namespace

FailureList::FailureList(const std::vector<FileRemover::RemovalFailure>& failures, const QString& note,
                         QWidget* parent)
    : TellingDialog(titleFor(failures.size()), parent)
{
    auto* const heading = new QLabel(windowTitle());
    Theme::style(heading, Theme::Text::title);
    heading->setMinimumHeight(Theme::headerHeight); // the accent of a capital reaches above the line
    auto* const list = new QPlainTextEdit;
    list->setReadOnly(true);
    list->setTabChangesFocus(true);
    list->setAccessibleName(windowTitle());
    QStringList lines;
    for (const FileRemover::RemovalFailure& failure : failures) {
        lines += FileUrlText::displayFromHome(failure.url) + QStringLiteral("\n    ") +
                 toSentence(failure.message);
    }
    if (!note.isEmpty()) {
        lines += note;
    }
    list->setPlainText(lines.join(QLatin1Char{'\n'}));
    column().addWidget(heading);
    column().addWidget(list, 1);
    addFoot();
}

QSize FailureList::sizeHint() const
{
    return {Theme::failureListWidth, Theme::failureListHeight};
}

} // namespace tallyroom
