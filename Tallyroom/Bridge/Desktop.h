#pragma once

#include "Model/Entry.h"
#include "Model/FileUrl.h"

#include <QObject>
#include <QString>

#include <expected>
#include <functional>
#include <optional>
#include <vector>

class QObject;
class QWidget;

namespace tallyroom {

/// What a folder chooser returns: the folders chosen, or why none could be, in words for people.
using FolderChoice = std::expected<std::vector<FileUrl>, QString>;

/// Access to a chosen folder beyond what the program has by itself, held as long as the object lives. Linux
/// has no such grant: taking one always succeeds and does nothing.
class [[nodiscard]] SecurityScope {
public:
    [[nodiscard]] static std::optional<SecurityScope> take(const FileUrl& /*folder*/)
    {
        return SecurityScope{};
    }

    SecurityScope(const SecurityScope&) = delete;
    SecurityScope& operator=(const SecurityScope&) = delete;
    SecurityScope(SecurityScope&&) noexcept = default;
    SecurityScope& operator=(SecurityScope&&) noexcept = default;
    ~SecurityScope() = default;

private:
    SecurityScope() = default;
};

/// Says when no program of the desktop did what it was asked for. Main thread.
class DesktopRefusals : public QObject {
    Q_OBJECT

public:
    /// The one of the process, made on first use.
    static DesktopRefusals& shared();

Q_SIGNALS:
    /// In words for people.
    void refused(const QString& message);
};

/// The services of the desktop around the window. Main thread; nothing here waits for another program.
namespace Desktop {

/// Shows the folder chooser over `parent`'s window and calls `chosen` with its outcome; a chooser that the
/// user dismisses says nothing.
void chooseFolder(QWidget* parent, const std::optional<FileUrl>& start,
                  std::function<void(const FolderChoice&)> chosen);

/// Finds out on another thread whether `url` can be opened as a folder, and calls `chosen` with the answer,
/// or with an error when there is none after some seconds, as from a dead mount. Not once `context` is gone.
void examine(QObject* context, const FileUrl& url, std::function<void(const FolderChoice&)> chosen);

/// Shows the item in the file browser, or opens its folder where no file browser answers. Says so by
/// DesktopRefusals when that fails too.
void reveal(const FileUrl& url);

/// Opens the file with the program that the desktop has for its type. Says so by DesktopRefusals when there
/// is none.
void open(const FileUrl& url);

/// Puts the paths of entries on the clipboard, one a line.
void copyPaths(const std::vector<Entry>& entries);

/// Tells `found` where a folder lies, without links, once another thread has asked the disk, unless `context`
/// is gone by then.
void findRealPlace(QObject* context, const FileUrl& folder, std::function<void(const FileUrl&)> found);

/// Shows in the task bar how far a piece of work is, 0 to 1; nothing: none runs, or its end is not known.
void showProgress(const std::optional<double>& fraction);

/// Tells the user while the window is in the background.
void notify(const QString& title, const QString& body);

} // namespace Desktop

} // namespace tallyroom
