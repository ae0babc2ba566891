#pragma once

#include "Model/Entry.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace tallyroom {

/// Where entries lie, however the folder that they were scanned from was spelled: a folder and a link to it
/// lead to the same places. Fast for many entries of one scan in a row; one thread at a time.
class EntryPlaces {
public:
    /// Good until the next call, or as long as `entry`.
    [[nodiscard]] std::string_view of(const Entry& entry);

private:
    std::uint32_t m_root = 0; // whose spelling the following are
    std::string m_spelled;
    std::string m_real;
    std::string m_place;
};

} // namespace tallyroom
