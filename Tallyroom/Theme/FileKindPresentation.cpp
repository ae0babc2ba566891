#include "Theme/FileKindPresentation.h"

namespace tallyroom {

QString displayName(FileKind kind)
{
    const std::string_view name = kind.displayName();
    return QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
}

FileKind drawnKind(const Entry& entry)
{
    return entry.form == EntryForm::ordinary ? FileKind::of(entry) : FileKind{FileKind::other};
}

QString kindName(const Entry& entry)
{
    switch (entry.form) {
    case EntryForm::ordinary:
        return displayName(FileKind::of(entry));
    case EntryForm::link:
        return QStringLiteral("Lien");
    case EntryForm::fifo:
        return QStringLiteral("Tube nommé");
    case EntryForm::socket:
        return QStringLiteral("Socket");
    case EntryForm::device:
        return QStringLiteral("Périphérique");
    }
    return {};
}

std::string symbolName(const Entry& entry)
{
    switch (entry.form) {
    case EntryForm::ordinary:
        return std::string{FileKind::of(entry).symbolName()};
    case EntryForm::link:
        return "link";
    case EntryForm::fifo:
        return "arrow.right.arrow.left";
    case EntryForm::socket:
        return "powerplug";
    case EntryForm::device:
        return "cpu";
    }
    return {};
}

} // namespace tallyroom
