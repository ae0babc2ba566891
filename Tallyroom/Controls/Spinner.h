#pragma once

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QWidget>

namespace tallyroom {

/// A turning arc for work whose end is not known. Turns only while it is on screen. Main thread.
class Spinner : public QWidget {
    Q_OBJECT

public:
    /// A square of `size` device-independent pixels.
    explicit Spinner(int size, QWidget* parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;

    /// Draws one in a square of `place`, as it stands after so many milliseconds.
    static void paint(QPainter& painter, const QRect& place, qint64 milliseconds);

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    int m_size;
    QBasicTimer m_frames;
    QElapsedTimer m_turning;
};

} // namespace tallyroom
