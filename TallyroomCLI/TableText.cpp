#include "TableText.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tallyroom::TableText {

std::string_view colourOf(FileKind kind)
{
    switch (kind) {
    case FileKind::folder:
        return "\033[34m";
    case FileKind::image:
        return "\033[95m";
    case FileKind::video:
        return "\033[35m";
    case FileKind::audio:
        return "\033[35m";
    case FileKind::archive:
        return "\033[33m";
    case FileKind::code:
        return "\033[94m";
    case FileKind::document:
        return "\033[37m";
    case FileKind::spreadsheet:
        return "\033[32m";
    case FileKind::data:
        return "\033[36m";
    case FileKind::diskImage:
        return "\033[93m";
    case FileKind::other:
        return "\033[39m";
    }
    return {};
}

std::size_t barWidth(std::size_t columns)
{
    constexpr std::size_t leastWidthForBars = 60;
    return columns < leastWidthForBars ? 0 : std::min<std::size_t>(columns / 4, 30);
}

std::string bar(double fraction, std::size_t width)
{
    static constexpr std::array<std::string_view, 8> parts{"", "▏", "▎", "▍", "▌", "▋", "▊", "▉"};
    const auto eighths = static_cast<std::size_t>(std::lround(fraction * static_cast<double>(width * 8)));
    std::string text;
    for (std::size_t full = 0; full < eighths / 8; ++full) {
        text += "█";
    }
    const std::string_view last = parts.at(eighths % 8);
    text += last;
    text.append(width - eighths / 8 - (last.empty() ? 0 : 1), ' ');
    return text;
}

std::size_t columnsOf(std::string_view text)
{
    return static_cast<std::size_t>(std::ranges::count_if(
        text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }));
}

std::string rightAligned(std::string_view text, std::size_t width)
{
    return std::string(width - std::min(width, columnsOf(text)), ' ').append(text);
}

std::string leftAligned(std::string_view text, std::size_t width)
{
    return std::string{text}.append(width - std::min(width, columnsOf(text)), ' ');
}

} // namespace tallyroom::TableText
