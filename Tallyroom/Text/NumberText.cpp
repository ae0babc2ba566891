#include "Text/NumberText.h"

#include "Text/SizeFormatter.h"

#include <QLocale>

#include <cmath>

namespace tallyroom::NumberText {

QString groupedDigits(std::int64_t count)
{
    return QLocale{QLocale::French}.toString(static_cast<qlonglong>(count));
}

QString percentage(double share)
{
    const auto thousandths = std::lround(share * 1000);
    if (thousandths == 0) {
        return {};
    }
    return QStringLiteral("%1%2%3 %")
        .arg(thousandths / 10)
        .arg(QString::fromStdString(SizeFormatter::decimalSeparator()))
        .arg(thousandths % 10);
}

QString files(std::int64_t count)
{
    return plural(count, QStringLiteral("fichier"));
}

QString examinedFiles(std::int64_t count)
{
    return plural(count, QStringLiteral("fichier examiné"), QStringLiteral("fichiers examinés"));
}

} // namespace tallyroom::NumberText
