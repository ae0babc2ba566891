#include "Rows/AbsentChecks.h"

#include <utility>

namespace tallyroom {

namespace {

EntryList listOf(const UrlSet& urls)
{
    std::vector<Entry> entries;
    entries.reserve(urls.size());
    for (const FileUrl& url : urls) {
        entries.push_back({.url = url, .name = {}, .modifiedAt = {}});
    }
    return EntryList{std::move(entries)};
}

} // namespace

AbsentChecks::AbsentChecks(const UrlSet& urls)
    : AbsentChecks(listOf(urls), PositionSet::upTo(urls.size()), nullptr)
{}

AbsentChecks::AbsentChecks(EntryList list, PositionSet checked, std::shared_ptr<const AbsentChecks> older)
    : m_list(std::move(list)), m_checked(std::move(checked)), m_older(std::move(older))
{}

bool AbsentChecks::contains(const FileUrl& url) const
{
    std::call_once(m_indexed, [this] {
        m_isChecked.reserve(m_list.size());
        for (std::uint32_t position = 0; position < m_list.size(); ++position) {
            m_isChecked.emplace(m_list[position].url.path(), m_checked.contains(position));
        }
    });
    const auto known = m_isChecked.find(url.path());
    return known != m_isChecked.end() ? known->second : m_older != nullptr && m_older->contains(url);
}

PositionSet AbsentChecks::foundIn(const EntryList& entries) const
{
    PositionSet found;
    for (std::uint32_t position = 0; position < entries.size(); ++position) {
        if (contains(entries[position].url)) {
            found.insert(position);
        }
    }
    return found;
}

} // namespace tallyroom
