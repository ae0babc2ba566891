#pragma once

#include "FileSystem/SystemError.h"
#include "Removal/ItemPlace.h"

#include <string>

namespace tallyroom {

/// An item under another, hidden name of the same folder, until it is known whether it may go.
class AsideItem {
public:
    /// Renames the item. `place` must outlive this object.
    [[nodiscard]] static SystemResult<AsideItem> move(const ItemPlace& place);

    /// Its present name.
    [[nodiscard]] const std::string& name() const noexcept { return m_name; }

    /// Restores its name. If that is taken, the item stays and the result says so in words for people.
    [[nodiscard]] std::string putBack() const;

private:
    AsideItem(const ItemPlace& place, std::string name);

    const ItemPlace* m_place;
    std::string m_name;
};

} // namespace tallyroom
