#include "Scanning/ScanCache.h"

namespace tallyroom {

ScanCache& ScanCache::shared()
{
    static ScanCache& cache = *new ScanCache; // NOLINT(cppcoreguidelines-owning-memory)
    return cache;
}

std::optional<Listing> ScanCache::find(const FileUrl& url)
{
    const std::string key = url.standardized().path();
    const std::scoped_lock lock{m_mutex};
    const auto found = m_store.find(key);
    if (found == m_store.end()) {
        return std::nullopt;
    }
    m_order.splice(m_order.end(), m_order, found->second);
    return found->second->listing;
}

void ScanCache::store(const FileUrl& url, const Listing& listing, std::uint64_t epoch)
{
    Order dropped; // destroyed after the lock
    const std::string key = url.standardized().path();
    const std::scoped_lock lock{m_mutex};
    if (epoch != m_epoch) {
        return;
    }
    if (const auto found = m_store.find(key); found != m_store.end()) {
        dropped.splice(dropped.end(), m_order, found->second);
        m_store.erase(found);
    }
    m_order.push_back({key, listing});
    m_store.emplace(key, std::prev(m_order.end()));
    if (m_order.size() > capacity) {
        m_store.erase(m_order.front().key);
        dropped.splice(dropped.end(), m_order, m_order.begin());
    }
}

std::uint64_t ScanCache::epoch() const
{
    const std::scoped_lock lock{m_mutex};
    return m_epoch;
}

void ScanCache::remove(const FileUrl& url)
{
    Order dropped; // destroyed after the lock
    const std::string key = url.standardized().path();
    const std::scoped_lock lock{m_mutex};
    ++m_epoch;
    if (const auto found = m_store.find(key); found != m_store.end()) {
        dropped.splice(dropped.end(), m_order, found->second);
        m_store.erase(found);
    }
}

void ScanCache::removeAround(const FileUrl& url)
{
    Order dropped; // destroyed after the lock
    const std::string key = url.standardized().path();
    const std::scoped_lock lock{m_mutex};
    ++m_epoch;
    for (auto kept = m_order.begin(); kept != m_order.end();) {
        const auto next = std::next(kept);
        if (isWithin(kept->key, key) || isWithin(key, kept->key)) {
            m_store.erase(kept->key);
            dropped.splice(dropped.end(), m_order, kept);
        }
        kept = next;
    }
}

void ScanCache::clear()
{
    Order dropped; // destroyed after the lock
    const std::scoped_lock lock{m_mutex};
    ++m_epoch;
    dropped.swap(m_order);
    m_store.clear();
}

} // namespace tallyroom
