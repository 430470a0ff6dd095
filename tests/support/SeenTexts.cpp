#include "tests/support/SeenTexts.h"

#include <QFontInfo>
#include <QImage>
#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>
#include <QPixmap>
#include <QWidget>

#include <algorithm>
#include <cmath>

namespace {

/// Relative luminance of a colour, from 0 for black to 1 for white.
double luminance(const QColor& color)
{
    const auto linear = [](double channel) {
        return channel <= 0.03928 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

struct Written
{
    QString text;
    QColor ink;
    bool large;
    QRegion place; ///< without what is clipped
};

/// Sizes in pixels from which on letters count as large.
constexpr int largePixels = 24;
constexpr int largeBoldPixels = 19;

bool isLarge(const QFont& font)
{
    const QFontInfo info(font);
    return info.pixelSize() >= (info.bold() ? largeBoldPixels : largePixels);
}

/// Paints nothing, and notes the texts.
class TextEngine : public QPaintEngine
{
public:
    TextEngine()
        : QPaintEngine(AllFeatures)
    {
    }

    bool begin(QPaintDevice* /*device*/) override { return true; }
    bool end() override { return true; }
    Type type() const override { return User; }
    void updateState(const QPaintEngineState& /*state*/) override { }
    void drawPixmap(const QRectF& /*to*/, const QPixmap& /*pixmap*/, const QRectF& /*from*/) override { }
    void drawPath(const QPainterPath& /*path*/) override { }
    void drawPolygon(const QPointF* /*points*/, int /*count*/, PolygonDrawMode /*mode*/) override { }

    void drawTextItem(const QPointF& at, const QTextItem& item) override
    {
        const QRectF place(at.x(), at.y() - item.ascent(), item.width(), item.ascent() + item.descent());
        QRegion seen(place.toAlignedRect());
        if (painter()->hasClipping()) {
            seen &= painter()->clipRegion();
        }
        // Only ever moved: neither turned nor scaled.
        const QTransform move = painter()->deviceTransform();
        seen.translate(qRound(move.dx()), qRound(move.dy()));
        written.append({item.text(), painter()->pen().color(), isLarge(item.font()), seen & systemClip()});
    }

    QVector<Written> written;
};

class TextDevice : public QPaintDevice
{
public:
    explicit TextDevice(const QWidget* likeness)
        : m_likeness(likeness)
    {
    }

    QPaintEngine* paintEngine() const override { return &engine; }

    mutable TextEngine engine;

protected:
    int metric(PaintDeviceMetric metric) const override
    {
        switch (metric) {
        case PdmWidth:
            return m_likeness->width();
        case PdmHeight:
            return m_likeness->height();
        case PdmDpiX:
        case PdmPhysicalDpiX:
            return m_likeness->logicalDpiX();
        case PdmDpiY:
        case PdmPhysicalDpiY:
            return m_likeness->logicalDpiY();
        case PdmDepth:
            return 32;
        case PdmDevicePixelRatio:
            return 1;
        case PdmDevicePixelRatioScaled:
            return static_cast<int>(devicePixelRatioFScale());
        case PdmNumColors:
            return 1 << 24;
        default:
            return QPaintDevice::metric(metric);
        }
    }

private:
    const QWidget* m_likeness;
};

/// The colour in the middle of all by its luminance: letters cover less than half of their place.
QColor groundOf(const QImage& image, const QRegion& place)
{
    QVector<QColor> colors;
    for (const QRect& part : place) {
        for (int y = part.top(); y <= part.bottom(); ++y) {
            for (int x = part.left(); x <= part.right(); ++x) {
                colors.append(image.pixelColor(x, y));
            }
        }
    }
    const auto middle = colors.begin() + colors.size() / 2;
    std::nth_element(colors.begin(), middle, colors.end(),
        [](const QColor& one, const QColor& other) { return luminance(one) < luminance(other); });
    return *middle;
}

} // namespace

double contrast(const QColor& one, const QColor& other)
{
    const double a = luminance(one);
    const double b = luminance(other);
    return (qMax(a, b) + 0.05) / (qMin(a, b) + 0.05);
}

QVector<SeenText> seenTexts(QWidget* widget)
{
    const QImage image = widget->grab().toImage();
    TextDevice device(widget);
    widget->render(&device);
    QVector<SeenText> texts;
    for (const Written& written : qAsConst(device.engine.written)) {
        const QRegion place = written.place & image.rect();
        if (!place.isEmpty() && !written.text.trimmed().isEmpty()) {
            texts.append({written.text, written.ink, groundOf(image, place), written.large});
        }
    }
    return texts;
}
