#include "frontend/desktop/chart_painter.h"

#include <QApplication>
#include <QFontMetricsF>
#include <algorithm>
#include <cmath>

namespace kaldra {

namespace {

constexpr double tickLength = 0.35;  // of the text height
constexpr double thinLine = 0.07;    // of the text height
constexpr double thickLine = 0.2;    // of the text height

const QColor& Ink() {
    static const QColor ink(Qt::black);
    return ink;
}

// Colours by number; the curve of the graph has number 2.
QColor ColourNumber(std::int32_t number) {
    static const std::array colours{QColor(0, 0, 0), QColor(0, 0, 160), QColor(0, 114, 178), QColor(0, 158, 115)};
    return colours[static_cast<std::size_t>(std::clamp(number, 0, 3))];
}

// A font whose lines are as high as the element asks.
QFont FontOf(const ChartDrawing& drawing, std::int32_t element, double baseHeight) {
    const ChartTextLook& look = drawing.texts[static_cast<std::size_t>(element)];
    QFont font(QString::fromStdString(drawing.fontName));
    font.setStyleHint(QFont::SansSerif);
    font.setBold(look.bold);
    font.setItalic(look.italic);
    constexpr int trial = 100;
    font.setPixelSize(trial);
    const double lineHeight = QFontMetricsF(font).height() / trial;
    font.setPixelSize(std::max(1, qRound(baseHeight * look.sizePercent / 100.0 / lineHeight)));
    return font;
}

// Everything that one painting needs.
struct Layout {
    QRectF plot;
    ChartAxis xAxis, yAxis;
    QFont titleFont, axisFont, labelFont;
    double textHeight = 0;
};

double WidestLabel(const ChartAxis& axis, const QFont& font, QPaintDevice* device) {
    const QFontMetricsF metrics(font, device);
    double widest = 0;
    for (const std::string& label : axis.labels) {
        widest = std::max(widest, metrics.horizontalAdvance(QString::fromStdString(label)));
    }
    return widest;
}

Layout LayOut(QPainter& painter, const QRectF& area, const ChartDrawing& drawing, double baseHeight) {
    Layout layout;
    layout.titleFont = FontOf(drawing, chartMainTitle, baseHeight);
    layout.axisFont = FontOf(drawing, chartAxisTitles, baseHeight);
    layout.labelFont = FontOf(drawing, chartAxisLabels, baseHeight);
    QPaintDevice* const device = painter.device();
    const double title = QFontMetricsF(layout.titleFont, device).height();
    const double axisTitle = QFontMetricsF(layout.axisFont, device).height();
    const double label = QFontMetricsF(layout.labelFont, device).height();
    layout.textHeight = label;
    const double top = area.top() + 1.5 * title + label;
    const double bottom = area.bottom() - 1.6 * axisTitle - 1.6 * label;
    layout.yAxis = YAxisOf(drawing, TickIntervalsFor(bottom - top, 2 * label));
    const double widest = WidestLabel(layout.yAxis, layout.labelFont, device);
    const double left = area.left() + 1.6 * axisTitle + widest + label;
    const double right = area.right() - 2 * label;
    const double xLabel = QFontMetricsF(layout.labelFont, device).horizontalAdvance(QStringLiteral("0000"));
    layout.xAxis = XAxisOf(drawing, TickIntervalsFor(right - left, 1.5 * xLabel));
    layout.plot = QRectF(QPointF(left, top), QPointF(std::max(right, left + 1), std::max(bottom, top + 1)));
    return layout;
}

void PaintTitles(QPainter& painter, const QRectF& area, const ChartDrawing& drawing, const Layout& layout) {
    const auto text = [](const std::string& s) { return QString::fromStdString(s); };
    painter.setPen(Ink());
    painter.setFont(layout.titleFont);
    const double titleHeight = QFontMetricsF(layout.titleFont, painter.device()).height();
    painter.drawText(QRectF(area.left(), area.top() + 0.4 * titleHeight, area.width(), titleHeight), Qt::AlignCenter,
                     text(drawing.title));
    painter.setFont(layout.axisFont);
    const double axisHeight = QFontMetricsF(layout.axisFont, painter.device()).height();
    painter.drawText(QRectF(layout.plot.left(), area.bottom() - 1.4 * axisHeight, layout.plot.width(), axisHeight),
                     Qt::AlignCenter, text(drawing.xTitle));
    painter.save();
    painter.translate(area.left() + 0.4 * axisHeight, layout.plot.center().y());
    painter.rotate(-90);
    painter.drawText(QRectF(-layout.plot.height() / 2, 0, layout.plot.height(), axisHeight), Qt::AlignCenter,
                     text(drawing.yTitle));
    painter.restore();
}

void PaintAxes(QPainter& painter, const Layout& layout) {
    const QRectF& plot = layout.plot;
    const double tick = tickLength * layout.textHeight;
    painter.setFont(layout.labelFont);
    const QPen axisPen(Ink(), thinLine * layout.textHeight);
    const QPen gridPen(QColor(225, 225, 225), thinLine * layout.textHeight);
    const auto label = [&](const QRectF& box, int align, const std::string& s) {
        painter.setPen(Ink());
        painter.drawText(box, align | Qt::TextSingleLine | Qt::TextDontClip, QString::fromStdString(s));
    };
    for (std::size_t i = 0; i < layout.xAxis.ticks.size(); ++i) {
        const double x = PlaceOnAxis(layout.xAxis, layout.xAxis.ticks[i], plot.left(), plot.right());
        painter.setPen(axisPen);
        painter.drawLine(QPointF(x, plot.bottom()), QPointF(x, plot.bottom() + tick));
        label(QRectF(x - 1, plot.bottom() + 1.3 * tick, 2, layout.textHeight), Qt::AlignHCenter | Qt::AlignTop,
              layout.xAxis.labels[i]);
    }
    for (std::size_t i = 0; i < layout.yAxis.ticks.size(); ++i) {
        const double y = PlaceOnAxis(layout.yAxis, layout.yAxis.ticks[i], plot.bottom(), plot.top());
        painter.setPen(gridPen);
        painter.drawLine(QPointF(plot.left(), y), QPointF(plot.right(), y));
        painter.setPen(axisPen);
        painter.drawLine(QPointF(plot.left() - tick, y), QPointF(plot.left(), y));
        label(QRectF(plot.left() - 1.5 * tick - 1, y - 1, 1, 2), Qt::AlignRight | Qt::AlignVCenter,
              layout.yAxis.labels[i]);
    }
    painter.setPen(axisPen);
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(plot);
}

void PaintSymbol(QPainter& painter, const QPointF& at, double size) {
    const QPointF diamond[4] = {at + QPointF(0, -size), at + QPointF(size, 0), at + QPointF(0, size),
                                at + QPointF(-size, 0)};
    painter.drawPolygon(diamond, 4);
}

// Segments of their own with round caps: one wide polyline costs the square of its points.
void PaintCurve(QPainter& painter, const ChartDrawing& drawing, const Layout& layout, double height) {
    const QRectF& plot = layout.plot;
    const QColor colour = drawing.coloured ? ColourNumber(drawing.lineColour) : Ink();
    const double width = (drawing.thickLine ? thickLine : thinLine) * layout.textHeight;
    std::vector<QPointF> points;
    for (std::size_t i = 0; i < drawing.x.size(); ++i) {
        points.emplace_back(PlaceOnAxis(layout.xAxis, drawing.x[i], plot.left(), plot.right()),
                            PlaceOnAxis(layout.yAxis, drawing.y[i], plot.bottom(), plot.top()));
    }
    painter.save();
    painter.setClipRect(plot.adjusted(-layout.textHeight, -layout.textHeight, layout.textHeight, layout.textHeight));
    painter.setPen(QPen(colour, width, Qt::SolidLine, Qt::RoundCap));
    for (std::size_t i = 1; drawing.joinsPoints && i < points.size(); ++i) painter.drawLine(points[i - 1], points[i]);
    if (drawing.marksPoints || points.size() == 1) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(colour);
        const double size = std::max(2 * width, drawing.symbolSize / 1000 * height);
        for (const QPointF& point : points) PaintSymbol(painter, point, size);
    }
    painter.restore();
}

}  // namespace

double ScreenTextHeight() { return QFontMetricsF(QApplication::font()).height(); }

void PaintChart(QPainter& painter, const QRectF& area, const ChartDrawing& drawing, double baseHeight) {
    painter.fillRect(area, Qt::white);
    if (!drawing.drawn) return;
    painter.setRenderHint(QPainter::Antialiasing);
    const Layout layout = LayOut(painter, area, drawing, baseHeight);
    PaintTitles(painter, area, drawing, layout);
    PaintAxes(painter, layout);
    PaintCurve(painter, drawing, layout, area.height());
}

}  // namespace kaldra
