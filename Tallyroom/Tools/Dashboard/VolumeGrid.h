#pragma once

#include "Volumes/VolumeUsage.h"

#include <QWidget>

#include <functional>
#include <optional>
#include <vector>

namespace tallyroom {

class VolumeCard;

/// The cards of the volumes, the main one first and wider than the others: side by side where there is room,
/// else in rows of equal columns. As high as its width makes it. Main thread.
class VolumeGrid : public QWidget {
    Q_OBJECT

public:
    explicit VolumeGrid(QWidget* parent = nullptr);

    /// A card that stays keeps its widget, and so the focus.
    void setVolumes(const std::vector<VolumeUsage>& volumes, const std::optional<VolumeUsage>& mainVolume);

    /// Shows what lies in the trash of each volume: the text that `trash` tells, or nothing for an empty one.
    void setTrashes(const std::function<QString(const VolumeUsage& volume)>& trash);

    /// In the order of the screen, which is that of the tab key.
    [[nodiscard]] const std::vector<VolumeCard*>& cards() const { return m_cards; }

    [[nodiscard]] bool hasHeightForWidth() const override { return true; }

    [[nodiscard]] int heightForWidth(int width) const override;
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// A card was pressed.
    void chosen(const tallyroom::FileUrl& mountPoint);
    /// The trash of a volume shall be emptied.
    void emptyRequested(const tallyroom::FileUrl& mountPoint);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    [[nodiscard]] VolumeCard* takeCard(const FileUrl& url);
    [[nodiscard]] std::vector<QRect> places(int width) const;
    [[nodiscard]] std::vector<QRect> oneRow(int width) const;
    [[nodiscard]] std::vector<QRect> severalRows(int width) const;
    [[nodiscard]] int cardHeight() const;
    [[nodiscard]] double share(std::size_t place) const;
    void placeCards();

    std::vector<VolumeCard*> m_cards;
    bool m_hasMain = false;
    bool m_hasTrash = false; // one of the cards
};

} // namespace tallyroom
