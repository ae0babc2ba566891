#include "Tools/Dashboard/VolumeGrid.h"

#include "Theme/Theme.h"
#include "Tools/Dashboard/VolumeCard.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace tallyroom {

namespace {

/// From `left` to `right` without the fractions of a pixel, so that neighbours keep their distance.
QRect placed(double left, double right, int top, int height)
{
    const int start = static_cast<int>(std::lround(left));
    return {start, top, static_cast<int>(std::lround(right)) - start, height};
}

} // namespace

VolumeGrid::VolumeGrid(QWidget* parent) : QWidget(parent)
{
    QSizePolicy policy{QSizePolicy::Preferred, QSizePolicy::Preferred};
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    connect(&Theme::shared(), &Theme::changed, this, [this] {
        updateGeometry();
        placeCards();
    });
}

void VolumeGrid::setVolumes(const std::vector<VolumeUsage>& volumes,
                            const std::optional<VolumeUsage>& mainVolume)
{
    std::vector<VolumeUsage> shown;
    if (mainVolume) {
        shown.push_back(*mainVolume);
    }
    std::ranges::copy_if(volumes, std::back_inserter(shown), [&mainVolume](const VolumeUsage& volume) {
        return !mainVolume || volume.url != mainVolume->url;
    });
    m_hasMain = mainVolume.has_value();
    std::vector<VolumeCard*> cards;
    for (const VolumeUsage& volume : shown) {
        VolumeCard* const card = takeCard(volume.url);
        card->setUsage(volume, m_hasMain && cards.empty());
        cards.push_back(card);
    }
    // The user may have just pressed one of them.
    std::ranges::for_each(std::exchange(m_cards, std::move(cards)), [](VolumeCard* gone) {
        gone->hide();
        gone->deleteLater();
    });
    updateGeometry();
    placeCards();
}

void VolumeGrid::setTrashes(const std::function<QString(const VolumeUsage& volume)>& trash)
{
    m_hasTrash = false;
    for (VolumeCard* const card : m_cards) {
        const QString size = trash(card->usage());
        card->setTrash(size);
        m_hasTrash = m_hasTrash || !size.isEmpty();
    }
    updateGeometry();
    placeCards();
}

/// The card of that volume, out of those on screen, or a new one.
VolumeCard* VolumeGrid::takeCard(const FileUrl& url)
{
    const auto known =
        std::ranges::find(m_cards, url, [](const VolumeCard* card) { return card->usage().url; });
    if (known != m_cards.end()) {
        VolumeCard* const card = *known;
        m_cards.erase(known);
        return card;
    }
    auto* const card = new VolumeCard(this);
    connect(card, &VolumeCard::clicked, this, [this, card] { Q_EMIT chosen(FileUrl{card->usage().url}); });
    connect(card, &VolumeCard::emptyRequested, this,
            [this, card] { Q_EMIT emptyRequested(FileUrl{card->usage().url}); });
    card->show();
    return card;
}

int VolumeGrid::cardHeight() const
{
    return VolumeCard::cardHeight() + (m_hasTrash ? VolumeCard::trashHeight() : 0);
}

double VolumeGrid::share(std::size_t place) const
{
    return m_hasMain && place == 0 ? Theme::mainCardShare : 1;
}

std::vector<QRect> VolumeGrid::places(int width) const
{
    if (m_cards.empty()) {
        return {};
    }
    std::vector<QRect> row = oneRow(width);
    return row.back().width() >= Theme::cardMinimumWidth ? std::move(row) : severalRows(width);
}

std::vector<QRect> VolumeGrid::oneRow(int width) const
{
    const auto others = static_cast<double>(m_cards.size() - 1);
    const double unit = (width - others * Theme::cardGap) / (others + share(0));
    std::vector<QRect> result;
    double left = 0;
    for (std::size_t place = 0; place < m_cards.size(); ++place) {
        const double right = left + unit * share(place);
        result.push_back(placed(left, right, 0, cardHeight()));
        left = right + Theme::cardGap;
    }
    return result;
}

std::vector<QRect> VolumeGrid::severalRows(int width) const
{
    // As few rows as there can be, and no more columns than fill them.
    const int mostColumns =
        std::max(1, (width + Theme::cardGap) / (Theme::cardMinimumWidth + Theme::cardGap));
    const int cells = static_cast<int>(m_cards.size()) + (m_hasMain && mostColumns > 1 ? 1 : 0);
    const int rows = (cells + mostColumns - 1) / mostColumns;
    const int columns = (cells + rows - 1) / rows;
    const double step = static_cast<double>(width + Theme::cardGap) / columns;
    const int height = cardHeight();
    std::vector<QRect> result;
    int cell = 0;
    for (std::size_t place = 0; place < m_cards.size(); ++place) {
        const int span = m_hasMain && place == 0 ? std::min(2, columns) : 1;
        const double left = step * (cell % columns);
        result.push_back(placed(left, left + step * span - Theme::cardGap,
                                cell / columns * (height + Theme::cardGap), height));
        cell += span;
    }
    return result;
}

int VolumeGrid::heightForWidth(int width) const
{
    const std::vector<QRect> all = places(width);
    return all.empty() ? 0 : all.back().bottom() + 1;
}

QSize VolumeGrid::sizeHint() const
{
    return {Theme::cardMinimumWidth, heightForWidth(std::max(width(), Theme::cardMinimumWidth))};
}

QSize VolumeGrid::minimumSizeHint() const
{
    return {Theme::cardMinimumWidth, cardHeight()};
}

void VolumeGrid::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    placeCards();
}

void VolumeGrid::placeCards()
{
    const std::vector<QRect> all = places(width());
    for (std::size_t place = 0; place < m_cards.size(); ++place) {
        m_cards[place]->setGeometry(all[place]);
    }
}

} // namespace tallyroom
