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

    /// What lies in the volume's trash, "3,2 Go"; nothing is said of it for an empty text.
    void setTrash(const QString& size);

    /// Empties the trash; hidden when nothing lies there.
    [[nodiscard]] QPushButton* emptyButton() const { return m_empty; }

    [[nodiscard]] const VolumeUsage& usage() const { return m_usage; }

    /// Of every card, in the theme's fonts of the moment.
    [[nodiscard]] static int cardHeight();

    /// What the line about the trash adds to it, for all cards when one has it.
    [[nodiscard]] static int trashHeight();

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    void emptyRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    [[nodiscard]] QRect content() const;
    void describe();
    void placeButton();
    void paintTrash(QPainter& painter) const;
    void paintNames(QPainter& painter, const QRect& room) const;
    void paintFigures(QPainter& painter, const QRect& line) const;
    void paintFootnote(QPainter& painter, const QRect& line) const;

    VolumeUsage m_usage;
    bool m_isMain = false;
    QString m_trash; // words; empty when nothing lies there
    QPushButton* m_empty;
};

} // namespace tallyroom
