#include "frontend/desktop/picture_painter.h"

#include <QFontMetricsF>
#include <QPolygonF>

namespace kaldra {

namespace {

QPointF ToPoint(const PicturePoint& p) { return {p.x, p.y}; }

void PaintImage(QPainter& painter, const PictureItem& item) {
    if (item.raster.pixels.empty()) return;
    const QImage image(reinterpret_cast<const uchar*>(item.raster.pixels.data()), item.raster.width, item.raster.height,
                       4 * item.raster.width, QImage::Format_RGB32);
    painter.drawImage(QRectF(ToPoint(item.points[0]), ToPoint(item.points[1])), image);
}

void PaintLines(QPainter& painter, const PictureItem& item) {
    painter.setPen(QPen(QColor::fromRgb(item.colour), item.size, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    if (item.shape == PictureShape::Line) {
        QPolygonF line;
        for (const PicturePoint& p : item.points) line << ToPoint(p);
        painter.setBrush(Qt::NoBrush);
        return painter.drawPolyline(line);
    }
    for (std::size_t i = 0; i + 1 < item.points.size(); i += 2) {
        painter.drawLine(ToPoint(item.points[i]), ToPoint(item.points[i + 1]));
    }
}

void PaintPolygon(QPainter& painter, const PictureItem& item) {
    QPolygonF polygon;
    for (const PicturePoint& p : item.points) polygon << ToPoint(p);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor::fromRgb(item.colour));
    painter.drawPolygon(polygon);
}

void PaintText(QPainter& painter, const PictureItem& item) {
    QFont font("DejaVu Sans");
    font.setStyleHint(QFont::SansSerif);
    font.setPixelSize(std::max(1, qRound(item.size)));
    font.setBold(item.bold);
    const QString text = QString::fromStdString(item.text);
    const double length = QFontMetricsF(font).horizontalAdvance(text);
    constexpr double middleOfCapitals = 0.36;  // of the size, above the base line
    const double part = item.anchor == TextAnchor::Start ? 0 : item.anchor == TextAnchor::Middle ? 0.5 : 1;
    painter.save();
    painter.translate(ToPoint(item.points[0]));
    if (item.upright) painter.rotate(-90);
    painter.setFont(font);
    painter.setPen(QColor::fromRgb(item.colour));
    painter.drawText(QPointF(-part * length, middleOfCapitals * item.size), text);
    painter.restore();
}

void PaintItem(QPainter& painter, const PictureItem& item) {
    switch (item.shape) {
        case PictureShape::Image:
            return PaintImage(painter, item);
        case PictureShape::Segments:
        case PictureShape::Line:
            return PaintLines(painter, item);
        case PictureShape::Polygon:
            return PaintPolygon(painter, item);
        case PictureShape::Text:
            return PaintText(painter, item);
        case PictureShape::Clip:
            painter.save();
            return painter.setClipRect(QRectF(ToPoint(item.points[0]), ToPoint(item.points[1])));
        case PictureShape::Unclip:
            return painter.restore();
    }
}

}  // namespace

void PaintPicture(QPainter& painter, const Picture& picture) {
    painter.setRenderHint(QPainter::Antialiasing);
    for (const PictureItem& item : picture.items) PaintItem(painter, item);
}

QImage PictureImage(const Picture& picture, double scale) {
    QImage image(qRound(picture.width * scale), qRound(picture.height * scale), QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.scale(scale, scale);
    PaintPicture(painter, picture);
    return image;
}

}  // namespace kaldra
