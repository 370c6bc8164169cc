// ChartDrawing: a chart as it is to be painted, and the arithmetic of painting it. No toolkit here.
//
// The recorder turns the operations of the chart service into a drawing; the desktop paints that drawing in its window,
// on the clipboard and on the page. Front end's thread only; the mutex of the graph memory is not needed to paint.
//
//              main title
//     y title |  *
//             |    *  *         the plot rectangle: low..high of each axis from edge to edge,
//             |         * * *   ticks and labels along its left and lower side
//             +--------------
//                 x title
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "frontend/chart_service.h"

namespace kaldra {

struct ChartTextLook {
    std::int32_t sizePercent = 100;  // of the base text height
    bool bold = false;
    bool italic = false;
};

struct ChartDrawing {
    bool drawn = false;  // false: blank, nothing was described yet
    std::string title, xTitle, yTitle;
    ChartScale xScale, yScale;
    std::vector<double> x, y;  // points of the curve, as many of one as of the other

    bool joinsPoints = true;
    bool marksPoints = false;
    bool thickLine = false;
    bool coloured = false;        // false: everything in the one ink of the axes
    std::int32_t symbol = 0;      // number of the symbol
    double symbolSize = 0;        // in the chart's unit of 1/1000 of its height
    std::int32_t lineWidth = 0;   // number of the width
    std::int32_t lineColour = 0;  // number of the colour

    std::string fontName;
    std::array<ChartTextLook, chartTextElements> texts;  // by chartMainTitle, ...
};

// Fills every function of chartService that needs no window: ChartOpen and ChartCreate to ChartDestroy, and all that
// describe a drawing. The window's sizes and painting, copying and printing are left to the desktop.
void ConnectChartRecorder();

// The drawing that the last ChartEnd has shown; a blank one before that and after ChartCreate and ChartDestroy.
[[nodiscard]] const ChartDrawing& ShownDrawing();

// The curve as lines of x, tab, y under a line of the axis titles: what the clipboard gets as text.
[[nodiscard]] std::string CurveText(const ChartDrawing& drawing);

// ---------------------------------------------------------------------------------------------------------------------
// Axes

// An axis ready to paint. Ticks lie in rising order within low..high, each with its label.
struct ChartAxis {
    double low = 0;
    double high = 1;
    std::vector<double> ticks;
    std::vector<std::string> labels;
};

// How many tick intervals an axis of `length` bears when each label takes `labelLength` along it: 1 to 10.
[[nodiscard]] std::int32_t TickIntervalsFor(double length, double labelLength);

// The smallest of 1, 2 or 5 times a power of ten that covers `range` in at most `intervals` steps; not below
// `smallest`.
[[nodiscard]] double ReadableStep(double range, std::int32_t intervals, double smallest = 0);

// An axis around low..high that begins and ends at a tick; a range of no length is widened.
[[nodiscard]] ChartAxis ReadableAxis(double low, double high, std::int32_t intervals, double smallest = 0);

// The two axes of a drawing: a fixed scale as it says, an automatic one around the data. x counts iterations, so its
// ticks are whole numbers.
[[nodiscard]] ChartAxis XAxisOf(const ChartDrawing& drawing, std::int32_t intervals);
[[nodiscard]] ChartAxis YAxisOf(const ChartDrawing& drawing, std::int32_t intervals);

// Where a value stands between two ends of the plot: `atLow` for low, `atHigh` for high. For y the lower edge is given
// first, so that the picture stands upright.
[[nodiscard]] double PlaceOnAxis(const ChartAxis& axis, double value, double atLow, double atHigh);

}  // namespace kaldra
