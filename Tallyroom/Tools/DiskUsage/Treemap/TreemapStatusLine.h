#pragma once

#include <QWidget>

namespace tallyroom {

/// The line under a map: where the pointer is, and what there is to know of it. Main thread.
class TreemapStatusLine : public QWidget {
    Q_OBJECT

public:
    explicit TreemapStatusLine(QWidget* parent = nullptr);

    /// The place is shortened in its middle where both have no room.
    void show(const QString& place, const QString& facts);

    [[nodiscard]] QString text() const { return m_place + QLatin1Char{'\n'} + m_facts; }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_place;
    QString m_facts;
};

} // namespace tallyroom
