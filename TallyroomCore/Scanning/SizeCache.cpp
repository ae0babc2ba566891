#include "Scanning/SizeCache.h"

#include "Model/CheckedArithmetic.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <limits>
#include <ranges>
#include <utility>

namespace tallyroom {

namespace {

std::uint32_t hashOf(std::uint32_t parent, std::string_view name)
{
    const std::size_t hash = std::hash<std::string_view>{}(name) ^ (parent * 0x9e3779b97f4a7c15ULL);
    return static_cast<std::uint32_t>(hash ^ (hash >> 32U));
}

/// Sizes that need not be exact are kept in 16 bits, as floating-point numbers are: the number of places that
/// the 11 leading bits are shifted by, plus these bits, of which the first is always set. Rounded up, with an
/// error below one in a thousand.
constexpr unsigned bitsAfterFirst = 10;

std::uint16_t roundedUp(std::int64_t bytes)
{
    constexpr std::int64_t most = std::int64_t{1} << 62;
    const auto size = static_cast<std::uint64_t>(std::clamp<std::int64_t>(bytes, 0, most));
    const unsigned bits = std::max(static_cast<unsigned>(std::bit_width(size)), bitsAfterFirst + 1);
    const unsigned shift = bits - bitsAfterFirst - 1;
    const std::uint64_t leading = (size + (std::uint64_t{1} << shift) - 1) >> shift;
    return static_cast<std::uint16_t>((std::uint64_t{shift} << bitsAfterFirst) + leading); // may carry
}

/// No less than what was rounded up.
std::int64_t bytesOf(std::uint16_t rounded)
{
    const unsigned first = 1U << bitsAfterFirst;
    const unsigned shift = std::max(unsigned{rounded} >> bitsAfterFirst, 1U) - 1U;
    return static_cast<std::int64_t>(rounded - shift * first) << shift;
}

/// Doubling would leave up to half of a large store unused; growing by less would copy a small one often.
template <class Item>
void makeRoom(std::vector<Item>& items, std::size_t more)
{
    constexpr std::size_t small = (std::size_t{1} << 20) / sizeof(Item);
    if (items.size() + more > items.capacity()) {
        items.reserve(items.size() + more + std::max(std::min(items.size(), small), items.size() / 4));
    }
}

/// The names of a standardized path, from the top. An empty path, which is not the root, has one empty name.
template <class Visit>
bool forEachName(std::string_view path, Visit visit)
{
    if (path.empty()) {
        return visit(path);
    }
    for (std::size_t start = 1; start < path.size();) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        if (!visit(path.substr(start, end - start))) {
            return false;
        }
        start = end + 1;
    }
    return true;
}

} // namespace

SizeCache& SizeCache::shared()
{
    static SizeCache& cache = *new SizeCache; // NOLINT(cppcoreguidelines-owning-memory)
    return cache;
}

SizeCache::SizeCache() : m_store(emptyStore()) {}

SizeCache::Store SizeCache::emptyStore()
{
    Store store;
    store.records.emplace_back();
    store.contents.emplace_back();
    store.slots.resize(1024);
    return store;
}

std::optional<FolderSize> SizeCache::find(const FileUrl& url) const
{
    const FileUrl key = url.standardized();
    const std::scoped_lock lock{m_mutex};
    const auto record = known(key);
    return record ? sizeAt(*record) : std::nullopt;
}

std::optional<FolderSize> SizeCache::find(Place place) const
{
    const std::scoped_lock lock{m_mutex};
    return place.epoch == m_epoch ? sizeAt(place.record) : std::nullopt;
}

std::optional<FolderSize> SizeCache::sizeAt(std::uint32_t record) const
{
    const Record& known = m_store.records[record];
    if (known.total == unknown) {
        return std::nullopt;
    }
    const Content& content = m_store.contents[record];
    FolderSize size{.bytes = known.total,
                    .files = content.files,
                    .largestFile = bytesOf(content.largestFile),
                    .largestFolder = bytesOf(content.largestFolder),
                    .newest = content.newest};
    if (known.hasRemark) {
        const Remark& remark = m_store.remarks.at(record);
        size.unread = remark.unread;
        size.countedAgain = remark.countedAgain;
        size.hasUnreadItems = remark.hasUnreadItems;
        size.hasExcluded = remark.hasExcluded;
        size.isUnreadable = remark.isUnreadable;
    }
    return size;
}

void SizeCache::set(const FolderSize& size, const FileUrl& url)
{
    store(place(url), size);
}

SizeCache::Place SizeCache::place(const FileUrl& url)
{
    const FileUrl key = url.standardized();
    const std::scoped_lock lock{m_mutex};
    std::uint32_t record = 0;
    forEachName(key.path(), [&](std::string_view name) {
        record = child(record, name);
        return true;
    });
    return {m_epoch, record};
}

void SizeCache::lookUp(Place parent, std::span<Child> children)
{
    const std::scoped_lock lock{m_mutex};
    if (parent.epoch != m_epoch) {
        return;
    }
    for (Child& wanted : children) {
        wanted.place = {m_epoch, child(parent.record, wanted.name)};
        wanted.size = sizeAt(wanted.place.record);
    }
}

void SizeCache::store(Place place, const FolderSize& size, const std::optional<SystemError>& cause)
{
    constexpr std::int64_t mostFiles = std::numeric_limits<std::uint32_t>::max();
    const Content content{static_cast<std::uint32_t>(std::min(size.files, mostFiles)), size.newest,
                          roundedUp(size.largestFile), roundedUp(size.largestFolder)};
    const std::scoped_lock lock{m_mutex};
    if (place.epoch != m_epoch) {
        return;
    }
    Record& record = m_store.records[place.record];
    record.total = size.bytes;
    m_store.contents[place.record] = content;
    const bool isRemarkable = size.unread > 0 || size.countedAgain > 0;
    if (!isRemarkable && record.hasRemark) {
        m_store.remarks.erase(place.record); // an earlier walk was refused
    }
    record.hasRemark = isRemarkable;
    if (record.hasRemark) {
        m_store.remarks[place.record] = {.unread = size.unread,
                                         .countedAgain = size.countedAgain,
                                         .cause = cause ? cause->code : 0,
                                         .hasUnreadItems = size.hasUnreadItems,
                                         .hasExcluded = size.hasExcluded,
                                         .isUnreadable = size.isUnreadable};
    }
}

void SizeCache::noteUnread(Place folder, std::span<const UnreadItem> items)
{
    const std::scoped_lock lock{m_mutex};
    if (folder.epoch != m_epoch) {
        return;
    }
    for (const UnreadItem& item : items) {
        const std::uint32_t number = child(folder.record, item.name);
        m_store.records[number].hasRemark = true;
        m_store.remarks[number] = {.cause = item.error.code, .isItem = true};
    }
}

UnreadPlaces SizeCache::unreadPlaces(const FileUrl& url) const
{
    const FileUrl key = url.standardized();
    UnreadPlaces found;
    const std::scoped_lock lock{m_mutex};
    const auto folder = known(key);
    if (!folder) {
        return found;
    }
    for (const auto& [record, remark] : m_store.remarks) {
        if (remark.cause != 0 && isBelow(record, *folder)) {
            ++found.count;
            found.excluded += SystemError{remark.cause}.isExclusion() ? 1 : 0;
            found.hasItems = found.hasItems || remark.isItem;
            found.places.push_back({urlOf(record), {remark.cause}, !remark.isItem});
        }
    }
    found.keepFirst();
    return found;
}

std::optional<std::uint32_t> SizeCache::meetingPlace(Place folder,
                                                     std::span<const std::uint32_t> others) const
{
    const std::scoped_lock lock{m_mutex};
    if (folder.epoch != m_epoch) {
        return std::nullopt;
    }
    const auto isIn = [this, &folder](std::uint32_t other) { return isBelow(other, folder.record); };
    while (folder.record != 0 && std::ranges::none_of(others, isIn)) {
        folder.record = m_store.records[folder.record].parent;
    }
    return folder.record;
}

std::vector<std::int64_t> SizeCache::knownBelow(Place folder) const
{
    const std::scoped_lock lock{m_mutex};
    if (folder.epoch != m_epoch) {
        return {};
    }
    const std::vector<Record>& records = m_store.records;
    std::vector<std::int64_t> sums(records.size());
    // A folder's record comes before those of its children.
    for (std::size_t i = records.size(); i-- > folder.record + std::size_t{1};) {
        const Record& record = records[i];
        if (records[record.parent].total == unknown) {
            const std::int64_t bytes = record.total == unknown ? sums[i] : record.total;
            sums[record.parent] = saturatedSum(sums[record.parent], bytes);
        }
    }
    return sums;
}

bool SizeCache::isBelow(std::uint32_t record, std::uint32_t folder) const
{
    while (record != folder && record != 0) {
        record = m_store.records[record].parent;
    }
    return record == folder;
}

FileUrl SizeCache::urlOf(std::uint32_t record) const
{
    std::vector<std::string_view> names;
    for (; record != 0; record = m_store.records[record].parent) {
        const Record& step = m_store.records[record];
        names.emplace_back(m_store.names.data() + step.nameOffset, step.nameLength);
    }
    std::string path = names.empty() ? "/" : "";
    std::ranges::for_each(std::views::reverse(names), [&](auto name) { path.append("/").append(name); });
    return FileUrl{std::move(path)};
}

void SizeCache::clear()
{
    Store dropped = emptyStore(); // destroyed after the lock
    const std::scoped_lock lock{m_mutex};
    std::swap(dropped, m_store);
    ++m_epoch;
}

std::size_t SizeCache::memory() const
{
    const std::scoped_lock lock{m_mutex};
    return m_store.records.capacity() * sizeof(Record) + m_store.contents.capacity() * sizeof(Content) +
           m_store.names.capacity() + m_store.slots.capacity() * sizeof(std::uint32_t) +
           m_store.remarks.bucket_count() * sizeof(void*) +
           m_store.remarks.size() * (sizeof(std::pair<const std::uint32_t, Remark>) + sizeof(void*));
}

std::optional<std::uint32_t> SizeCache::known(const FileUrl& url) const
{
    std::uint32_t record = 0;
    const bool found = forEachName(url.path(), [&](std::string_view name) {
        record = m_store.slots[slotOf(record, name, hashOf(record, name))];
        return record != 0;
    });
    return found ? std::optional{record} : std::nullopt;
}

std::size_t SizeCache::slotOf(std::uint32_t parent, std::string_view name, std::uint32_t hash) const
{
    const std::size_t mask = m_store.slots.size() - 1;
    for (std::size_t slot = hash & mask;; slot = (slot + 1) & mask) {
        const std::uint32_t number = m_store.slots[slot];
        if (number == 0) {
            return slot;
        }
        const Record& record = m_store.records[number];
        if (record.hash == hash && record.parent == parent &&
            std::string_view{m_store.names.data() + record.nameOffset, record.nameLength} == name) {
            return slot;
        }
    }
}

std::uint32_t SizeCache::child(std::uint32_t parent, std::string_view name)
{
    const std::uint32_t hash = hashOf(parent, name);
    const std::size_t slot = slotOf(parent, name, hash);
    if (m_store.slots[slot] != 0) {
        return m_store.slots[slot];
    }
    const auto number = static_cast<std::uint32_t>(m_store.records.size());
    makeRoom(m_store.records, 1);
    makeRoom(m_store.contents, 1);
    makeRoom(m_store.names, name.size());
    m_store.records.push_back({unknown, parent, static_cast<std::uint32_t>(m_store.names.size()), hash,
                               static_cast<std::uint16_t>(name.size())});
    m_store.contents.emplace_back();
    m_store.names.insert(m_store.names.end(), name.begin(), name.end());
    m_store.slots[slot] = number;
    if (m_store.records.size() * 3 > m_store.slots.size() * 2) {
        grow();
    }
    return number;
}

void SizeCache::grow()
{
    std::vector<std::uint32_t> slots(m_store.slots.size() * 2);
    const std::size_t mask = slots.size() - 1;
    for (std::uint32_t number = 1; number < m_store.records.size(); ++number) {
        std::size_t slot = m_store.records[number].hash & mask;
        while (slots[slot] != 0) {
            slot = (slot + 1) & mask;
        }
        slots[slot] = number;
    }
    m_store.slots = std::move(slots);
}

} // namespace tallyroom
