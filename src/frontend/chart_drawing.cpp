#include "frontend/chart_drawing.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/number_text.h"

namespace kaldra {

// ---------------------------------------------------------------------------------------------------------------------
// The recorder

namespace {

struct Recorder {
    ChartDrawing described;  // between ChartBegin and ChartEnd
    ChartDrawing shown;
};

Recorder recorder;

void SetTextLook(std::int32_t element, std::int32_t, std::int32_t style, std::int32_t size) {
    if (element < 0 || element >= chartTextElements) return;
    recorder.described.texts[static_cast<std::size_t>(element)] = {size, (style & chartTextBold) != 0,
                                                                   (style & chartTextItalic) != 0};
}

void SetOptions(std::int32_t, std::int32_t options, std::int32_t) {
    ChartDrawing& drawing = recorder.described;
    drawing.joinsPoints = (options & chartOptionLines) != 0;
    drawing.marksPoints = (options & chartOptionSymbols) != 0;
    drawing.thickLine = (options & chartOptionThickLines) != 0;
    drawing.coloured = (options & chartOptionMonochrome) == 0;
}

void ShowDescribed() {
    ChartDrawing& drawing = recorder.described;
    const std::size_t points = std::min(drawing.x.size(), drawing.y.size());
    drawing.x.resize(points);
    drawing.y.resize(points);
    drawing.drawn = true;
    recorder.shown = std::exchange(drawing, {});
}

void ConnectChart(ChartService& service) {
    service.ChartOpen = [](ChartSession& session, std::string_view) {
        session.number = 0;
        return 0;
    };
    service.ChartCreate = [](ChartWindowHandle, const ChartPlace&, const ChartSession& session) {
        recorder = {};
        return session.number;
    };
    service.ChartDestroy = [](std::int32_t) { recorder = {}; };
    service.ChartClear = [](std::int32_t) {};  // the drawing stays until the next one is whole
}

void ConnectDescription(ChartService& service) {
    service.ChartBegin = [] { recorder.described = {}; };
    service.ChartTitle = [](std::string_view text) { recorder.described.title = text; };
    service.ChartXTitle = [](std::string_view text) { recorder.described.xTitle = text; };
    service.ChartYTitle = [](std::string_view text) { recorder.described.yTitle = text; };
    service.ChartXScale = [](const ChartScale& scale) { recorder.described.xScale = scale; };
    service.ChartYScale = [](const ChartScale& scale) { recorder.described.yScale = scale; };
    service.ChartFont = [](std::int32_t, std::string_view name) { recorder.described.fontName = name; };
    service.ChartTextStyle = SetTextLook;
    service.ChartYData = [](std::int32_t, std::int32_t, std::span<const double> y) {
        recorder.described.y.assign(y.begin(), y.end());
    };
    service.ChartXData = [](std::int32_t, std::span<const double> x) {
        recorder.described.x.assign(x.begin(), x.end());
    };
    service.ChartOptions = SetOptions;
    service.ChartEnd = ShowDescribed;
}

void ConnectCurveLook(ChartService& service) {
    service.ChartSymbol = [](std::int32_t, std::int32_t symbol) { recorder.described.symbol = symbol; };
    service.ChartSymbolSize = [](double size) { recorder.described.symbolSize = size; };
    service.ChartLineWidth = [](std::int32_t, std::int32_t width) { recorder.described.lineWidth = width; };
    service.ChartLineColour = [](std::int32_t, std::int32_t colour) { recorder.described.lineColour = colour; };
}

}  // namespace

void ConnectChartRecorder() {
    recorder = {};
    ConnectChart(chartService);
    ConnectDescription(chartService);
    ConnectCurveLook(chartService);
}

const ChartDrawing& ShownDrawing() { return recorder.shown; }

std::string CurveText(const ChartDrawing& drawing) {
    std::string text = drawing.xTitle + '\t' + drawing.yTitle + '\n';
    for (std::size_t i = 0; i < drawing.x.size(); ++i) {
        text += FormatText("%d\t%.4E\n", static_cast<std::int64_t>(drawing.x[i]), drawing.y[i]);
    }
    return text;
}

// ---------------------------------------------------------------------------------------------------------------------
// Axes

std::int32_t TickIntervalsFor(double length, double labelLength) {
    constexpr double roomPerLabel = 1.6;  // a label and the gap to the next
    if (!(length > 0) || !(labelLength > 0)) return 1;
    return static_cast<std::int32_t>(std::clamp(length / (roomPerLabel * labelLength), 1.0, 10.0));
}

double ReadableStep(double range, std::int32_t intervals, double smallest) {
    const double wanted = std::max(range / std::max(intervals, 1), smallest);
    if (!(wanted > 0) || !std::isfinite(wanted)) return 1;
    const double power = std::pow(10.0, std::floor(std::log10(wanted)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= wanted * (1 - 1e-9)) return factor * power;
    }
    return 10 * power;
}

namespace {

constexpr double fewDigitsBelow = 1e6;   // from here on labels are written with an exponent,
constexpr double fewDigitsAbove = 1e-3;  // and below here
constexpr std::int32_t mostDecimals = 15;

std::int32_t Decade(double value) { return static_cast<std::int32_t>(std::floor(std::log10(value) + 1e-9)); }

// As many digits as tell neighbouring ticks apart.
std::string LabelFormat(double largest, double step) {
    const bool plain = largest == 0 || (largest < fewDigitsBelow && largest >= fewDigitsAbove);
    const std::int32_t decimals = plain ? -Decade(step) : Decade(largest) - Decade(step);
    return FormatText(plain ? "%%.%df" : "%%.%dE", std::clamp(decimals, 0, mostDecimals));
}

// Ticks from number `first` to number `last`, counted in steps from 0.
ChartAxis AxisOfTicks(double first, double last, double step) {
    ChartAxis axis;
    axis.low = first * step;
    axis.high = last * step;
    const std::string format = LabelFormat(std::max(std::abs(axis.low), std::abs(axis.high)), step);
    const auto ticks = static_cast<int>(last - first) + 1;
    for (int i = 0; i < ticks; ++i) {
        axis.ticks.push_back((first + i) * step + 0.0);  // never -0
        axis.labels.push_back(FormatText(format, axis.ticks.back()));
    }
    return axis;
}

// A range that single-precision values of this size can show: equal ones stand in its middle.
void WidenRange(double& low, double& high) {
    constexpr double leastPart = 1e-4;  // of the values: the curve holds five digits
    const double least = std::max(leastPart * std::max(std::abs(low), std::abs(high)), 1e-30);
    if (high - low >= least) return;
    const double middle = low + (high - low) / 2;
    low = middle - least / 2;
    high = middle + least / 2;
}

ChartAxis FixedAxis(const ChartScale& scale) {
    const double intervals = std::max(scale.intervals, 1);
    return AxisOfTicks(0, intervals, scale.last / intervals);
}

}  // namespace

ChartAxis ReadableAxis(double low, double high, std::int32_t intervals, double smallest) {
    if (!std::isfinite(low) || !std::isfinite(high) || low > high) return AxisOfTicks(0, 1, 1);
    WidenRange(low, high);
    const double step = ReadableStep(high - low, intervals, smallest);
    const double first = std::floor(low / step + 1e-9);
    const double last = std::ceil(high / step - 1e-9);
    return AxisOfTicks(first, std::max(last, first + 1), step);
}

ChartAxis XAxisOf(const ChartDrawing& drawing, std::int32_t intervals) {
    if (drawing.xScale.kind == chartScaleFixed) return FixedAxis(drawing.xScale);
    if (drawing.x.empty()) return ReadableAxis(0, 1, 1, 1);
    return ReadableAxis(drawing.x.front(), drawing.x.back(), intervals, 1);
}

ChartAxis YAxisOf(const ChartDrawing& drawing, std::int32_t intervals) {
    if (drawing.yScale.kind == chartScaleFixed) return FixedAxis(drawing.yScale);
    if (drawing.y.empty()) return ReadableAxis(0, 1, intervals);
    const auto [low, high] = std::ranges::minmax(drawing.y);
    return ReadableAxis(low, high, intervals);
}

double PlaceOnAxis(const ChartAxis& axis, double value, double atLow, double atHigh) {
    return atLow + (value - axis.low) / (axis.high - axis.low) * (atHigh - atLow);
}

}  // namespace kaldra
