#include "Bridge/Terminal.h"

#include "Bridge/Desktop.h"
#include "Bridge/StartedProgram.h"
#include "Text/FileUrlText.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QStandardPaths>

#include <chrono>
#include <utility>

namespace tallyroom {

namespace {

/// A terminal that fails within this time has shown nobody a window.
constexpr std::chrono::milliseconds startPatience{2000};

/// The ways to a terminal, the person's own choice first; each a program with its arguments.
QList<QStringList> terminals()
{
    QList<QStringList> commands{{QStringLiteral("xdg-terminal-exec")},
                                QProcess::splitCommand(qEnvironmentVariable("TERMINAL")),
                                {QStringLiteral("x-terminal-emulator")}};
    for (const char* const name :
         {"gnome-terminal", "kgx", "ptyxis", "konsole", "xfce4-terminal", "mate-terminal", "lxterminal",
          "qterminal", "tilix", "foot", "kitty", "alacritty", "xterm"}) {
        commands += QStringList{QString::fromLatin1(name)};
    }
    return commands;
}

/// Starts the first of `commands` that is installed, and the next one where that fails at once.
void startFirst(const FileUrl& folder, QList<QStringList> commands)
{
    while (!commands.isEmpty()) {
        QStringList command = commands.takeFirst();
        const QString program =
            command.isEmpty() ? QString{} : QStandardPaths::findExecutable(command.takeFirst());
        if (program.isEmpty()) {
            continue;
        }
        QElapsedTimer clock;
        clock.start();
        const auto ended = [folder, commands, clock](int exitCode) {
            if (exitCode != 0 && !clock.hasExpired(startPatience.count())) {
                startFirst(folder, commands);
            }
        };
        StartedProgram::start(program, command, ended, folder);
        return;
    }
    Q_EMIT DesktopRefusals::shared().refused(QStringLiteral("Aucun terminal n’a pu être ouvert."));
}

} // namespace

void Terminal::openIn(const FileUrl& folder)
{
    // A folder on a dead mount would hold up whoever enters it.
    Desktop::examine(&DesktopRefusals::shared(), folder, [folder](const FolderChoice& choice) {
        if (choice) {
            startFirst(folder, terminals());
        } else {
            Q_EMIT DesktopRefusals::shared().refused(
                QStringLiteral("Impossible d’ouvrir un terminal dans « %1 » : %2")
                    .arg(FileUrlText::display(folder), choice.error()));
        }
    });
}

} // namespace tallyroom
