#include "Model/Ecosystem.h"

#include <algorithm>

namespace tallyroom {

namespace {

struct EcosystemRow {
    std::string_view rawValue;
    std::string_view displayName;
    std::string_view symbolName;
    std::array<std::string_view, 4> folders;
    std::size_t folderCount;
};

constexpr std::array<EcosystemRow, 6> ecosystemRows{{
    {"javascript", "JavaScript", "shippingbox", {"node_modules", ".next", "dist", "build"}, 4},
    {"rust", "Rust", "gearshape.2", {"target"}, 1},
    {"python", "Python", "ladybug", {"__pycache__", ".venv"}, 2},
    {"jvm", "JVM / Gradle", "cup.and.saucer", {".gradle"}, 1},
    {"php", "PHP", "chevron.left.forwardslash.chevron.right", {"vendor"}, 1},
    {"xcode", "Xcode", "hammer", {"DerivedData"}, 1},
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
        const auto names = ecosystem.folderNames();
        return std::ranges::find(names, name) != names.end();
    });
    return found != all.end() ? std::optional{*found} : std::nullopt;
}

FolderNames Ecosystem::ruleNames(const std::set<Ecosystem>& ecosystems)
{
    FolderNames names;
    for (const Ecosystem ecosystem : ecosystems) {
        for (const std::string_view name : ecosystem.folderNames()) {
            names.emplace(name);
        }
    }
    return names;
}

std::string_view Ecosystem::rawValue() const noexcept
{
    return ecosystemRows[m_value].rawValue;
}

std::string_view Ecosystem::displayName() const noexcept
{
    return ecosystemRows[m_value].displayName;
}

std::string_view Ecosystem::symbolName() const noexcept
{
    return ecosystemRows[m_value].symbolName;
}

std::span<const std::string_view> Ecosystem::folderNames() const noexcept
{
    return std::span{ecosystemRows[m_value].folders}.first(ecosystemRows[m_value].folderCount);
}

} // namespace tallyroom
