#pragma once

#include "Model/ClosedSet.h"
#include "Model/Entry.h"
#include "Model/FolderNames.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <string_view>
#include <utility>

namespace tallyroom {

/// A folder that an ecosystem's tools make, and what tells it from a person's own folder of the same name.
struct CacheFolder {
    std::string_view name;
    /// The command that makes it again; empty where the next run does by itself.
    std::string_view remedy;
    /// Files of a project, one of which lies beside it; "*.end" stands for any name with that end.
    std::span<const std::string_view> markers;
    /// What only the tool makes in it; the same.
    std::span<const std::string_view> traces;
    /// Whether searches look for the name; the others belong to names that another ecosystem looks for.
    bool isSearched = true;
};

/// A build ecosystem, with the folders that its tools can regenerate. Any thread.
class Ecosystem : public ClosedSet<Ecosystem> {
public:
    enum class Value : unsigned char { javascript, rust, python, jvm, php, xcode };
    using enum Value;

    /// Every ecosystem, in the order in which a folder's name is looked up.
    static const std::array<Ecosystem, 6> all;

    // NOLINTBEGIN(google-explicit-constructor): an ecosystem is its value, and switch sees the cases.
    constexpr Ecosystem(Value value) noexcept : ClosedSet(std::to_underlying(value)) {}

    constexpr operator Value() const noexcept { return static_cast<Value>(index()); }

    // NOLINTEND(google-explicit-constructor)

    /// The first ecosystem that makes folders called `name`, letter by letter.
    [[nodiscard]] static std::optional<Ecosystem> first(std::string_view name);

    /// The ecosystem that a search has told for a cache, else the first one by its name.
    [[nodiscard]] static std::optional<Ecosystem> of(const Entry& cache);

    /// How the ecosystem of a cache is named; a plain folder where none is known.
    [[nodiscard]] static CaseNames namesOf(const Entry& cache);

    /// Its place in their order, to sort by; the last one where none is known.
    [[nodiscard]] static double orderOf(const Entry& cache);

    /// How entries keep it; 0 stands for none.
    [[nodiscard]] static std::uint8_t stored(const std::optional<Ecosystem>& ecosystem) noexcept;

    /// The folder called `name` that its tools make; null when they make none.
    [[nodiscard]] const CacheFolder* folder(std::string_view name) const noexcept;

    /// The names of the folders of all `ecosystems`.
    [[nodiscard]] static FolderNames ruleNames(const std::set<Ecosystem>& ecosystems);

private:
    friend ClosedSet;

    static const CaseNames& namesAt(std::size_t index) noexcept;
};

} // namespace tallyroom
