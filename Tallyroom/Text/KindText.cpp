#include "Text/KindText.h"

#include "Text/NumberText.h"
#include "Text/SizeText.h"
#include "Theme/FileKindPresentation.h"

#include <QStringList>

namespace tallyroom::KindText {

QString share(double share)
{
    if (share <= 0) {
        return QStringLiteral("0 %");
    }
    const QString percentage = NumberText::percentage(share);
    return percentage.isEmpty() ? QStringLiteral("< ") + NumberText::percentage(0.001) : percentage;
}

QString total(const FolderSummary& summary)
{
    return NumberText::files(summary.totalFiles) + QStringLiteral(" · ") + sizeText(summary.totalBytes);
}

QString name(const CategorySize& category, double share)
{
    const QStringList parts{displayName(category.kind), sizeText(category.totalBytes), KindText::share(share),
                            NumberText::files(category.fileCount)};
    return parts.join(QStringLiteral(", "));
}

QString toolTip(const CategorySize& category, double share)
{
    const QString figures = sizeText(category.totalBytes) + QStringLiteral(" · ") + KindText::share(share);
    return QStringLiteral("<qt><b>%1</b><br><nobr>%2</nobr></qt>")
        .arg(displayName(category.kind), figures.toHtmlEscaped());
}

} // namespace tallyroom::KindText
