#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace tallyroom {

/// The folders that hold candidates, as a tree of names: a deep tree costs no more than its names.
class PathPool {
public:
    static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

    /// Adds a folder below one that is known; `parent` is `none` for the root, whose name is its path.
    std::uint32_t add(std::uint32_t parent, std::string name);

    /// As many as were added; their numbers count up from 0.
    [[nodiscard]] std::size_t size() const noexcept { return m_folders.size(); }

    /// The path of an item in a folder.
    [[nodiscard]] std::string path(std::uint32_t folder, const std::string& name) const;

private:
    struct Folder {
        std::uint32_t parent = none;
        std::string name;
    };

    std::vector<Folder> m_folders;
};

} // namespace tallyroom
