#include "Removal/AsideItem.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <random>
#include <utility>

namespace tallyroom {

namespace {

std::string hiddenName()
{
    std::random_device source;
    const auto number = std::uniform_int_distribution<std::uint64_t>{}(source);
    std::array<char, 17> digits = {};
    std::snprintf(digits.data(), digits.size(), "%016llx", static_cast<unsigned long long>(number));
    return std::string{".tallyroom-"} + digits.data();
}

} // namespace

AsideItem::AsideItem(const ItemPlace& place, std::string name) : m_place(&place), m_name(std::move(name)) {}

SystemResult<AsideItem> AsideItem::move(const ItemPlace& place)
{
    AsideItem item{place, hiddenName()};
    const auto moved = moveWithoutReplacing(place.parent.get(), place.name, place.parent.get(), item.m_name);
    if (!moved) {
        return std::unexpected(moved.error());
    }
    return item;
}

std::string AsideItem::putBack() const
{
    const auto moved =
        moveWithoutReplacing(m_place->parent.get(), m_name, m_place->parent.get(), m_place->name);
    return moved ? std::string{} : " Il se trouve à présent sous le nom « " + m_name + " ».";
}

} // namespace tallyroom
