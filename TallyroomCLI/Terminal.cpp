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

std::string hexadecimal(const char* format, unsigned number)
{
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), format, number);
    return text.data();
}

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
    return hexadecimal("\\x%02x", byte);
}

std::string escapedBytes(std::string_view character)
{
    std::string text;
    for (const char byte : character) {
        text += escaped(static_cast<unsigned char>(byte));
    }
    return text;
}

std::string escapedCodePoint(std::string_view character)
{
    return hexadecimal("\\u%04x", Utf8::codePoint(character)); // none of them lies beyond four digits
}

bool isHarmless(char32_t code)
{
    return code >= 0x20 && code != 0x7F && !Utf8::isInvisibleOrBidiControl(code);
}

/// Most of any text: harmless without a further look.
bool isPlain(char byte)
{
    return byte >= 0x20 && byte < 0x7F;
}

/// The text with `escape` of each character that is not harmless.
std::string withoutHarm(std::string_view text, std::string (*escape)(std::string_view character))
{
    std::string result;
    result.reserve(text.size());
    while (true) {
        const auto plain = std::ranges::find_if_not(text, isPlain) - text.begin();
        result += text.substr(0, static_cast<std::size_t>(plain));
        text.remove_prefix(static_cast<std::size_t>(plain));
        if (text.empty()) {
            return result;
        }
        const std::size_t length = Utf8::characterLength(text);
        const std::string_view character = text.substr(0, std::max<std::size_t>(length, 1));
        if (length == 0 || !isHarmless(Utf8::codePoint(character))) {
            result += escape(character);
        } else {
            result += character;
        }
        text.remove_prefix(character.size());
    }
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
    return withoutHarm(name, escapedBytes);
}

std::string printableJson(std::string_view object)
{
    return withoutHarm(object, escapedCodePoint);
}

void complain(std::string_view text)
{
    const std::string line = "tallyroom-cli : " + printable(text) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

} // namespace tallyroom::Terminal
