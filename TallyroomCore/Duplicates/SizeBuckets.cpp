#include "Duplicates/SizeBuckets.h"

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

void SizeBuckets::add(SearchedFolder& folder, Candidate candidate)
{
    const std::int64_t size = candidate.size;
    const auto index = static_cast<std::uint32_t>(m_tracked.size());
    candidate.folder = idOf(folder);
    m_tracked.push_back(std::move(candidate));
    if (const auto known = m_repeated.find(size); known != m_repeated.end()) {
        known->second.push_back(index);
        return;
    }
    const auto [first, isNew] = m_firstSeen.try_emplace(size, index);
    if (!isNew) {
        m_repeated.emplace(size, std::vector{first->second, index});
        m_firstSeen.erase(first);
    }
}

std::vector<Candidate> SizeBuckets::takeRepeated()
{
    std::size_t count = 0;
    for (const auto& [size, indices] : m_repeated) {
        count += indices.size();
    }
    std::vector<Candidate> repeated;
    repeated.reserve(count);
    for (const auto& [size, indices] : m_repeated) {
        std::ranges::transform(indices, std::back_inserter(repeated),
                               [this](std::uint32_t index) { return std::move(m_tracked[index]); });
    }
    m_firstSeen = {};
    m_repeated = {};
    m_tracked = {};
    return repeated;
}

std::uint32_t SizeBuckets::idOf(SearchedFolder& folder)
{
    std::vector<SearchedFolder*> unknown; // from the folder up to the first known one
    TreeWalk::Folder* above = &folder;
    for (; above != nullptr && static_cast<SearchedFolder*>(above)->id == PathPool::none;
         above = above->parent()) {
        unknown.push_back(static_cast<SearchedFolder*>(above));
    }
    std::uint32_t id = above == nullptr ? PathPool::none : static_cast<SearchedFolder*>(above)->id;
    for (auto next = unknown.rbegin(); next != unknown.rend(); ++next) {
        id = m_folders.add(id, (*next)->name());
        (*next)->id = id;
    }
    return id;
}

} // namespace tallyroom
