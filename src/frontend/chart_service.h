// What the graph asks of a chart: one record of plain functions, filled in by whoever draws.
//
// A drawing is described between ChartBegin and ChartEnd, with hmtxGraphMem held, and shown as a whole by ChartEnd: the
// drawing before it stays until then. A function that is left alone does nothing, and a service that is left alone does
// not open. Front end's thread only.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace kaldra {

using ChartWindowHandle = void*;  // the toolkit's window, passed through

// What the service keeps of one window from ChartOpen to ChartClose.
struct ChartSession {
    std::int32_t number = 0;
};

// Where ChartCreate puts a chart in its window, in the unit of ChartHeight and ChartWidth.
struct ChartPlace {
    double left = 0;
    double top = 0;
    double height = 0;
    double width = 0;
    double scale = 1000;
    std::int32_t style = 0x40;
    std::int32_t kind = 0x103;
};

inline constexpr std::int32_t chartScaleAutomatic = 1;
inline constexpr std::int32_t chartScaleFixed = 60;

// One axis. An automatic one follows its data; a fixed one goes from 0 to `last` in `intervals` of equal length.
struct ChartScale {
    std::int32_t kind = chartScaleAutomatic;
    std::int32_t intervals = 0;
    std::int32_t fixedEnds = 0;
    double last = 0;
    std::int32_t reserved1 = 0;
    std::int32_t reserved2 = 0;
};

// The text elements of ChartTextStyle.
inline constexpr std::int32_t chartMainTitle = 0;
inline constexpr std::int32_t chartAxisTitles = 1;
inline constexpr std::int32_t chartAxisLabels = 2;
inline constexpr std::int32_t chartLegend = 3;
inline constexpr std::int32_t chartTextElements = 4;

// Bits of ChartTextStyle.
inline constexpr std::int32_t chartTextItalic = 0x10;
inline constexpr std::int32_t chartTextBold = 0x20;

// Bits of ChartOptions.
inline constexpr std::int32_t chartOptionPlain = 0x4000;     // always
inline constexpr std::int32_t chartOptionLines = 0xC;        // joins the points
inline constexpr std::int32_t chartOptionSymbols = 0x10;     // marks the points
inline constexpr std::int32_t chartOptionMonochrome = 0x20;  // one ink for everything
inline constexpr std::int32_t chartOptionThickLines = 0x2000;

struct ChartService {
    // The chart of a window. 0 from ChartOpen is success; a chart's number is negative where there is none.
    int (*ChartOpen)(ChartSession& session, std::string_view mode) = [](ChartSession&, std::string_view) { return -1; };
    void (*ChartClose)() = [] {};
    double (*ChartHeight)(ChartWindowHandle window) = [](ChartWindowHandle) { return 0.0; };
    double (*ChartWidth)(ChartWindowHandle window) = [](ChartWindowHandle) { return 0.0; };
    std::int32_t (*ChartCreate)(ChartWindowHandle window, const ChartPlace& place, const ChartSession& session) =
        [](ChartWindowHandle, const ChartPlace&, const ChartSession&) -> std::int32_t { return -1; };
    void (*ChartDestroy)(std::int32_t chart) = [](std::int32_t) {};
    ChartWindowHandle (*ChartWindow)(std::int32_t chart) = [](std::int32_t) -> ChartWindowHandle { return nullptr; };
    void (*ChartPaint)(std::int32_t occasion) = [](std::int32_t) {};  // 1 at creation, 3 at every paint request

    // The description of a drawing.
    void (*ChartClear)(std::int32_t what) = [](std::int32_t) {};  // a chart that was drawn will be drawn anew
    void (*ChartBegin)() = [] {};
    void (*ChartTitle)(std::string_view text) = [](std::string_view) {};
    void (*ChartXTitle)(std::string_view text) = [](std::string_view) {};
    void (*ChartYTitle)(std::string_view text) = [](std::string_view) {};
    void (*ChartType)(std::int32_t type, std::int32_t style) = [](std::int32_t, std::int32_t) {};  // 6, 0: x-y lines
    void (*ChartXScale)(const ChartScale& scale) = [](const ChartScale&) {};
    void (*ChartYScale)(const ChartScale& scale) = [](const ChartScale&) {};
    void (*ChartSymbol)(std::int32_t curve, std::int32_t symbol) = [](std::int32_t, std::int32_t) {};
    void (*ChartSymbolSize)(double size) = [](double) {};
    void (*ChartLineWidth)(std::int32_t curve, std::int32_t width) = [](std::int32_t, std::int32_t) {};
    void (*ChartLineColour)(std::int32_t curve, std::int32_t colour) = [](std::int32_t, std::int32_t) {};
    void (*ChartFont)(std::int32_t which, std::string_view name) = [](std::int32_t, std::string_view) {};
    // size: per cent of the system's base text height
    void (*ChartTextStyle)(std::int32_t element, std::int32_t count, std::int32_t style,
                           std::int32_t size) = [](std::int32_t, std::int32_t, std::int32_t, std::int32_t) {};
    void (*ChartYData)(std::int32_t count, std::int32_t curve,
                       std::span<const double> y) = [](std::int32_t, std::int32_t, std::span<const double>) {};
    void (*ChartXData)(std::int32_t count, std::span<const double> x) = [](std::int32_t, std::span<const double>) {};
    void (*ChartOptions)(std::int32_t set, std::int32_t options, std::int32_t more) = [](std::int32_t, std::int32_t,
                                                                                         std::int32_t) {};
    void (*ChartEnd)() = [] {};

    void (*ChartCopy)(std::int32_t formats, std::int32_t more) = [](std::int32_t, std::int32_t) {};  // to the clipboard

    // Printing. PrintOpen gives 0 on success; an empty file prints on the device.
    int (*PrintOpen)(std::string_view device, std::string_view file,
                     std::int32_t orientation) = [](std::string_view, std::string_view, std::int32_t) { return -1; };
    double (*DrawnHeight)(std::int32_t, std::int32_t) = [](std::int32_t, std::int32_t) { return 0.0; };
    double (*DrawnWidth)(std::int32_t, std::int32_t) = [](std::int32_t, std::int32_t) { return 0.0; };
    double (*PageHeight)(std::int32_t) = [](std::int32_t) { return 0.0; };
    double (*PageWidth)(std::int32_t) = [](std::int32_t) { return 0.0; };
    void (*PrintPlace)(double top, double left, double bottom, double right, std::int32_t,
                       std::int32_t) = [](double, double, double, double, std::int32_t, std::int32_t) {};
    void (*PrintPages)(std::int32_t first, std::int32_t copies, std::int32_t) = [](std::int32_t, std::int32_t,
                                                                                   std::int32_t) {};
    void (*PrintClose)() = [] {};
};

extern ChartService chartService;

}  // namespace kaldra
