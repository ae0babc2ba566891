#pragma once

#include "Shell/SessionStore.h"
#include "Tools/Frame/FolderTool.h"

#include <QString>
#include <QWidget>

#include <functional>
#include <string>

namespace tallyroom {

/// One entry of the sidebar.
struct ToolDescriptor {
    QString id;       ///< stable
    QString name;     ///< what the sidebar shows
    std::string icon; ///< a symbol's name
    /// Makes a new screen on the tool's view model in the store, which must outlive it.
    std::function<QWidget*(SessionStore&)> makeView;
    /// The tool itself, as far as the window knows it.
    std::function<FolderTool&(SessionStore&)> tool;
};

} // namespace tallyroom
