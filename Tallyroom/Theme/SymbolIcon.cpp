#include "Theme/SymbolIcon.h"

#include <QIconEngine>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

#include <cmath>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>

namespace tallyroom {

namespace {

QString resource(std::string_view name)
{
    return QStringLiteral(":/Resources/icons/%1.svg")
        .arg(QLatin1StringView{name.data(), static_cast<qsizetype>(name.size())});
}

QSvgRenderer& renderer(std::string_view name)
{
    static std::map<std::string, std::unique_ptr<QSvgRenderer>, std::less<>> renderers;
    auto found = renderers.find(name);
    if (found == renderers.end()) {
        found = renderers.emplace(std::string{name}, std::make_unique<QSvgRenderer>(resource(name))).first;
    }
    return *found->second;
}

QPixmap drawn(std::string_view name, const QColor& colour, int size, qreal devicePixelRatio)
{
    const int pixels = static_cast<int>(std::ceil(size * devicePixelRatio));
    QPixmap result{pixels, pixels};
    result.fill(Qt::transparent);
    if (QSvgRenderer& svg = renderer(name); svg.isValid()) {
        QPainter painter{&result};
        svg.render(&painter, QRectF{0, 0, static_cast<qreal>(pixels), static_cast<qreal>(pixels)});
        if (colour.isValid()) {
            painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
            painter.fillRect(result.rect(), colour);
        }
    }
    result.setDevicePixelRatio(devicePixelRatio);
    return result;
}

/// Looks its colour up when it paints, so that an icon given to a widget once follows the theme.
class SymbolIconEngine : public QIconEngine {
public:
    using Ink = std::variant<Theme::Colour, QColor>;

    SymbolIconEngine(std::string name, Ink ink) : m_name(std::move(name)), m_ink(ink) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override
    {
        const int side = std::min(rect.width(), rect.height());
        SymbolIcon::paint(*painter, {rect.x(), rect.y(), side, rect.height()}, m_name, ink(mode, state),
                          side);
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        return scaledPixmap(size, mode, state, 1);
    }

    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State state, qreal scale) override
    {
        const int side = static_cast<int>(std::lround(std::min(size.width(), size.height()) / scale));
        QPixmap symbol = SymbolIcon::pixmap(m_name, ink(mode, state), side, scale);
        if (size.width() <= size.height()) {
            return symbol;
        }
        // Wider than high: the symbol stands on the left, the rest keeps the text away.
        QPixmap padded{size};
        padded.setDevicePixelRatio(scale);
        padded.fill(Qt::transparent);
        QPainter{&padded}.drawPixmap(0, 0, symbol);
        return padded;
    }

    [[nodiscard]] QIconEngine* clone() const override { return new SymbolIconEngine{m_name, m_ink}; }

private:
    [[nodiscard]] QColor ink(QIcon::Mode mode, QIcon::State state) const
    {
        const Theme& theme = Theme::shared();
        if (mode == QIcon::Disabled) {
            return theme.wash(theme.colour(Theme::Colour::secondary), 0.65);
        }
        if (state == QIcon::On) {
            return theme.colour(Theme::Colour::accent);
        }
        const auto* const role = std::get_if<Theme::Colour>(&m_ink);
        return role != nullptr ? theme.colour(*role) : std::get<QColor>(m_ink);
    }

    std::string m_name;
    Ink m_ink;
};

} // namespace

QPixmap SymbolIcon::pixmap(std::string_view name, const QColor& colour, int size, qreal devicePixelRatio)
{
    const QString key = QStringLiteral("symbol/%1/%2/%3/%4")
                            .arg(QLatin1StringView{name.data(), static_cast<qsizetype>(name.size())},
                                 colour.name(QColor::HexArgb))
                            .arg(size)
                            .arg(devicePixelRatio);
    QPixmap result;
    if (!QPixmapCache::find(key, &result)) {
        result = drawn(name, colour, size, devicePixelRatio);
        QPixmapCache::insert(key, result);
    }
    return result;
}

void SymbolIcon::paint(QPainter& painter, const QRect& rect, std::string_view name, const QColor& colour,
                       int size)
{
    const QRect place{rect.x() + (rect.width() - size) / 2, rect.y() + (rect.height() - size) / 2, size,
                      size};
    painter.drawPixmap(place, pixmap(name, colour, size, painter.device()->devicePixelRatio()));
}

QIcon SymbolIcon::icon(std::string_view name, Theme::Colour role)
{
    return QIcon{new SymbolIconEngine{std::string{name}, role}};
}

QIcon SymbolIcon::icon(std::string_view name, const QColor& colour)
{
    return QIcon{new SymbolIconEngine{std::string{name}, colour}};
}

QIcon SymbolIcon::application()
{
    return QIcon{new SymbolIconEngine{"tallyroom", QColor{}}};
}

} // namespace tallyroom
