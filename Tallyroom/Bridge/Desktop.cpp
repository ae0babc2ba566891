#include "Bridge/Desktop.h"

#include "Bridge/AskApart.h"
#include "Bridge/StartedProgram.h"
#include "Bridge/StreamPump.h"
#include "Concurrency/PatientCalls.h"
#include "FileSystem/FileDescriptor.h"
#include "FileSystem/RealPath.h"
#include "FileSystem/SystemError.h"
#include "Text/FileUrlText.h"

#include <QClipboard>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QFileDialog>
#include <QGuiApplication>
#include <QStandardPaths>
#include <QTimer>
#include <QUrl>
#include <QVariantMap>

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <utility>

namespace tallyroom {

namespace {

/// How long a folder may take to answer: a disk that has to spin up does it within this time.
constexpr std::chrono::seconds folderPatience{8};

/// The words for what commonly keeps a folder from being opened; the platform's own for the rest.
QString describe(const SystemError& error)
{
    switch (error.code) {
    case ENOENT:
        return QStringLiteral("le dossier n’existe pas.");
    case ENOTDIR:
        return QStringLiteral("ce n’est pas un dossier.");
    case EACCES:
        return QStringLiteral("l’accès au dossier est refusé.");
    default:
        return QString::fromStdString(error.message());
    }
}

/// The toolkit's own way tells nothing of how it went.
void openWithDesktop(const FileUrl& url, const QString& refusal)
{
    const auto refuse = [refusal] { Q_EMIT DesktopRefusals::shared().refused(refusal); };
    const QString program = QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
    if (program.isEmpty()) { // Qt 6.4 leaks a pipe for each process that cannot be started
        refuse();
        return;
    }
    const auto ended = [refuse](int exitCode) {
        // 2: no such file, 3: a tool is missing, 4: nobody took it (xdg-open(1)).
        if (exitCode == StartedProgram::notStarted || (exitCode >= 2 && exitCode <= 4)) {
            refuse();
        }
    };
    StartedProgram::start(program, {QString::fromStdString(url.percentEncoded())}, ended);
}

FolderChoice choiceOf(const FileUrl& url)
{
    const FileDescriptor folder{::open(url.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK)};
    if (!folder.isOpen()) {
        return std::unexpected(describe(SystemError::last()));
    }
    return std::vector{url};
}

/// `choiceOf`, asked where a dead mount harms nobody; ends without an answer when the folder is known to
/// hang.
ProgressStream<FolderChoice> askChoice(const FileUrl& url)
{
    static auto* const calls = new PatientCalls{4, folderPatience}; // never destroyed: threads may hang in it
    auto [sender, stream] = makeProgressStream<FolderChoice>();
    auto telling = std::make_shared<ProgressSender<FolderChoice>>(std::move(sender));
    calls->ask(url.path(), [telling = std::move(telling), url]() mutable {
        telling->send(choiceOf(url));
        telling.reset();
    });
    return std::move(stream);
}

/// Waits for one answer, not for ever, and deletes itself.
class FolderQuestion : public QObject {
public:
    FolderQuestion(QObject* context, const FileUrl& url, std::function<void(const FolderChoice&)> chosen)
        : QObject(context), m_chosen(std::move(chosen)),
          m_answer(
              askChoice(url), [this](const FolderChoice& choice) { end(choice); }, [this] { giveUp(); })
    {
        QTimer::singleShot(folderPatience, this, &FolderQuestion::giveUp);
    }

private:
    void giveUp() { end(std::unexpected(QStringLiteral("le dossier ne répond pas."))); }

    void end(const FolderChoice& choice)
    {
        if (const auto chosen = std::exchange(m_chosen, {})) {
            deleteLater();
            chosen(choice);
        }
    }

    std::function<void(const FolderChoice&)> m_chosen;
    StreamPump<FolderChoice> m_answer;
};

void showChooser(QWidget* parent, const FileUrl& start,
                 const std::function<void(const FolderChoice&)>& chosen)
{
    auto* const dialog = new QFileDialog(parent, QStringLiteral("Choisir un dossier"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    // The columns of the toolkit cut the dates, and are partly in English.
    dialog->setViewMode(QFileDialog::List);
    dialog->setLabelText(QFileDialog::Accept, QStringLiteral("Choisir"));
    dialog->setDirectory(FileUrlText::toFileName(start));
    // Not urlsSelected: the toolkit's own dialog never sends it for folders.
    QObject::connect(dialog, &QDialog::accepted, dialog, [parent, dialog, chosen] {
        const QList<QUrl> urls = dialog->selectedUrls();
        if (const auto url = urls.isEmpty() ? std::nullopt : FileUrlText::fromUrl(urls.first())) {
            Desktop::examine(parent, *url, chosen);
        } else {
            chosen(FolderChoice{});
        }
    });
    dialog->open();
}

} // namespace

void Desktop::chooseFolder(QWidget* parent, const std::optional<FileUrl>& start,
                           std::function<void(const FolderChoice&)> chosen)
{
    // The dialog looks into its first folder on the main thread.
    examine(parent, start.value_or(FileUrlText::homeFolder()),
            [parent, chosen = std::move(chosen)](const FolderChoice& first) {
                showChooser(parent, first ? first->front() : FileUrlText::homeFolder(), chosen);
            });
}

void Desktop::examine(QObject* context, const FileUrl& url, std::function<void(const FolderChoice&)> chosen)
{
    new FolderQuestion(context, url, std::move(chosen)); // goes with its answer
}

void Desktop::reveal(const FileUrl& url)
{
    auto message = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    message << QStringList{QString::fromStdString(url.percentEncoded())} << QString{};
    const auto openFolder = [folder = url.parent()] {
        openWithDesktop(folder, QStringLiteral("Aucun gestionnaire de fichiers n’a répondu."));
    };
    const auto call = QDBusConnection::sessionBus().asyncCall(message);
    if (call.isError()) { // without a bus no answer will come, and nothing says so later
        openFolder();
        return;
    }
    auto* const watcher = new QDBusPendingCallWatcher(call, qGuiApp);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [openFolder, watcher] {
        if (watcher->isError()) {
            openFolder();
        }
        watcher->deleteLater();
    });
}

void Desktop::open(const FileUrl& url)
{
    openWithDesktop(url, QStringLiteral("Aucun programme ne peut ouvrir « %1 ».")
                             .arg(FileUrlText::display(url.lastPathComponent())));
}

DesktopRefusals& DesktopRefusals::shared()
{
    static DesktopRefusals refusals;
    return refusals;
}

void Desktop::copyPaths(const std::vector<Entry>& entries)
{
    QStringList paths;
    for (const Entry& entry : entries) {
        paths += FileUrlText::toFileName(entry.url);
    }
    if (!paths.isEmpty()) {
        QGuiApplication::clipboard()->setText(paths.join(QLatin1Char{'\n'}));
    }
}

void Desktop::findRealPlace(QObject* context, const FileUrl& folder,
                            std::function<void(const FileUrl&)> found)
{
    askApart<FileUrl>(
        context, [folder] { return realPlaceOf(folder); }, std::move(found));
}

void Desktop::showProgress(const std::optional<double>& fraction)
{
    // A signal that docks and task bars listen to; nobody answers.
    auto message = QDBusMessage::createSignal(QStringLiteral("/org/tallyroom/Tallyroom"),
                                              QStringLiteral("com.canonical.Unity.LauncherEntry"),
                                              QStringLiteral("Update"));
    message << QStringLiteral("application://tallyroom.desktop")
            << QVariantMap{{QStringLiteral("progress"), fraction.value_or(0)},
                           {QStringLiteral("progress-visible"), fraction.has_value()}};
    QDBusConnection::sessionBus().send(message);
}

void Desktop::notify(const QString& title, const QString& body)
{
    auto message = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
    message << QStringLiteral("Tallyroom") << 0U << QStringLiteral("tallyroom") << title << body
            << QStringList{} << QVariantMap{} << -1;
    QDBusConnection::sessionBus().asyncCall(message);
}

} // namespace tallyroom
