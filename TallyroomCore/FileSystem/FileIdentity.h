#pragma once

#include "FileSystem/FileAttributes.h"

#include <cstdint>
#include <optional>

namespace tallyroom {

/// Which file a path led to, and its state when its content was read. Removing one of two paths to the same
/// file frees nothing.
struct FileIdentity : FileId {
    std::uint32_t links = 0;
    std::optional<Timestamp> modifiedAt;
    std::optional<Timestamp> changedAt;

    [[nodiscard]] static FileIdentity of(const FileAttributes& attributes)
    {
        return {attributes.id(), attributes.links, attributes.modifiedAt, attributes.changedAt};
    }

    [[nodiscard]] bool isSameFile(const FileId& other) const noexcept
    {
        return static_cast<const FileId&>(*this) == other;
    }

    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

} // namespace tallyroom
