#include "Model/Entry.h"

#include <type_traits>

std::size_t std::hash<tallyroom::Entry>::operator()(const tallyroom::Entry& entry) const noexcept
{
    std::size_t seed = 0;
    const auto feed = [&seed](const auto& value) {
        seed ^= std::hash<std::decay_t<decltype(value)>>{}(value) + 0x9e3779b97f4a7c15ULL + (seed << 6U) +
                (seed >> 2U);
    };
    feed(entry.url);
    feed(entry.name);
    feed(entry.sizeBytes);
    feed(entry.isDirectory);
    feed(entry.modifiedAt.has_value());
    if (entry.modifiedAt) {
        feed(entry.modifiedAt->time_since_epoch().count());
    }
    return seed;
}
