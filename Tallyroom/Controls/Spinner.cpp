#include "Controls/Spinner.h"

#include "Theme/Theme.h"

#include <QPainter>
#include <QTimerEvent>

namespace tallyroom {

namespace {

constexpr int frameMilliseconds = 33;
constexpr int turnMilliseconds = 900;

} // namespace

Spinner::Spinner(int size, QWidget* parent) : QWidget(parent), m_size(size)
{
    setFixedSize(size, size);
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

QSize Spinner::sizeHint() const
{
    return {m_size, m_size};
}

void Spinner::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter{this};
    paint(painter, rect(), m_turning.isValid() ? m_turning.elapsed() : 0);
}

void Spinner::paint(QPainter& painter, const QRect& place, qint64 milliseconds)
{
    const Theme& theme = Theme::shared();
    const double stroke = std::max(2.0, place.width() / 11.0);
    const double inset = stroke / 2 + 0.5;
    const QRectF circle = QRectF{place}.adjusted(inset, inset, -inset, -inset);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    QPen pen{theme.colour(Theme::Colour::line), stroke, Qt::SolidLine, Qt::RoundCap};
    painter.setPen(pen);
    painter.drawEllipse(circle);
    pen.setColor(theme.colour(Theme::Colour::accent));
    painter.setPen(pen);
    const auto turned = milliseconds % turnMilliseconds;
    const auto start = static_cast<int>(90 * 16 - turned * 360 * 16 / turnMilliseconds);
    painter.drawArc(circle, start, -80 * 16);
}

void Spinner::showEvent(QShowEvent* event)
{
    m_turning.start();
    m_frames.start(frameMilliseconds, this);
    QWidget::showEvent(event);
}

void Spinner::hideEvent(QHideEvent* event)
{
    m_frames.stop();
    QWidget::hideEvent(event);
}

void Spinner::timerEvent(QTimerEvent* event)
{
    if (event->timerId() == m_frames.timerId()) {
        update();
    } else {
        QWidget::timerEvent(event);
    }
}

} // namespace tallyroom
