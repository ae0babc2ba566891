#include "Text/SizeText.h"

#include "Text/SizeFormatter.h"

namespace tallyroom {

QString sizeText(std::int64_t bytes)
{
    return QString::fromStdString(SizeFormatter::string(bytes));
}

} // namespace tallyroom
