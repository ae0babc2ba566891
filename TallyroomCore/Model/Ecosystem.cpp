#include "Model/Ecosystem.h"

#include <algorithm>
#include <span>

namespace tallyroom {

namespace {

struct EcosystemRow {
    std::string_view rawValue;
    std::string_view displayName;
    std::string_view symbolName;
    std::span<const std::string_view> folders;
};

constexpr std::array<std::string_view, 4> javascriptFolders{"node_modules", ".next", "dist", "build"};
constexpr std::array<std::string_view, 1> rustFolders{"target"};
constexpr std::array<std::string_view, 2> pythonFolders{"__pycache__", ".venv"};
constexpr std::array<std::string_view, 1> jvmFolders{".gradle"};
constexpr std::array<std::string_view, 1> phpFolders{"vendor"};
constexpr std::array<std::string_view, 1> xcodeFolders{"DerivedData"};

/// In the order of the cases.
constexpr std::array<EcosystemRow, 6> ecosystemRows{{
    {"javascript", "JavaScript", "shippingbox", javascriptFolders},
    {"rust", "Rust", "gearshape.2", rustFolders},
    {"python", "Python", "ladybug", pythonFolders},
    {"jvm", "JVM / Gradle", "cup.and.saucer", jvmFolders},
    {"php", "PHP", "chevron.left.forwardslash.chevron.right", phpFolders},
    {"xcode", "Xcode", "hammer", xcodeFolders},
}};

} // namespace

constinit const std::array<Ecosystem, 6> Ecosystem::all{javascript, rust, python, jvm, php, xcode};

std::optional<Ecosystem> Ecosystem::fromRawValue(std::string_view text)
{
    const auto* const found = std::ranges::find(all, text, &Ecosystem::rawValue);
    return found != all.end() ? std::optional{*found} : std::nullopt;
}

std::optional<Ecosystem> Ecosystem::first(std::string_view name)
{
    const auto* const found = std::ranges::find_if(all, [name](Ecosystem ecosystem) {
        const auto names = ecosystemRows.at(ecosystem.index()).folders;
        return std::ranges::find(names, name) != names.end();
    });
    return found != all.end() ? std::optional{*found} : std::nullopt;
}

FolderNames Ecosystem::ruleNames(const std::set<Ecosystem>& ecosystems)
{
    FolderNames names;
    for (const Ecosystem ecosystem : ecosystems) {
        for (const std::string_view name : ecosystemRows.at(ecosystem.index()).folders) {
            names.emplace(name);
        }
    }
    return names;
}

std::string_view Ecosystem::rawValue() const noexcept
{
    return ecosystemRows[index()].rawValue;
}

std::string_view Ecosystem::displayName() const noexcept
{
    return ecosystemRows[index()].displayName;
}

std::string_view Ecosystem::symbolName() const noexcept
{
    return ecosystemRows[index()].symbolName;
}

} // namespace tallyroom
