#include "Terminal.h"

#include "Text/Utf8.h"

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
    for (std::size_t i = 0; i < name.size();) {
        const std::size_t length = Utf8::characterLength(name.substr(i));
        const auto first = static_cast<unsigned char>(name[i]);
        // C1 control characters are two bytes, c2 80 to c2 9f.
        const bool isControl =
            (length == 1 && (first < 0x20 || first == 0x7F)) ||
            (length == 2 && first == 0xC2 && static_cast<unsigned char>(name[i + 1]) < 0xA0);
        if (length == 0 || isControl) {
            for (std::size_t end = i + std::max<std::size_t>(length, 1); i < end; ++i) {
                text += escaped(static_cast<unsigned char>(name[i]));
            }
        } else {
            text.append(name.substr(i, length));
            i += length;
        }
    }
    return text;
}

} // namespace tallyroom::Terminal
