#include "Components/FileKindPresentation.h"

namespace tallyroom {

QString displayName(FileKind kind)
{
    switch (kind) {
    case FileKind::folder:
        return QStringLiteral("Dossiers");
    case FileKind::image:
        return QStringLiteral("Images");
    case FileKind::video:
        return QStringLiteral("Vidéos");
    case FileKind::audio:
        return QStringLiteral("Audio");
    case FileKind::archive:
        return QStringLiteral("Archives");
    case FileKind::code:
        return QStringLiteral("Code");
    case FileKind::document:
        return QStringLiteral("Documents");
    case FileKind::spreadsheet:
        return QStringLiteral("Tableurs");
    case FileKind::data:
        return QStringLiteral("Données");
    case FileKind::diskImage:
        return QStringLiteral("Images disque");
    case FileKind::other:
        return QStringLiteral("Autres");
    }
    return {};
}

} // namespace tallyroom
