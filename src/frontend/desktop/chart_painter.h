// The one paint routine of the chart: for the window, the clipboard, a picture file and the page.
#pragma once

#include <QPainter>
#include <QRectF>

#include "frontend/chart_drawing.h"

namespace kaldra {

// Paints a drawing into `area`. Text sizes are per cent of `baseHeight`, the text height that stands for 100 per cent
// on this device.
void PaintChart(QPainter& painter, const QRectF& area, const ChartDrawing& drawing, double baseHeight);

// Height of the desktop's own text, in pixels: what 100 per cent stands for on the screen.
[[nodiscard]] double ScreenTextHeight();

}  // namespace kaldra
