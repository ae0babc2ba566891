// Names on their way to the screen, and folders named on the command line, typed or dropped.
#include "Require.h"
#include "Text/FileUrlText.h"
#include "Text/TextFilter.h"

#include <algorithm>

namespace {

using namespace tallyroom;

bool canBeDrawn(QChar character)
{
    return character.unicode() >= 0x20 && character.unicode() != 0x7F;
}

void checkDisplay(const std::string& name)
{
    const QString shown = FileUrlText::display(name);
    require(name.empty() == shown.isEmpty(), "every name shows");
    require(std::ranges::all_of(shown, canBeDrawn), "no control character is drawn");
    require(FileUrlText::display(shown.toStdString()) == shown, "what is shown shows as itself");
}

void checkPlaces(const std::string& text)
{
    const FileUrl base{"/base"};
    if (const auto place = FileUrlText::parse(text, base)) {
        require(place->path().starts_with('/') && place->standardized() == *place, "a place is absolute");
        require(FileUrlText::parse(place->percentEncoded(), base) == *place, "its URL leads to it");
        const QUrl dropped = QUrl::fromEncoded(QByteArray::fromStdString(place->percentEncoded()));
        require(FileUrlText::fromUrl(dropped) == *place, "dropped, it leads to it");
    }
    const auto fromUrl = FileUrlText::fromUrl(QUrl{QString::fromStdString(text)});
    require(!fromUrl || fromUrl->path().starts_with('/'), "a dropped URL is a place");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string all = bytes(data, size);
    const std::size_t middle = std::min(all.find('\n'), all.size()); // a search text, then a name
    checkDisplay(all);
    checkPlaces(all);
    const TextFilter filter{QString::fromStdString(all.substr(0, middle))};
    require(middle > 0 || filter.matches(all), "an empty search finds all");
    (void)filter.matches(all.substr(middle));
    return 0;
}
