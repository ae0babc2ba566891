#pragma once

#include <QString>

#include <string>

namespace tallyroom {

/// What the window says of a tool, wherever it names it.
struct ToolText {
    QString id{}; ///< stable
    QString name{};
    std::string icon{};     ///< a symbol's name
    QString message{};      ///< of the welcome: what the tool does
    QString emptyMessage{}; ///< a finished scan that found nothing
    QString firstColumnTitle{};
    QString deletionWarning{}; ///< the loss beyond the bytes; shown before a deletion
    QString searchPlaceholder = QStringLiteral("Filtrer par chemin");
};

/// One for each tool.
namespace ToolTexts {

extern const ToolText dashboard;
extern const ToolText diskUsage;
extern const ToolText nodeModules;
extern const ToolText largeFiles;
extern const ToolText duplicates;
extern const ToolText buildCaches;
extern const ToolText gitRepos;

} // namespace ToolTexts

} // namespace tallyroom
