#include "Duplicates/PathPool.h"

#include <algorithm>
#include <utility>

namespace tallyroom {

std::uint32_t PathPool::add(std::uint32_t parent, std::string name)
{
    m_folders.push_back({parent, std::move(name)});
    return static_cast<std::uint32_t>(m_folders.size() - 1);
}

std::string PathPool::path(std::uint32_t folder, const std::string& name) const
{
    // From the leaf up: lengths first, then the names from the end of the text.
    std::size_t length = name.size();
    for (std::uint32_t id = folder; id != none; id = m_folders[id].parent) {
        length += (m_folders[id].name == "/" ? 0 : m_folders[id].name.size()) + 1;
    }
    std::string path(length, '/');
    auto end = length;
    const auto place = [&path, &end](const std::string& step) {
        end -= step.size();
        std::ranges::copy(step, path.begin() + static_cast<std::ptrdiff_t>(end));
    };
    place(name);
    for (std::uint32_t id = folder; id != none && end > 1; id = m_folders[id].parent) {
        --end; // the slash before it
        place(m_folders[id].name);
    }
    return path;
}

} // namespace tallyroom
