#include "FileSystem/UnreadPlaces.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tallyroom {

void UnreadPlaces::keepFirst()
{
    std::ranges::sort(places, {}, &UnreadPlace::url);
    if (places.size() > limit) {
        places.erase(places.begin() + limit, places.end());
    }
}

void UnreadPlaces::add(UnreadPlaces others)
{
    count += others.count;
    excluded += others.excluded;
    hasItems = hasItems || others.hasItems;
    std::ranges::move(others.places, std::back_inserter(places));
    keepFirst();
}

void UnreadLedger::add(UnreadPlace place)
{
    const std::scoped_lock lock{m_mutex};
    ++m_places.count;
    m_places.excluded += place.error.isExclusion() ? 1 : 0;
    m_places.hasItems = m_places.hasItems || !place.isFolder;
    m_places.places.push_back(std::move(place));
    if (m_places.places.size() >= 2 * UnreadPlaces::limit) {
        m_places.keepFirst();
    }
}

SharedUnreadPlaces UnreadLedger::places() const
{
    const std::scoped_lock lock{m_mutex};
    if (m_places.count == 0) {
        return nullptr;
    }
    auto places = std::make_shared<UnreadPlaces>(m_places);
    places->keepFirst();
    return places;
}

} // namespace tallyroom
