#include "Tools/DiskUsage/Treemap/TreemapScene.h"

#include "Theme/FileKindPresentation.h"

#include <queue>

#include <algorithm>
#include <cmath>
#include <functional>
#include <ranges>
#include <unordered_map>

namespace tallyroom {

namespace {

// Device-independent pixels.
constexpr double gap = 2;
constexpr double narrowGap = 1;
constexpr double wideEnoughForTheGap = 9;
constexpr double smallestSide = 3;
constexpr double smallestArea = 36;
constexpr double smallestOpen = 14; // less room shows nothing of a folder's content
constexpr double headerHeight = 18;
constexpr double padding = 3;
constexpr double narrowPadding = 1;
constexpr QSizeF roomForTheHeader{44, 44};
constexpr QSizeF roomForThePadding{28, 28};

double weightOf(const Entry& entry)
{
    return static_cast<double>(std::max<std::int64_t>(entry.sizeBytes, 0));
}

std::size_t keyOf(const Entry& entry)
{
    return std::hash<FileUrl>{}(entry.url);
}

/// Edges, not extents, are rounded: neighbours then share them, and areas stay true over any distance.
QRect rounded(const TreemapLayout::Rectangle& rect)
{
    const auto pixel = [](double edge) { return static_cast<int>(std::lround(edge)); };
    const QPoint start{pixel(rect.x), pixel(rect.y)};
    return {start, QSize{pixel(rect.x + rect.width) - start.x(), pixel(rect.y + rect.height) - start.y()}};
}

} // namespace

struct TreemapScene::Child {
    const Entry* entry = nullptr;
    std::uint32_t position = none;
    std::uint32_t outline = none;
    std::uint32_t node = none;
};

TreemapScene::TreemapScene(Content content, const Frame& frame, SteadyLayout& layout)
    : m_content(std::move(content)), m_frame(frame)
{
    std::ranges::for_each(m_content.entries,
                          [this](const Entry& entry) { m_folderBytes += weightOf(entry); });
    placeTop(layout);
    m_topCount = m_tiles.size();
    using Candidate = std::pair<std::int64_t, std::size_t>;
    std::priority_queue<Candidate> candidates;
    const auto consider = [&](std::size_t first) {
        for (std::size_t tile = first; tile < m_tiles.size(); ++tile) {
            const QRect cell = m_tiles[tile].cell;
            if (const Outline::Node* const known = node(tile);
                known != nullptr && known->entry.isDirectory && cell.intersects(m_frame.window)) {
                candidates.emplace(std::int64_t{cell.width()} * cell.height(), tile);
            }
        }
    };
    consider(0);
    while (!candidates.empty()) {
        const std::size_t folder = candidates.top().second;
        candidates.pop();
        const std::size_t first = m_tiles.size();
        open(folder, layout);
        consider(first);
    }
    findKinds();
    layout.forgetUnused();
}

/// The listing is the first level; what the outline knows of its folders is found by their locations.
void TreemapScene::placeTop(SteadyLayout& layout)
{
    std::unordered_map<std::string_view, std::uint32_t> known;
    if (!m_content.outlines.empty()) {
        const std::vector<Outline::Node>& nodes = m_content.outlines.front()->nodes;
        const Outline::Node& root = nodes.front();
        for (std::uint32_t node = root.firstChild; node < root.firstChild + root.childCount; ++node) {
            if (nodes[node].entry.isDirectory) {
                known.emplace(nodes[node].entry.url.path(), node);
            }
        }
    }
    std::vector<Child> children;
    children.reserve(m_content.visible.size());
    for (const std::uint32_t position : m_content.visible) {
        const Entry& entry = m_content.entries[position];
        Child child{&entry, position};
        if (const auto found = entry.isDirectory ? known.find(entry.url.path()) : known.end();
            found != known.end()) {
            child.outline = 0;
            child.node = found->second;
        }
        children.push_back(child);
    }
    const auto weight = [](const Child& child) { return weightOf(*child.entry); };
    if (!std::ranges::is_sorted(children, std::greater{}, weight)) {
        std::ranges::stable_sort(children, std::greater{}, weight);
    }
    place(children, 0, 0, none, layout);
}

void TreemapScene::open(std::size_t tile, SteadyLayout& layout)
{
    findNode(m_tiles[tile]);
    const Outline::Node* const folder = node(tile);
    const QRect content = contentOf(tile);
    const auto enough = pixels(smallestOpen);
    if (!folder->isExpanded || content.width() < enough || content.height() < enough ||
        m_tiles.size() + folder->childCount > mostTiles) {
        return;
    }
    const std::uint32_t outline = m_tiles[tile].outline;
    const std::vector<Outline::Node>& nodes = m_content.outlines[outline]->nodes;
    std::vector<Child> children;
    children.reserve(folder->childCount);
    for (std::uint32_t node = folder->firstChild; node < folder->firstChild + folder->childCount; ++node) {
        children.push_back({&nodes[node].entry, none, outline, node});
    }
    m_tiles[tile].content = content;
    m_tiles[tile].firstChild = static_cast<std::uint32_t>(m_tiles.size());
    place(children, folder->restBytes, folder->restCount, static_cast<std::uint32_t>(tile), layout);
    const auto placed = static_cast<std::uint32_t>(m_tiles.size()) - m_tiles[tile].firstChild;
    m_tiles[tile].childCount = placed;
    if (placed == 0) { // a closed folder says more than an empty frame
        m_tiles[tile].content = {};
        m_tiles[tile].rest = none;
        if (!m_rests.empty() && m_rests.back().parent == tile) {
            m_rests.pop_back();
        }
    }
}

/// Adds a tile a child that is large enough, the others to the rest. Every cell ends with a gap; the last
/// ones end theirs beyond the area.
void TreemapScene::place(const std::vector<Child>& children, std::int64_t restBytes, std::size_t restCount,
                         std::uint32_t parent, SteadyLayout& layout)
{
    const QRect area = parent == none ? m_frame.area : m_tiles[parent].content;
    const double around = gap * m_frame.scale;
    std::vector<SteadyLayout::Item> items;
    items.reserve(children.size() + 1);
    for (const Child& child : children) {
        if (const double weight = weightOf(*child.entry); weight > 0) {
            items.push_back({keyOf(*child.entry), weight});
        }
    }
    const std::size_t unweighed = children.size() - items.size(); // last, since larger ones come first
    const std::size_t folder = parent == none ? 0 : keyOf(entry(parent));
    if (restBytes > 0) {
        items.push_back({~folder, static_cast<double>(restBytes)});
    }
    Rest rest{parent, {}, restCount + (parent == none ? 0 : unweighed), std::max<std::int64_t>(restBytes, 0)};
    const double leastSide = smallestSide * m_frame.scale;
    const double leastArea = smallestArea * m_frame.scale * m_frame.scale;
    const std::uint32_t level = parent == none ? 0 : m_tiles[parent].level + 1;
    for (const auto& [index, rect] :
         layout.tiles(folder, items,
                      {double(area.x()), double(area.y()), area.width() + around, area.height() + around})) {
        const QRect cell = rounded(rect);
        const bool isChild = index < children.size() - unweighed;
        if (isChild && std::min(rect.width, rect.height) >= leastSide &&
            rect.width * rect.height >= leastArea && m_tiles.size() < mostTiles) {
            const Child& child = children[index];
            Tile& tile = m_tiles.emplace_back();
            tile.cell = cell;
            tile.parent = parent;
            tile.position = child.position;
            tile.outline = child.outline;
            tile.node = child.node;
            tile.level = level;
            continue;
        }
        if (isChild) {
            ++rest.count;
            rest.sizeBytes += children[index].entry->sizeBytes;
        }
        if (const QRect inside = cell & area; !inside.isEmpty()) {
            rest.cells.push_back(inside);
        }
    }
    if (rest.count > 0 || rest.sizeBytes > 0) {
        (parent == none ? m_topRest : m_tiles[parent].rest) = static_cast<std::uint32_t>(m_rests.size());
        m_rests.push_back(std::move(rest));
    }
}

/// An outline that begins at the folder tells more of it.
void TreemapScene::findNode(Tile& tile) const
{
    const Entry& folder = m_content.outlines[tile.outline]->nodes[tile.node].entry;
    for (std::uint32_t outline = 1; outline < m_content.outlines.size(); ++outline) {
        const Outline::Node& root = m_content.outlines[outline]->nodes.front();
        if (root.isExpanded && root.entry.url == folder.url) {
            tile.outline = outline;
            tile.node = 0;
        }
    }
}

void TreemapScene::findKinds()
{
    // A kind is read from the path's last bytes. In the order of rank these lie anywhere in memory, and are
    // asked for some tiles ahead: waiting for each of 100 000 is half of the time that the map takes.
    constexpr std::size_t far = 16;
    constexpr std::size_t near = 8;
    const std::size_t count = m_tiles.size();
    for (std::size_t tile = 0; tile < count; ++tile) {
        __builtin_prefetch(&entry(std::min(tile + far, count - 1)));
        const std::string& path = entry(std::min(tile + near, count - 1)).url.path();
        __builtin_prefetch(path.data() + path.size());
        m_tiles[tile].kind = drawnKind(entry(tile));
    }
}

const TreemapScene::Rest* TreemapScene::topRest() const
{
    return m_topRest == none ? nullptr : &m_rests[m_topRest];
}

const Entry& TreemapScene::entry(std::size_t tile) const
{
    const Tile& wanted = m_tiles[tile];
    return wanted.position == none ? m_content.outlines[wanted.outline]->nodes[wanted.node].entry
                                   : m_content.entries[wanted.position];
}

const Outline::Node* TreemapScene::node(std::size_t tile) const
{
    const Tile& wanted = m_tiles[tile];
    return wanted.node == none ? nullptr : &m_content.outlines[wanted.outline]->nodes[wanted.node];
}

int TreemapScene::pixels(double length) const
{
    return static_cast<int>(std::lround(length * m_frame.scale));
}

QRect TreemapScene::painted(std::size_t tile) const
{
    const Tile& wanted = m_tiles[tile];
    const QRect& cell = wanted.cell;
    const bool wide = std::min(cell.width(), cell.height()) >= wideEnoughForTheGap * m_frame.scale;
    const int taken = pixels(wide ? gap : narrowGap);
    const QRect& area = wanted.parent == none ? m_frame.area : m_tiles[wanted.parent].content;
    return cell.adjusted(0, 0, -taken, -taken) & area;
}

QRect TreemapScene::header(std::size_t tile) const
{
    const QRect frame = painted(tile);
    const bool hasRoom = frame.width() >= pixels(roomForTheHeader.width()) &&
                         frame.height() >= pixels(roomForTheHeader.height());
    return hasRoom && isOpen(tile) ? QRect{frame.topLeft(), QSize{frame.width(), pixels(headerHeight)}}
                                   : QRect{};
}

QRect TreemapScene::contentOf(std::size_t tile) const
{
    const QRect frame = painted(tile);
    const auto hasRoom = [&](const QSizeF& room) {
        return frame.width() >= pixels(room.width()) && frame.height() >= pixels(room.height());
    };
    const int side = pixels(hasRoom(roomForThePadding) ? padding : narrowPadding);
    const int top = hasRoom(roomForTheHeader) ? pixels(headerHeight) : side;
    return frame.adjusted(side, top, -side, -side);
}

double TreemapScene::share(std::size_t tile) const
{
    return m_folderBytes > 0 ? weightOf(entry(tile)) / m_folderBytes : 0;
}

double TreemapScene::shareOfParent(std::size_t tile) const
{
    const std::uint32_t parent = m_tiles[tile].parent;
    if (parent == none) {
        return share(tile);
    }
    const double whole = weightOf(entry(parent));
    return whole > 0 ? std::min(weightOf(entry(tile)) / whole, 1.0) : 0;
}

std::optional<std::size_t> TreemapScene::itemCount(std::size_t tile) const
{
    const Outline::Node* const folder = node(tile);
    return folder != nullptr && folder->isExpanded
               ? std::optional{std::size_t{folder->childCount} + folder->restCount}
               : std::nullopt;
}

std::array<std::int64_t, 11> TreemapScene::bytesByKind() const
{
    std::array<std::int64_t, 11> bytes{};
    for (std::size_t tile = 0; tile < m_tiles.size(); ++tile) {
        if (!isOpen(tile)) {
            bytes.at(m_tiles[tile].kind.index()) += entry(tile).sizeBytes;
        }
    }
    for (const Rest& rest : m_rests) {
        bytes.at(FileKind{FileKind::folder}.index()) += rest.sizeBytes;
    }
    return bytes;
}

std::pair<std::size_t, std::size_t> TreemapScene::children(std::size_t tile) const
{
    const Tile& folder = m_tiles[tile];
    return {folder.firstChild, std::size_t{folder.firstChild} + folder.childCount};
}

std::pair<std::size_t, std::size_t> TreemapScene::siblings(std::size_t tile) const
{
    const std::uint32_t parent = m_tiles[tile].parent;
    return parent == none ? std::pair{std::size_t{0}, m_topCount} : children(parent);
}

/// `inside` is the innermost open folder there.
std::optional<std::size_t> TreemapScene::tileAt(const QPoint& pixel, std::uint32_t& inside) const
{
    std::optional<std::size_t> found;
    std::pair<std::size_t, std::size_t> level{0, m_topCount};
    while (true) {
        const auto numbers = std::views::iota(level.first, level.second);
        const auto at = std::ranges::find_if(
            numbers, [&](std::size_t tile) { return m_tiles[tile].cell.contains(pixel); });
        if (at == numbers.end()) {
            return found;
        }
        found = *at;
        if (!isOpen(*found) || !m_tiles[*found].content.contains(pixel)) {
            return found;
        }
        inside = static_cast<std::uint32_t>(*found);
        level = children(*found);
    }
}

std::optional<std::size_t> TreemapScene::tileAt(const QPoint& pixel) const
{
    std::uint32_t inside = none;
    return tileAt(pixel, inside);
}

const TreemapScene::Rest* TreemapScene::restAt(const QPoint& pixel) const
{
    std::uint32_t inside = none;
    const auto tile = tileAt(pixel, inside);
    const std::uint32_t rest = inside == none ? m_topRest : m_tiles[inside].rest;
    const bool isBesideTiles = !tile || *tile == inside;
    if (rest == none || !isBesideTiles) {
        return nullptr;
    }
    const auto& cells = m_rests[rest].cells;
    return std::ranges::any_of(cells, [&](const QRect& cell) { return cell.contains(pixel); })
               ? &m_rests[rest]
               : nullptr;
}

std::optional<std::size_t> TreemapScene::find(const FileUrl& url) const
{
    std::pair<std::size_t, std::size_t> level{0, m_topCount};
    while (true) {
        std::optional<std::size_t> above;
        for (std::size_t tile = level.first; tile < level.second; ++tile) {
            const std::string& path = entry(tile).url.path();
            if (path == url.path()) {
                return tile;
            }
            if (isOpen(tile) && isWithin(url.path(), path)) {
                above = tile;
            }
        }
        if (!above) {
            return std::nullopt;
        }
        level = children(*above);
    }
}

} // namespace tallyroom
