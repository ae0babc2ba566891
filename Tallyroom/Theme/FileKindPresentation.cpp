#include "Theme/FileKindPresentation.h"

namespace tallyroom {

QString displayName(FileKind kind)
{
    const std::string_view name = kind.displayName();
    return QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
}

} // namespace tallyroom
