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

    /// Under which it lies now.
    [[nodiscard]] const std::string& name() const noexcept { return m_name; }

    /// Gives it its own name back. Where somebody has taken that, it stays, and these are the words for it.
    [[nodiscard]] std::string putBack() const;

private:
    AsideItem(const ItemPlace& place, std::string name);

    const ItemPlace* m_place;
    std::string m_name;
};

} // namespace tallyroom
