#include "Text/SizeFormatter.h"

#include <array>
#include <clocale>
#include <cmath>
#include <langinfo.h>
#include <string_view>

namespace tallyroom::SizeFormatter {

namespace {

std::string localeSeparator()
{
    // A locale of our own: the process's one belongs to the program around us.
    locale_t locale = newlocale(LC_NUMERIC_MASK | LC_CTYPE_MASK, "", nullptr);
    if (locale == nullptr) {
        locale = newlocale(LC_NUMERIC_MASK, "", nullptr); // an unknown LC_CTYPE, as some terminals set it
    }
    if (locale == nullptr) {
        return ",";
    }
    const char* const name = nl_langinfo_l(NL_LOCALE_NAME(LC_NUMERIC), locale);
    const std::string_view chosen = name == nullptr ? std::string_view{"C"} : name;
    const bool unset = chosen.empty() || chosen == "C" || chosen == "POSIX" || chosen.starts_with("C.");
    const char* const radix = nl_langinfo_l(RADIXCHAR, locale);
    std::string separator = unset || radix == nullptr || *radix == '\0' ? "," : radix;
    freelocale(locale);
    return separator;
}

} // namespace

const std::string& decimalSeparator()
{
    static const std::string separator = localeSeparator();
    return separator;
}

std::string string(std::int64_t bytes)
{
    static constexpr std::array<std::string_view, 6> units{"o", "Ko", "Mo", "Go", "To", "Po"};
    if (bytes <= 999) {
        return std::to_string(bytes) + " o";
    }
    double value = static_cast<double>(bytes) / 1000;
    std::size_t unit = 1;
    while (value >= 1000 && unit + 1 < units.size()) {
        value /= 1000;
        ++unit;
    }
    value = std::round(value * 10) / 10;
    const double whole = std::trunc(value);
    std::string text = std::to_string(static_cast<std::int64_t>(whole));
    if (value != whole) {
        text += decimalSeparator() + std::to_string(std::lround((value - whole) * 10));
    }
    return text.append(" ").append(units.at(unit));
}

} // namespace tallyroom::SizeFormatter
