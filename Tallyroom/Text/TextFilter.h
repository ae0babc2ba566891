#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace tallyroom {

/// A search text, and whether it occurs in a name or path, letter case and accents aside.
class TextFilter {
public:
    explicit TextFilter(const QString& searchText);

    /// True for every text while the search text is empty.
    [[nodiscard]] bool matches(std::string_view text) const;

    /// Whether `text` begins with the search text.
    [[nodiscard]] bool begins(std::string_view text) const;

    /// `text` without accents and letter case; bytes that are not UTF-8 become U+FFFD.
    [[nodiscard]] static std::string folded(std::string_view text);

private:
    QString m_lowered;
    std::string m_folded;
    bool m_isAscii = false; // m_folded, for the many names that are too
};

} // namespace tallyroom
