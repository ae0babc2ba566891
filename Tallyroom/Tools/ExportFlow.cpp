#include "Tools/ExportFlow.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QMessageBox>
#include <QPointer>
#include <QSaveFile>
#include <QStandardPaths>
#include <QThreadPool>

#include <utility>

namespace tallyroom {

namespace {

/// Why it could not be written; empty when it was.
QString write(const std::string& text, const QString& path)
{
    QSaveFile file{path};
    const auto size = static_cast<qint64>(text.size());
    if (file.open(QIODevice::WriteOnly) && file.write(text.data(), size) == size && file.commit()) {
        return {};
    }
    return file.errorString();
}

void tellFailure(QWidget* parent, const QString& path, const QString& reason)
{
    auto* const box =
        new QMessageBox(QMessageBox::Warning, QStringLiteral("Exporter en CSV"),
                        QStringLiteral("« %1 » n’a pas pu être écrit.").arg(path), QMessageBox::Ok, parent);
    box->setTextFormat(Qt::PlainText);
    box->setInformativeText(reason);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

/// Makes and writes the text on a thread of its own; `parent` may be gone before it has ended.
void writeApart(const QPointer<QWidget>& parent, const std::function<std::string()>& text,
                const QString& path)
{
    QThreadPool::globalInstance()->start([parent, text, path] {
        const QString reason = write(text(), path);
        QMetaObject::invokeMethod(qApp, [parent, path, reason] {
            if (!reason.isEmpty() && parent != nullptr) {
                tellFailure(parent, path, reason);
            }
        });
    });
}

} // namespace

void exportAsCSV(QWidget* parent, std::function<std::string()> text, const QString& defaultName)
{
    const QDir documents{QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation)};
    auto* const dialog = new QFileDialog(parent, QStringLiteral("Exporter en CSV"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setNameFilter(QStringLiteral("Valeurs séparées par des virgules (*.csv)"));
    dialog->setDefaultSuffix(QStringLiteral("csv"));
    dialog->setDirectory(documents);
    // A name may hold what separates folders only when it is "/", the root's own.
    dialog->selectFile(QString{defaultName}.replace(QLatin1Char{'/'}, QLatin1Char{'_'}) +
                       QStringLiteral(".csv"));
    QObject::connect(dialog, &QFileDialog::fileSelected, dialog,
                     [parent = QPointer{parent}, text = std::move(text)](const QString& path) {
                         writeApart(parent, text, path);
                     });
    dialog->open();
}

} // namespace tallyroom
