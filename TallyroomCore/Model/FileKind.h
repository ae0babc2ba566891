#pragma once

#include "Model/Entry.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

namespace tallyroom {

/// The category that decides an entry's icon, label and colour. Any thread.
class FileKind {
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

    constexpr FileKind(Value value) noexcept : m_value(value) {} // NOLINT: a kind is its value

    constexpr operator Value() const noexcept { return m_value; } // NOLINT: so that switch sees the cases

    /// Its place in `all`.
    [[nodiscard]] constexpr std::size_t index() const noexcept { return std::to_underlying(m_value); }

    /// The kind whose raw value is `text`, letter by letter; nothing for any other text.
    [[nodiscard]] static std::optional<FileKind> fromRawValue(std::string_view text);

    /// `folder` for a folder whatever its name; else the kind of the last component's extension.
    [[nodiscard]] static FileKind of(const Entry& entry);

    /// The kind of a bare extension in any letter case; a leading dot is not removed. `other` when unknown.
    [[nodiscard]] static FileKind of(std::string_view extension);

    /// The case's name.
    [[nodiscard]] std::string_view rawValue() const noexcept;

    /// The French name of the kind's files, in the plural.
    [[nodiscard]] std::string_view displayName() const noexcept;

    /// The name of the icon that stands for the kind.
    [[nodiscard]] std::string_view symbolName() const noexcept;

private:
    Value m_value;
};

} // namespace tallyroom
