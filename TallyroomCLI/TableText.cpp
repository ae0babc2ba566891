#include "TableText.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <ctime>

namespace tallyroom::TableText {

std::string_view colourOf(FileKind kind)
{
    static constexpr std::array<std::string_view, FileKind::all.size()> colours{
        "\033[34m", // folder
        "\033[95m", // image
        "\033[35m", // video
        "\033[35m", // audio
        "\033[33m", // archive
        "\033[94m", // code
        "\033[37m", // document
        "\033[32m", // spreadsheet
        "\033[36m", // data
        "\033[93m", // diskImage
        "\033[39m", // other
    };
    return colours[kind.index()];
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

std::string day(Timestamp moment)
{
    const std::time_t seconds =
        std::chrono::floor<std::chrono::seconds>(moment).time_since_epoch() / std::chrono::seconds{1};
    std::tm local = {};
    std::array<char, 32> text{};
    ::localtime_r(&seconds, &local);
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d", &local)};
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
