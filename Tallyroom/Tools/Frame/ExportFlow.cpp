#include "Tools/Frame/ExportFlow.h"

#include "Bridge/AskApart.h"
#include "FileSystem/WholeFile.h"
#include "Text/FileUrlText.h"
#include "Text/PlainText.h"

#include <QDir>
#include <QFileDialog>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QStandardPaths>

#include <chrono>
#include <expected>
#include <filesystem>
#include <future>
#include <optional>
#include <system_error>
#include <utility>

namespace tallyroom {

namespace {

using Written = std::function<void(const FileUrl& file)>;
using Text = std::function<std::string()>;

void tellFailure(QWidget* parent, const FileUrl& file, const std::string& reason)
{
    auto* const box = new QMessageBox(QMessageBox::Warning, QStringLiteral("Exporter en CSV"),
                                      QStringLiteral("« %1 » n’a pas pu être écrit.\n\n%2")
                                          .arg(FileUrlText::display(file), toSentence(reason)),
                                      QMessageBox::Ok, parent);
    box->setTextFormat(Qt::PlainText);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

/// How long leaving waits for a file that is being written; a dead mount never answers.
constexpr std::chrono::seconds leavingPatience{2};

/// A file that is being written for a screen.
class Writing : public QObject {
public:
    using QObject::QObject;

    ~Writing() override { end.wait_for(leavingPatience); }

    std::future<void> end;
};

/// Makes and writes the text aside; `parent` may be gone before it has ended.
void writeApart(QWidget* parent, const Text& text, const FileUrl& file, const Written& written)
{
    using Outcome = std::expected<void, SystemError>;
    auto* const writing = new Writing(parent);
    const auto done = std::make_shared<std::promise<void>>();
    writing->end = done->get_future();
    const auto write = [text, file, done] {
        Outcome outcome = WholeFile::write(file, text());
        done->set_value();
        return outcome;
    };
    askApart<Outcome>(writing, write, [parent, writing, file, written](const Outcome& outcome) {
        writing->deleteLater();
        if (outcome) {
            written(file);
        } else {
            tellFailure(parent, file, outcome.error().message());
        }
    });
}

/// The target of the link at `file`, unresolved; nothing when it is no link.
std::optional<std::string> destination(const FileUrl& file)
{
    std::error_code error;
    const auto target = std::filesystem::read_symlink(file.path(), error);
    return error ? std::nullopt : std::optional{target.string()};
}

void askToReplaceLink(QWidget* parent, const FileUrl& file, const std::string& target,
                      const std::function<void()>& write)
{
    auto* const box = new QMessageBox(
        QMessageBox::Warning, QStringLiteral("Exporter en CSV"),
        QStringLiteral(
            "« %1 » est un lien vers « %2 ».\n\nRemplacer le lien par la liste ? Ce vers quoi il mène "
            "reste tel quel.")
            .arg(FileUrlText::display(file), FileUrlText::display(target)),
        QMessageBox::NoButton, parent);
    box->setTextFormat(Qt::PlainText);
    auto* const replace = box->addButton(QStringLiteral("Remplacer le lien"), QMessageBox::AcceptRole);
    box->setDefaultButton(box->addButton(QStringLiteral("Annuler"), QMessageBox::RejectRole));
    box->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(replace, &QAbstractButton::clicked, box, write);
    box->open();
}

void exportTo(QWidget* parent, const FileUrl& file, const Text& text, const Written& written)
{
    const auto write = [parent = QPointer{parent}, text, file, written] {
        if (parent != nullptr) {
            writeApart(parent, text, file, written);
        }
    };
    askApart<std::optional<std::string>>(
        parent, [file] { return destination(file); },
        [parent, file, write](const std::optional<std::string>& target) {
            if (target) {
                askToReplaceLink(parent, file, *target, write);
            } else {
                write();
            }
        });
}

} // namespace

void exportAsCSV(QWidget* parent, std::function<std::string()> text, const QString& defaultName,
                 std::function<void(const FileUrl& file)> written)
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
    QObject::connect(dialog, &QFileDialog::fileSelected, parent,
                     [parent, text = std::move(text), written = std::move(written)](const QString& path) {
                         exportTo(parent, FileUrlText::fromFileName(path), text, written);
                     });
    dialog->open();
}

} // namespace tallyroom
