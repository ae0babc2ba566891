#include "Model/Ecosystem.h"

#include <algorithm>
#include <span>

namespace tallyroom {

namespace {

struct EcosystemRow {
    CaseNames names;
    std::span<const CacheFolder> folders;
};

template <std::size_t Count>
using Names = std::array<std::string_view, Count>;

constexpr Names<1> packageJson{"package.json"};
constexpr Names<4> installedPackages{".package-lock.json", ".yarn-integrity", ".yarn-state.yml",
                                     ".modules.yaml"};
constexpr Names<2> nextBuild{"BUILD_ID", "build-manifest.json"};
constexpr std::array<CacheFolder, 4> javascriptFolders{{
    {"node_modules", "npm install", packageJson, installedPackages},
    {".next", "npm run build", packageJson, nextBuild},
    {"dist", "npm run build", packageJson, {}},
    {"build", "npm run build", packageJson, {}},
}};

constexpr Names<1> cargoToml{"Cargo.toml"};
constexpr Names<1> rustcInfo{".rustc_info.json"};
constexpr std::array<CacheFolder, 1> rustFolders{{{"target", "cargo build", cargoToml, rustcInfo}}};

constexpr Names<6> pythonProject{"pyproject.toml",   "setup.py", "setup.cfg",
                                 "requirements.txt", "Pipfile",  "poetry.lock"};
constexpr Names<3> pythonPackage{"pyproject.toml", "setup.py", "setup.cfg"};
constexpr Names<1> byteCode{"*.pyc"};
constexpr Names<1> virtualEnvironment{"pyvenv.cfg"};
constexpr std::array<CacheFolder, 4> pythonFolders{{
    {"__pycache__", "", pythonProject, byteCode},
    {".venv", "python3 -m venv .venv", pythonProject, virtualEnvironment},
    {"dist", "python3 -m build", pythonPackage, {}, false},
    {"build", "python3 -m build", pythonPackage, {}, false},
}};

constexpr Names<4> gradleProject{"build.gradle", "build.gradle.kts", "settings.gradle",
                                 "settings.gradle.kts"};
constexpr Names<1> mavenProject{"pom.xml"};
constexpr std::array<CacheFolder, 3> jvmFolders{{
    {".gradle", "gradle build", gradleProject, {}},
    {"build", "gradle build", gradleProject, {}, false},
    {"target", "mvn package", mavenProject, {}, false},
}};

constexpr Names<1> composerJson{"composer.json"};
constexpr std::array<CacheFolder, 1> phpFolders{{{"vendor", "composer install", composerJson, {}}}};

constexpr Names<3> xcodeProject{"*.xcodeproj", "*.xcworkspace", "Package.swift"};
constexpr Names<2> xcodeBuild{"ModuleCache.noindex", "CompilationCache.noindex"};
constexpr std::array<CacheFolder, 1> xcodeFolders{{{"DerivedData", "xcodebuild", xcodeProject, xcodeBuild}}};

/// In the order of the cases.
constexpr std::array<EcosystemRow, 6> ecosystemRows{{
    {{"javascript", "JavaScript", "shippingbox"}, javascriptFolders},
    {{"rust", "Rust", "gearshape.2"}, rustFolders},
    {{"python", "Python", "ladybug"}, pythonFolders},
    {{"jvm", "JVM / Gradle", "cup.and.saucer"}, jvmFolders},
    {{"php", "PHP", "chevron.left.forwardslash.chevron.right"}, phpFolders},
    {{"xcode", "Xcode", "hammer"}, xcodeFolders},
}};

} // namespace

constinit const std::array<Ecosystem, 6> Ecosystem::all{javascript, rust, python, jvm, php, xcode};

std::optional<Ecosystem> Ecosystem::first(std::string_view name)
{
    const auto* const found = std::ranges::find_if(all, [name](Ecosystem ecosystem) {
        const CacheFolder* const folder = ecosystem.folder(name);
        return folder != nullptr && folder->isSearched;
    });
    return found != all.end() ? std::optional{*found} : std::nullopt;
}

std::optional<Ecosystem> Ecosystem::of(const Entry& cache)
{
    return cache.ecosystem > 0 && cache.ecosystem <= all.size() ? std::optional{all[cache.ecosystem - 1]}
                                                                : first(cache.name);
}

CaseNames Ecosystem::namesOf(const Entry& cache)
{
    const auto ecosystem = of(cache);
    return ecosystem ? namesAt(ecosystem->index()) : CaseNames{{}, {}, "folder.fill"};
}

double Ecosystem::orderOf(const Entry& cache)
{
    return static_cast<double>(of(cache).value_or(all.back()).index());
}

std::uint8_t Ecosystem::stored(const std::optional<Ecosystem>& ecosystem) noexcept
{
    return ecosystem ? static_cast<std::uint8_t>(ecosystem->index() + 1) : std::uint8_t{0};
}

const CacheFolder* Ecosystem::folder(std::string_view name) const noexcept
{
    const std::span<const CacheFolder> folders = ecosystemRows[index()].folders;
    const auto found = std::ranges::find(folders, name, &CacheFolder::name);
    return found != folders.end() ? &*found : nullptr;
}

FolderNames Ecosystem::ruleNames(const std::set<Ecosystem>& ecosystems)
{
    FolderNames names;
    for (const Ecosystem ecosystem : ecosystems) {
        for (const CacheFolder& folder : ecosystemRows.at(ecosystem.index()).folders) {
            if (folder.isSearched) {
                names.emplace(folder.name);
            }
        }
    }
    return names;
}

const CaseNames& Ecosystem::namesAt(std::size_t index) noexcept
{
    return ecosystemRows[index].names;
}

} // namespace tallyroom
