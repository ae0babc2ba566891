#include "DuplicatesCommand.h"
#include "KindsCommand.h"
#include "Model/Ecosystem.h"
#include "Model/FileKind.h"
#include "ScanCommand.h"
#include "Terminal.h"
#include "VolumesCommand.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <clocale>
#include <cstdlib>
#include <iostream>
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
    formatter->label("Positionals", "Arguments ");
    formatter->label("REQUIRED", "(obligatoire)");
    app.formatter(formatter);
    app.option_defaults()->group("Options "); // of the commands too; a colon has a space before it
}

/// The French message for a wrong command line; `leftOver` are the arguments that were not understood.
std::string complaint(const CLI::ParseError& error, const std::vector<std::string>& leftOver)
{
    // Before all else: a misspelt command is missing too.
    if (!leftOver.empty()) {
        return "un argument est de trop ou inconnu : " + leftOver.front();
    }
    // By exit code: the name of some errors is that of the command they concern.
    const int code = error.get_exit_code();
    const auto is = [code](CLI::ExitCodes wanted) { return code == static_cast<int>(wanted); };
    if (is(CLI::ExitCodes::RequiredError)) {
        return "il manque une commande ou un dossier";
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
            "--format",
            [&format](const std::string& name) {
                // Looked up here and not in a check: an empty value never reaches one.
                const auto known = formats().find(name);
                if (known == formats().end()) {
                    throw CLI::ValidationError{"--format", name};
                }
                format = known->second;
            },
            "Forme du résultat : table, csv ou json (une ligne par élément)")
        ->type_name("table|csv|json");
    command.set_help_flag("-h,--help", "Afficher cette aide");
}

void addScanOptions(CLI::App& command, ScanOptions& options)
{
    command.add_option("dossier", options.folder, "Dossier à analyser")->type_name("DOSSIER")->required();
    addFormat(command, options.format);
    command.add_flag("--quiet", options.quiet, "Ne pas montrer la progression");
    command
        .add_option_function<std::string>(
            "--exclude", [&options](const std::string& folder) { options.excluded.push_back(folder); },
            "Laisser de côté les dossiers de ce nom, ou ce dossier ; peut être répété")
        ->trigger_on_parse()
        ->type_name("NOM|DOSSIER");
    command.add_flag("--one-file-system", options.staysOnFileSystem,
                     "Ne pas entrer dans ce qui est monté sous le dossier");
}

std::set<Ecosystem> allEcosystems()
{
    return {Ecosystem::all.begin(), Ecosystem::all.end()};
}

/// "javascript, rust, …", as --ecosystems takes them.
std::string ecosystemNames()
{
    std::string names;
    for (const Ecosystem ecosystem : Ecosystem::all) {
        names.append(names.empty() ? "" : ", ").append(ecosystem.rawValue());
    }
    return names;
}

/// The ecosystems of a list such as "rust,jvm"; nothing when a name is unknown.
std::optional<std::set<Ecosystem>> ecosystemsNamed(std::string_view list)
{
    std::set<Ecosystem> ecosystems;
    for (std::size_t start = 0; start <= list.size();) {
        const std::size_t end = std::min(list.find(',', start), list.size());
        const auto ecosystem = Ecosystem::fromRawValue(list.substr(start, end - start));
        if (!ecosystem) {
            return std::nullopt;
        }
        ecosystems.insert(*ecosystem);
        start = end + 1;
    }
    return ecosystems;
}

void addEcosystems(CLI::App& command, std::set<Ecosystem>& ecosystems)
{
    command
        .add_option_function<std::string>(
            "--ecosystems",
            [&ecosystems](const std::string& list) {
                const auto named = ecosystemsNamed(list);
                if (!named) {
                    throw CLI::ValidationError{"--ecosystems", list};
                }
                ecosystems = *named;
            },
            "Écosystèmes cherchés, séparés par des virgules : " + ecosystemNames() +
                " (tous sans cette option)")
        ->type_name("NOMS");
}

/// "image|video|…", as --kind takes them.
std::string kindNames()
{
    std::string names;
    for (const FileKind kind : FileKind::all) {
        if (kind != FileKind::folder) {
            names.append(names.empty() ? "" : "|").append(kind.rawValue());
        }
    }
    return names;
}

/// The days of "30d", "2w", "6m" or "1y"; a month has 30 and a year 365.
std::optional<std::chrono::days> daysOf(std::string_view age)
{
    static const std::map<char, int> units{{'d', 1}, {'w', 7}, {'m', 30}, {'y', 365}};
    constexpr int longest = 100'000; // so that no date is left of what a clock can tell
    int number = 0;
    const auto [end, error] = std::from_chars(age.data(), age.data() + age.size(), number);
    const auto unit = age.empty() ? units.end() : units.find(age.back());
    const bool isNumber = error == std::errc{} && end == age.data() + age.size() - 1;
    if (!isNumber || unit == units.end() || number < 0 || number > longest / unit->second) {
        return std::nullopt;
    }
    return std::chrono::days{number * unit->second};
}

void addCriteria(CLI::App& command, FileScanner::FileCriteria& criteria)
{
    command
        .add_option_function<std::string>(
            "--kind",
            [&criteria](const std::string& name) {
                criteria.kind = FileKind::fromRawValue(name);
                if (!criteria.kind || criteria.kind == FileKind::folder) {
                    throw CLI::ValidationError{"--kind", name};
                }
            },
            "Seulement les fichiers de ce type")
        ->type_name(kindNames());
    command
        .add_option_function<std::string>(
            "--older-than",
            [&criteria](const std::string& age) {
                const auto days = daysOf(age);
                if (!days) {
                    throw CLI::ValidationError{"--older-than", age};
                }
                criteria.modifiedBefore = std::chrono::system_clock::now() - *days;
            },
            "Seulement les fichiers modifiés il y a plus longtemps, par exemple 30d, 2w, 6m ou 1y (jours, "
            "semaines, mois, années)")
        ->type_name("ÂGE");
}

/// An option that takes a whole number, not below 0.
void addNumber(CLI::App& command, const std::string& name, const std::string& unit, std::int64_t& number,
               const std::string& description)
{
    command
        .add_option_function<std::string>(
            name,
            [&number, name](const std::string& text) {
                const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
                if (error != std::errc{} || end != text.data() + text.size() || number < 0) {
                    throw CLI::ValidationError{name, text};
                }
            },
            description + " (" + std::to_string(number) + " sans cette option)")
        ->type_name(unit);
}

/// The commands and the variables of their options.
class Commands {
public:
    Commands(CLI::App& app, const Interruption& interruption) : m_app(app), m_interruption(interruption)
    {
        add("usage", "Le contenu direct d'un dossier, du plus lourd au plus léger", [this] {
            return runUsage(m_options, m_interruption);
        }).add_flag("--verbose", m_options.verbose, "Dire combien de lecteurs chaque disque a eus");
        CLI::App& largest = add("largest", "Les plus gros fichiers d'une arborescence", [this] {
            return runLargest(m_options, m_limit, m_criteria, m_interruption);
        });
        addNumber(largest, "--limit", "N", m_limit, "Nombre de fichiers à garder");
        addCriteria(largest, m_criteria);
        add("node-modules", "Les dossiers node_modules et leur poids",
            [this] { return runSearch(m_options, {"node_modules"}, m_interruption); });
        addEcosystems(add("build-caches", "Les dossiers que les outils de développement savent refaire",
                          [this] { return runBuildCaches(m_options, m_ecosystems, m_interruption); }),
                      m_ecosystems);
        add("git-repos", "Les dossiers .git et leur poids",
            [this] { return runGitRepos(m_options, m_interruption); });
        addNumber(add("duplicates", "Les fichiers de contenu identique, par groupes",
                      [this] {
                          return runDuplicates({m_options, m_minimumSize}, m_interruption);
                      }),
                  "--min-size", "OCTETS", m_minimumSize, "Plus petite taille considérée");
        add("kinds", "Les types de fichiers qui remplissent un dossier",
            [this] { return runKinds(m_options, m_interruption); });
        CLI::App& volumes = addCommand("volumes", "Les volumes montés et leur occupation",
                                       [this] { return runVolumes(m_options.format, m_interruption); });
        addFormat(volumes, m_options.format);
    }

    [[nodiscard]] ExitCode code() const noexcept { return m_code; }

private:
    CLI::App& addCommand(const std::string& name, const std::string& description,
                         std::function<ExitCode()> action)
    {
        CLI::App& command = *m_app.add_subcommand(name, description);
        command.group("Commandes ");
        command.callback([this, run = std::move(action)] { m_code = run(); });
        return command;
    }

    /// A command that scans a folder.
    CLI::App& add(const std::string& name, const std::string& description, std::function<ExitCode()> action)
    {
        CLI::App& command = addCommand(name, description, [this, run = std::move(action)] {
            return ScanCommand::applyScope(m_options) ? run() : ExitCode::failure;
        });
        addScanOptions(command, m_options);
        return command;
    }

    CLI::App& m_app;
    const Interruption& m_interruption;
    ScanOptions m_options;
    std::int64_t m_limit = 100;
    FileScanner::FileCriteria m_criteria;
    std::int64_t m_minimumSize = DuplicatesOptions{}.minimumSize;
    std::set<Ecosystem> m_ecosystems = allEcosystems();
    ExitCode m_code = ExitCode::success;
};

int run(int argc, char** argv)
{
    const Interruption interruption; // before any other thread
    CLI::App app{"Montre ce qui occupe les disques de cette machine.", "tallyroom-cli"};
    translateLabels(app);
    app.set_help_flag("-h,--help", "Afficher cette aide");
    app.set_version_flag("--version", "tallyroom-cli " TALLYROOM_VERSION, "Afficher la version");
    app.footer(
        "Ce qui ne peut pas être lu compte pour vide ; une ligne sur la sortie d'erreur dit combien de "
        "dossiers.");
    app.require_subcommand(1);
    const Commands commands{app, interruption};

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& wanted) {
        const int code = app.exit(wanted); // help or version
        return std::cout.flush() ? code : static_cast<int>(ScanCommand::end(false, interruption));
    } catch (const CLI::ParseError& error) {
        Terminal::complain(complaint(error, app.remaining(true)) + " (voir tallyroom-cli --help)");
        return static_cast<int>(ExitCode::usage);
    }
    return static_cast<int>(commands.code());
}

} // namespace

} // namespace tallyroom

int main(int argc, char** argv)
{
    std::setlocale(LC_ALL, "");
    // Many threads share few heaps, so that memory freed by one serves the next.
    ::mallopt(M_ARENA_MAX, 2);
    return tallyroom::run(argc, argv);
}
