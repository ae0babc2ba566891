#pragma once

#include "Model/ClosedSet.h"
#include "Model/Entry.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

namespace tallyroom {

/// The category that decides an entry's icon, label and colour. Any thread.
class FileKind : public ClosedSet<FileKind> {
public:
    enum class Value : unsigned char {
        folder,
        image,
        video,
        audio,
        archive,
        code,
        document,
        spreadsheet,
        data,
        diskImage,
        other
    };
    using enum Value;

    /// Every kind, in the order of declaration.
    static const std::array<FileKind, 11> all;

    // NOLINTBEGIN(google-explicit-constructor): a kind is its value, and switch sees the cases.
    constexpr FileKind(Value value) noexcept : ClosedSet(std::to_underlying(value)) {}

    constexpr operator Value() const noexcept { return static_cast<Value>(index()); }

    // NOLINTEND(google-explicit-constructor)

    /// `folder` for a folder whatever its name; else the kind of the last component's extension.
    [[nodiscard]] static FileKind of(const Entry& entry);

    /// The kind of a bare extension in any letter case; a leading dot is not removed. `other` when unknown.
    [[nodiscard]] static FileKind of(std::string_view extension);

private:
    friend ClosedSet;

    static const CaseNames& namesAt(std::size_t index) noexcept;
};

} // namespace tallyroom
