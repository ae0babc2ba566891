#pragma once

#include "Volumes/VolumeUsage.h"

#include <QPushButton>

namespace tallyroom {

/// One volume: its name and place, how much of it is used, as a bar and in words. Pressing it, or Enter on
/// it, is a click. Main thread.
class VolumeCard : public QPushButton {
    Q_OBJECT

public:
    explicit VolumeCard(QWidget* parent = nullptr);

    /// `isMain`: drawn larger, as the one that matters most.
    void setUsage(const VolumeUsage& usage, bool isMain);

    [[nodiscard]] const VolumeUsage& usage() const { return m_usage; }

    /// Of every card, in the theme's fonts of the moment.
    [[nodiscard]] static int cardHeight();

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void paintNames(QPainter& painter, const QRect& room) const;
    void paintFigures(QPainter& painter, const QRect& line) const;
    void paintFootnote(QPainter& painter, const QRect& line) const;

    VolumeUsage m_usage;
    bool m_isMain = false;
};

} // namespace tallyroom
