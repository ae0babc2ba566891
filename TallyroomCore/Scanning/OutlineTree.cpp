#include "Scanning/OutlineTree.h"

#include "Model/CheckedArithmetic.h"

#include <algorithm>
#include <numeric>
#include <tuple>
#include <utility>

namespace tallyroom {

OutlineTree::OutlineTree(Item root, double leastBytes, std::size_t most)
    : m_leastBytes(leastBytes), m_most(std::max<std::size_t>(most, 1))
{
    m_found.emplace_back().item = std::move(root);
}

bool OutlineTree::mayTell(std::int64_t bytes) const noexcept
{
    return static_cast<double>(bytes) >= m_leastBytes && bytes >= m_least.load(std::memory_order_relaxed);
}

OutlineTree::Place OutlineTree::add(Place folder, std::vector<Item> items, const Rest& rest)
{
    const std::scoped_lock lock{m_mutex};
    const auto first = static_cast<Place>(m_found.size());
    m_found[folder].isListed = true;
    m_found[folder].rest.bytes = saturatedSum(m_found[folder].rest.bytes, rest.bytes);
    m_found[folder].rest.count += rest.count;
    for (Item& item : items) {
        note(item.entry.sizeBytes);
        const auto place = static_cast<Place>(m_found.size());
        Found& found = m_found.emplace_back();
        found.item = std::move(item);
        found.folder = folder;
        found.depth = m_found[folder].depth + 1;
        found.nextSibling = std::exchange(m_found[folder].firstChild, place);
        ++m_found[folder].childCount;
    }
    return first;
}

/// Under the lock. The root takes a place too.
void OutlineTree::note(std::int64_t bytes)
{
    m_largest.push(bytes);
    if (m_largest.size() >= m_most) {
        while (m_largest.size() >= m_most) {
            m_largest.pop();
        }
        m_least = m_largest.empty() ? bytes : m_largest.top();
    }
}

void OutlineTree::complete(Place folder, std::int64_t restBytes)
{
    const std::scoped_lock lock{m_mutex};
    Found& found = m_found[folder];
    found.isComplete = true;
    found.rest.bytes = saturatedSum(found.rest.bytes, restBytes);
}

/// Items come after their folder.
OutlineTree::Sizes OutlineTree::sums() const
{
    Sizes sizes(m_found.size());
    for (std::size_t i = m_found.size(); i-- > 0;) {
        const Found& found = m_found[i];
        sizes[i] = saturatedSum(sizes[i], found.rest.bytes);
        if (!found.isListed && !found.isComplete) {
            sizes[i] = found.item.entry.sizeBytes;
        } else if (!found.isComplete) {
            sizes[i] = std::max(sizes[i], found.item.entry.sizeBytes);
        }
        if (i > 0) {
            sizes[found.folder] = saturatedSum(sizes[found.folder], sizes[i]);
        }
    }
    return sizes;
}

/// The largest ones. A folder comes before what it holds, so that with an item all its folders are told.
std::vector<bool> OutlineTree::told(const Sizes& sizes) const
{
    std::vector<Place> order;
    for (Place place = 0; place < m_found.size(); ++place) {
        if (place == 0 || static_cast<double>(sizes[place]) >= m_leastBytes) {
            order.push_back(place);
        }
    }
    if (order.size() > m_most) {
        const auto key = [&](Place place) {
            return std::tuple{place != 0, -sizes[place], m_found[place].depth,
                              std::string_view{m_found[place].item.entry.url.path()}};
        };
        std::ranges::nth_element(order, order.begin() + static_cast<std::ptrdiff_t>(m_most),
                                 [&](Place left, Place right) { return key(left) < key(right); });
        order.resize(m_most);
    }
    std::vector<bool> isTold(m_found.size());
    std::ranges::for_each(order, [&isTold](Place place) { isTold[place] = true; });
    return isTold;
}

Outline OutlineTree::outline() const
{
    const std::scoped_lock lock{m_mutex};
    const Sizes sizes = sums();
    const std::vector<bool> isTold = told(sizes);
    Outline outline;
    std::vector<Place> places; // of the nodes
    const auto addNode = [&](Place place, std::uint32_t parent) {
        const Found& found = m_found[place];
        places.push_back(place);
        outline.nodes.push_back(
            {.entry = found.item.entry, .parent = parent, .isPending = found.item.isPending});
        outline.nodes.back().entry.sizeBytes = sizes[place];
    };
    addNode(0, 0);
    for (std::uint32_t i = 0; i < places.size(); ++i) {
        const Place folder = places[i];
        const std::vector<Place> children = toldChildren(folder, sizes, isTold);
        Outline::Node& node = outline.nodes[i];
        if (children.empty()) {
            continue;
        }
        node.isExpanded = true;
        node.firstChild = static_cast<std::uint32_t>(places.size());
        node.childCount = static_cast<std::uint32_t>(children.size());
        node.restCount = m_found[folder].childCount + m_found[folder].rest.count - node.childCount;
        node.restBytes = sizes[folder];
        for (const Place child : children) {
            node.restBytes -= sizes[child];
        }
        std::ranges::for_each(children, [&](Place child) { addNode(child, i); });
    }
    return outline;
}

std::vector<OutlineTree::Place> OutlineTree::toldChildren(Place folder, const Sizes& sizes,
                                                          const std::vector<bool>& isTold) const
{
    std::vector<Place> children;
    for (Place child = m_found[folder].firstChild; child != 0; child = m_found[child].nextSibling) {
        if (isTold[child]) {
            children.push_back(child);
        }
    }
    std::ranges::sort(children, {}, [&](Place child) {
        return std::tuple{-sizes[child], std::string_view{m_found[child].item.entry.name}};
    });
    return children;
}

} // namespace tallyroom
