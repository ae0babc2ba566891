#include "Bridge/Desktop.h"

#include "Bridge/FileUrlText.h"
#include "FileSystem/FileDescriptor.h"
#include "FileSystem/SystemError.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QFileDialog>
#include <QGuiApplication>
#include <QUrl>
#include <QVariantMap>

#include <cerrno>
#include <fcntl.h>

namespace tallyroom {

namespace {

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

} // namespace

void Desktop::chooseFolder(QWidget* parent, const std::optional<FileUrl>& start,
                           std::function<void(const FolderChoice&)> chosen)
{
    const FileUrl folder = start.value_or(FileUrlText::homeFolder());
    auto* const dialog = new QFileDialog(parent, QStringLiteral("Choisir un dossier"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->setLabelText(QFileDialog::Accept, QStringLiteral("Choisir"));
    dialog->setDirectory(FileUrlText::toFileName(folder));
    // Not urlsSelected: the toolkit's own dialog never sends it for folders.
    QObject::connect(dialog, &QDialog::accepted, dialog, [dialog, chosen = std::move(chosen)] {
        const QList<QUrl> urls = dialog->selectedUrls();
        const auto url = urls.isEmpty() ? std::nullopt : FileUrlText::fromUrl(urls.first());
        chosen(url ? choiceOf(*url) : FolderChoice{});
    });
    dialog->open();
}

FolderChoice Desktop::choiceOf(const FileUrl& url)
{
    const FileDescriptor folder{::open(url.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK)};
    if (!folder.isOpen()) {
        return std::unexpected(describe(SystemError::last()));
    }
    return std::vector{url};
}

void Desktop::reveal(const FileUrl& url)
{
    auto message = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    message << QStringList{QString::fromStdString(url.percentEncoded())} << QString{};
    const auto call = QDBusConnection::sessionBus().asyncCall(message);
    auto* const watcher = new QDBusPendingCallWatcher(call, qGuiApp);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [url, watcher] {
        if (watcher->isError()) {
            open(url.parent());
        }
        watcher->deleteLater();
    });
}

void Desktop::open(const FileUrl& url)
{
    QDesktopServices::openUrl(QUrl::fromEncoded(QByteArray::fromStdString(url.percentEncoded())));
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
