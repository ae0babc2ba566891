#include "Bridge/StartedProgram.h"

#include <QProcess>

#include <unistd.h>
#include <utility>

namespace tallyroom {

void StartedProgram::start(const QString& program, const QStringList& arguments,
                           const std::function<void(int exitCode)>& ended,
                           const std::optional<FileUrl>& folder)
{
    auto* const process = new QProcess; // thrown away when the program ends, and not before
    QObject::connect(process, &QProcess::errorOccurred, process, [=](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            ended(notStarted);
            process->deleteLater();
        }
    });
    QObject::connect(process, &QProcess::finished, process, [=](int exitCode) {
        ended(exitCode);
        process->deleteLater();
    });
    process->setStandardInputFile(QProcess::nullDevice());
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    if (folder) {
        // The toolkit takes folders as text, which cannot hold every name.
        process->setChildProcessModifier([path = folder->path()] {
            if (::chdir(path.c_str()) != 0) {
                ::_exit(EXIT_FAILURE);
            }
        });
    }
    process->start(program, arguments);
}

} // namespace tallyroom
