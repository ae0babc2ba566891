#include "Tools/Frame/ScanEnd.h"

#include "Text/PlainText.h"

namespace tallyroom {

QString ScanEnd::notice() const
{
    return kind == Kind::stopped ? QStringLiteral("Analyse interrompue : résultat partiel") : QString{};
}

QString ScanEnd::emptyText(const QString& none) const
{
    switch (kind) {
    case Kind::complete:
        return none;
    case Kind::none:
    case Kind::stopped:
        return QStringLiteral("Analyse interrompue avant le premier résultat.");
    case Kind::unread:
        break;
    }
    const QString why = toSentence(cause.message());
    return QStringLiteral("Ce dossier ne peut pas être lu : ") + why.left(1).toLower() + why.mid(1);
}

} // namespace tallyroom
