// A chart service that notes the operations asked of it, one text each: name and arguments.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "frontend/chart_service.h"
#include "platform/number_text.h"

namespace kaldra {

struct ChartOperations {
    // Takes the place of the present service: a chart 300 high and 400 wide, a drawing twice as wide as high, a square
    // page, and a printer that opens if it has a name.
    static void Connect() {
        list.clear();
        ChartService& s = chartService = {};
        s.ChartOpen = [](ChartSession&, std::string_view mode) { return Note("Open", mode), 0; };
        s.ChartClose = [] { Note("Close"); };
        s.ChartHeight = [](ChartWindowHandle) { return 300.0; };
        s.ChartWidth = [](ChartWindowHandle) { return 400.0; };
        s.ChartCreate = [](ChartWindowHandle, const ChartPlace& p, const ChartSession&) -> std::int32_t {
            return Note("Create", p.left, p.top, p.height, p.width, p.scale, p.style, p.kind), 3;
        };
        s.ChartDestroy = [](auto... a) { Note("Destroy", a...); };
        s.ChartPaint = [](auto... a) { Note("Paint", a...); };
        s.ChartClear = [](auto... a) { Note("Clear", a...); };
        s.ChartBegin = [] { Note("Begin"); };
        s.ChartTitle = [](auto... a) { Note("Title", a...); };
        s.ChartXTitle = [](auto... a) { Note("XTitle", a...); };
        s.ChartYTitle = [](auto... a) { Note("YTitle", a...); };
        s.ChartType = [](auto... a) { Note("Type", a...); };
        s.ChartXScale = [](const ChartScale& scale) { Note("XScale", scale); };
        s.ChartYScale = [](const ChartScale& scale) { Note("YScale", scale); };
        s.ChartSymbol = [](auto... a) { Note("Symbol", a...); };
        s.ChartSymbolSize = [](auto... a) { Note("SymbolSize", a...); };
        s.ChartLineWidth = [](auto... a) { Note("LineWidth", a...); };
        s.ChartLineColour = [](auto... a) { Note("LineColour", a...); };
        s.ChartFont = [](auto... a) { Note("Font", a...); };
        s.ChartTextStyle = [](auto... a) { Note("TextStyle", a...); };
        s.ChartYData = [](auto... a) { Note("YData", a...); };
        s.ChartXData = [](auto... a) { Note("XData", a...); };
        s.ChartOptions = [](auto... a) { Note("Options", a...); };
        s.ChartEnd = [] { Note("End"); };
        s.PrintOpen = [](std::string_view device, auto... a) {
            return Note("PrintOpen", device, a...), device.empty() ? 1 : 0;
        };
        s.DrawnHeight = [](auto...) { return 100.0; };
        s.DrawnWidth = [](auto...) { return 200.0; };
        s.PageHeight = s.PageWidth = [](auto...) { return 1000.0; };
        s.PrintPlace = [](auto... a) { Note("PrintPlace", a...); };
        s.PrintPages = [](auto... a) { Note("PrintPages", a...); };
        s.PrintClose = [] { Note("PrintClose"); };
    }

    // The operations since the last call.
    static std::vector<std::string> Take() { return std::exchange(list, {}); }

private:
    inline static std::vector<std::string> list;

    static std::string Text(std::int32_t value) { return FormatText(" %d", value); }
    static std::string Text(double value) { return FormatText(" %.1f", value); }
    static std::string Text(std::string_view text) { return FormatText(" %s", text); }
    static std::string Text(const ChartScale& s) {
        return FormatText(" %d %d %d %.1f %d %d", s.kind, s.intervals, s.fixedEnds, s.last, s.reserved1, s.reserved2);
    }
    static std::string Text(std::span<const double> values) {
        std::string text;
        for (const double value : values) text += FormatText(" %.8E", value);
        return text;
    }

    template <class... Arguments>
    static void Note(std::string_view name, const Arguments&... arguments) {
        list.push_back((std::string(name) + ... + Text(arguments)));
    }
};

}  // namespace kaldra
