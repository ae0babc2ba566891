#include "Text/TextFilter.h"

#include "Text/Utf8.h"

#include <algorithm>

namespace tallyroom {

namespace {

char loweredAscii(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

QString composed(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()))
        .toLower()
        .normalized(QString::NormalizationForm_C);
}

} // namespace

TextFilter::TextFilter(const QString& searchText)
    : m_lowered(composed(searchText.toStdString())), m_folded(folded(searchText.toStdString())),
      m_isAscii(Utf8::isAscii(m_folded))
{}

std::string TextFilter::folded(std::string_view text)
{
    if (Utf8::isAscii(text)) {
        std::string result{text};
        std::ranges::transform(result, result.begin(), loweredAscii);
        return result;
    }
    QString letters = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()))
                          .normalized(QString::NormalizationForm_KD)
                          .toCaseFolded();
    letters.removeIf([](QChar letter) { return letter.category() == QChar::Mark_NonSpacing; });
    return letters.toStdString();
}

bool TextFilter::matches(std::string_view text) const
{
    if (m_lowered.isEmpty()) {
        return true;
    }
    const bool hasLetters = !m_folded.empty(); // a lone accent folds to nothing, which occurs everywhere
    if (Utf8::isAscii(text)) {
        return hasLetters && m_isAscii && !std::ranges::search(text, m_folded, {}, loweredAscii).empty();
    }
    return (hasLetters && folded(text).find(m_folded) != std::string::npos) ||
           composed(text).contains(m_lowered);
}

bool TextFilter::begins(std::string_view text) const
{
    if (!Utf8::isAscii(text)) {
        return folded(text).starts_with(m_folded);
    }
    return m_isAscii && std::ranges::equal(text.substr(0, m_folded.size()), m_folded, {}, loweredAscii);
}

} // namespace tallyroom
