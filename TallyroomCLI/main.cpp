#include "DuplicatesCommand.h"
#include "KindsCommand.h"
#include "ScanCommand.h"
#include "VolumesCommand.h"

#include <CLI/CLI.hpp>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <malloc.h>
#include <map>

namespace tallyroom {

namespace {

const std::map<std::string, OutputFormat>& formats()
{
    static const std::map<std::string, OutputFormat> names{
        {"table", OutputFormat::table}, {"csv", OutputFormat::csv}, {"json", OutputFormat::json}};
    return names;
}

void translateLabels(CLI::App& app)
{
    const auto formatter = std::make_shared<CLI::Formatter>();
    formatter->label("Usage", "Utilisation ");
    formatter->label("OPTIONS", "OPTIONS");
    formatter->label("SUBCOMMAND", "COMMANDE");
    formatter->label("Options", "Options");
    formatter->label("Positionals", "Arguments");
    formatter->label("REQUIRED", "(obligatoire)");
    app.formatter(formatter);
}

/// The French words for what is wrong with a command line.
std::string complaint(const CLI::ParseError& error)
{
    // By exit code: the name of some errors is that of the command they concern.
    const int code = error.get_exit_code();
    const auto is = [code](CLI::ExitCodes wanted) { return code == static_cast<int>(wanted); };
    if (is(CLI::ExitCodes::RequiredError)) {
        return "il manque une commande ou un dossier";
    }
    if (is(CLI::ExitCodes::ExtrasError)) {
        return "un argument est de trop ou inconnu";
    }
    if (is(CLI::ExitCodes::ValidationError) || is(CLI::ExitCodes::ConversionError)) {
        return "une option a une valeur qu'elle n'accepte pas";
    }
    if (is(CLI::ExitCodes::ArgumentMismatch)) {
        return "une option attend une valeur";
    }
    return "ligne de commande incorrecte";
}

void addFormat(CLI::App& command, OutputFormat& format)
{
    command
        .add_option_function<std::string>(
            "--format", [&format](const std::string& name) { format = formats().at(name); },
            "Forme du résultat : table, csv ou json (une ligne par élément)")
        ->type_name("table|csv|json")
        ->check([](const std::string& name) { return formats().contains(name) ? "" : name; });
    command.set_help_flag("-h,--help", "Afficher cette aide");
}

void addScanOptions(CLI::App& command, ScanOptions& options)
{
    command.add_option("dossier", options.folder, "Dossier à analyser")->type_name("DOSSIER")->required();
    addFormat(command, options.format);
    command.add_flag("--quiet", options.quiet, "Ne pas montrer la progression");
}

void addDuplicates(CLI::App& app, DuplicatesOptions& options, std::function<void()> run)
{
    CLI::App* const command =
        app.add_subcommand("duplicates", "Les fichiers de contenu identique, par groupes");
    command->group("Commandes");
    addScanOptions(*command, options.scan);
    command
        ->add_option("--min-size", options.minimumSize, "Plus petite taille considérée (1048576 par défaut)")
        ->type_name("OCTETS");
    command->callback(std::move(run));
}

int run(int argc, char** argv)
{
    const Interruption interruption; // before any other thread
    CLI::App app{"Montre ce qui occupe les disques de cette machine.", "tallyroom-cli"};
    translateLabels(app);
    app.set_help_flag("-h,--help", "Afficher cette aide");
    app.set_version_flag("--version", "tallyroom-cli " TALLYROOM_VERSION, "Afficher la version");
    app.require_subcommand(1);

    ScanOptions options;
    ExitCode code = ExitCode::success;
    CLI::App* const usage =
        app.add_subcommand("usage", "Le contenu direct d'un dossier, du plus lourd au plus léger");
    usage->group("Commandes");
    addScanOptions(*usage, options);
    usage->callback([&] { code = runUsage(options, interruption); });
    CLI::App* const kinds = app.add_subcommand("kinds", "Les types de fichiers qui remplissent un dossier");
    kinds->group("Commandes");
    addScanOptions(*kinds, options);
    kinds->callback([&] { code = runKinds(options, interruption); });
    CLI::App* const volumes = app.add_subcommand("volumes", "Les volumes montés et leur occupation");
    volumes->group("Commandes");
    addFormat(*volumes, options.format);
    volumes->callback([&] { code = runVolumes(options.format, interruption); });
    DuplicatesOptions duplicatesOptions;
    addDuplicates(app, duplicatesOptions, [&] { code = runDuplicates(duplicatesOptions, interruption); });

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& wanted) {
        return app.exit(wanted); // help or version
    } catch (const CLI::ParseError& error) {
        std::fprintf(stderr, "tallyroom-cli : %s (voir tallyroom-cli --help)\n", complaint(error).c_str());
        return static_cast<int>(ExitCode::usage);
    }
    return static_cast<int>(code);
}

} // namespace

} // namespace tallyroom

int main(int argc, char** argv)
{
    std::setlocale(LC_ALL, "");
    // Many threads share few heaps: what one of them frees, the next one uses.
    ::mallopt(M_ARENA_MAX, 2);
    return tallyroom::run(argc, argv);
}
