#include "Terminal.h"

#include "Text/Utf8.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tallyroom::Terminal {

namespace {

constexpr std::size_t usualColumns = 80;

std::string escaped(unsigned char byte)
{
    switch (byte) {
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    default:
        break;
    }
    std::array<char, 5> text{};
    std::snprintf(text.data(), text.size(), "\\x%02x", static_cast<unsigned>(byte));
    return text.data();
}

bool isHarmless(char32_t code)
{
    return code >= 0x20 && code != 0x7F && !Utf8::turnsOrBreaks(code);
}

} // namespace

bool outputIsTerminal()
{
    return ::isatty(STDOUT_FILENO) == 1;
}

bool errorIsTerminal()
{
    return ::isatty(STDERR_FILENO) == 1;
}

bool showsColours()
{
    const char* const refused = std::getenv("NO_COLOR");
    const char* const kind = std::getenv("TERM");
    const bool canColour = kind != nullptr && std::string_view{kind} != "dumb";
    return outputIsTerminal() && canColour && (refused == nullptr || *refused == '\0');
}

std::size_t columns()
{
    winsize size = {};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
        return size.ws_col;
    }
    const char* const stated = std::getenv("COLUMNS");
    const long number = stated == nullptr ? 0 : std::strtol(stated, nullptr, 10);
    return number > 0 && number < 10'000 ? static_cast<std::size_t>(number) : usualColumns;
}

std::string printable(std::string_view name)
{
    std::string text;
    text.reserve(name.size());
    while (!name.empty()) {
        const std::size_t length = Utf8::characterLength(name);
        const std::string_view character = name.substr(0, std::max<std::size_t>(length, 1));
        if (length == 0 || !isHarmless(Utf8::codePoint(character))) {
            for (const char byte : character) {
                text += escaped(static_cast<unsigned char>(byte));
            }
        } else {
            text.append(character);
        }
        name.remove_prefix(character.size());
    }
    return text;
}

} // namespace tallyroom::Terminal
