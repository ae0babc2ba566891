#include "Tools/ExportFlow.h"

#include "Bridge/FileUrlText.h"
#include "Text/CSVExport.h"

#include <QDir>
#include <QFileDialog>
#include <QSaveFile>
#include <QStandardPaths>
#include <QThreadPool>

namespace tallyroom {

namespace {

/// A list that cannot be written is not reported: the user sees that the file is not there.
void write(const EntryList& entries, const QString& path)
{
    const std::string text = CSVExport::string(entries);
    QSaveFile file{path};
    // A folder may forbid the temporary neighbour and still let the file itself be written.
    file.setDirectWriteFallback(true);
    if (file.open(QIODevice::WriteOnly)) {
        file.write(text.data(), static_cast<qint64>(text.size()));
        file.commit();
    }
}

} // namespace

void exportAsCSV(QWidget* parent, const EntryList& entries, const QString& defaultName)
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
    QObject::connect(dialog, &QFileDialog::fileSelected, dialog, [entries](const QString& path) {
        QThreadPool::globalInstance()->start([entries, path] { write(entries, path); });
    });
    dialog->open();
}

} // namespace tallyroom
