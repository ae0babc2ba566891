#include "Shell/TallyroomApp.h"

#include "Settings/FolderProtection.h"
#include "Settings/Settings.h"
#include "Shell/ContentView.h"
#include "Text/FileUrlText.h"
#include "Theme/Theme.h"

#include <QApplication>
#include <QFontDatabase>
#include <QLibraryInfo>
#include <QTextStream>
#include <QTranslator>

#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>

namespace tallyroom {

namespace {

using TallyroomApp::Invocation;

const QString helpText =
    QStringLiteral("Utilisation : tallyroom [OPTION] [DOSSIER]\n"
                   "\n"
                   "Trouve ce qui remplit les disques et aide à récupérer la place.\n"
                   "DOSSIER, un chemin ou une URL « file: », s’ouvre dans « Espace disque ».\n"
                   "\n"
                   "Options :\n"
                   "  -h, --help     affiche cette aide\n"
                   "  -V, --version  affiche la version\n");

Invocation mistake(const QString& text, std::string_view argument)
{
    return {Invocation::Kind::mistake, {}, text.arg(FileUrlText::display(argument))};
}

FileUrl workingFolder()
{
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::current_path(error);
    return FileUrl{error ? std::string{"/"} : folder.string()};
}

/// Where the desktop's letters are large, all of the window shall be. The toolkit reads a scale while the
/// application is made, and knows the font only afterwards: those who need it have it made twice. A scale
/// that somebody has set stays.
std::unique_ptr<QApplication> makeApplication(int& argc, char** argv)
{
    static constexpr const char* variable = "QT_SCALE_FACTOR";
    auto application = std::make_unique<QApplication>(argc, argv);
    const double scale = Theme::scaleFor(QFontDatabase::systemFont(QFontDatabase::GeneralFont));
    if (scale > 1 && !qEnvironmentVariableIsSet(variable)) {
        application.reset();
        qputenv(variable, QByteArray::number(scale));
        application = std::make_unique<QApplication>(argc, argv);
        qunsetenv(variable); // not for the programs that we start
    }
    return application;
}

int runWindow(int argc, char** argv, const std::optional<FileUrl>& folder)
{
    const auto application = makeApplication(argc, argv);
    QApplication::setApplicationName(QStringLiteral("tallyroom"));
    QApplication::setApplicationDisplayName(QStringLiteral("Tallyroom"));
    QApplication::setApplicationVersion(QStringLiteral(TALLYROOM_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("tallyroom"));
    QApplication::setQuitOnLastWindowClosed(true);
    // The program speaks French whatever the desktop does: the toolkit's own words too.
    QLocale::setDefault(QLocale{QLocale::French, QLocale::France});
    QTranslator words;
    if (words.load(QStringLiteral("qtbase_fr"), QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        QApplication::installTranslator(&words);
    }
    Theme::shared().setAnimated(Settings::flag(Settings::animationsKey(), true));
    Theme::shared().apply();
    FolderProtection::apply();
    ContentView window;
    window.show();
    window.raise();
    window.activateWindow();
    if (folder) {
        window.openFolder(*folder);
    }
    return QApplication::exec();
}

} // namespace

Invocation TallyroomApp::parse(std::span<const char* const> arguments, const FileUrl& workingFolder)
{
    Invocation invocation;
    bool areOptionsOver = false;
    for (const std::string_view argument : arguments) {
        if (!areOptionsOver && argument == "--") {
            areOptionsOver = true;
        } else if (!areOptionsOver && (argument == "--help" || argument == "-h")) {
            return {.kind = Invocation::Kind::help, .folder = {}, .mistake = {}};
        } else if (!areOptionsOver && (argument == "--version" || argument == "-V")) {
            return {.kind = Invocation::Kind::version, .folder = {}, .mistake = {}};
        } else if (!areOptionsOver && argument.starts_with('-')) {
            return mistake(QStringLiteral("option inconnue : %1"), argument);
        } else if (invocation.folder) {
            return mistake(QStringLiteral("un seul dossier peut être ouvert : %1 est de trop"), argument);
        } else if (invocation.folder = FileUrlText::parse(argument, workingFolder); !invocation.folder) {
            return mistake(QStringLiteral("ce n’est pas un dossier de cette machine : %1"), argument);
        }
    }
    return invocation;
}

int TallyroomApp::run(int argc, char** argv)
{
    const std::span<const char* const> all{argv, static_cast<std::size_t>(argc)};
    const Invocation invocation = parse(all.subspan(all.empty() ? 0 : 1), workingFolder());
    switch (invocation.kind) {
    case Invocation::Kind::window:
        break;
    case Invocation::Kind::help:
        QTextStream{stdout} << helpText;
        return 0;
    case Invocation::Kind::version:
        QTextStream{stdout} << "Tallyroom " << TALLYROOM_VERSION << '\n';
        return 0;
    case Invocation::Kind::mistake:
        QTextStream{stderr} << "tallyroom : " << invocation.mistake << '\n' << helpText;
        return 2;
    }
    return runWindow(argc, argv, invocation.folder);
}

} // namespace tallyroom
