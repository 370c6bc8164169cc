#include "view/curve_picture.h"

#include <algorithm>
#include <limits>

#include "frontend/chart_drawing.h"

namespace kaldra {

namespace {

constexpr double textSize = 13;

struct Range {
    double low = std::numeric_limits<double>::max();
    double high = -std::numeric_limits<double>::max();
    void Take(double value) {
        low = std::min(low, value);
        high = std::max(high, value);
    }
};

struct Frame {
    PictureBox plot;
    ChartAxis x, y;
    [[nodiscard]] PicturePoint At(PicturePoint value) const {
        return {PlaceOnAxis(x, value.x, plot.left, plot.right), PlaceOnAxis(y, value.y, plot.bottom, plot.top)};
    }
};

// Of the strip to the right of the plot, so that the legend hides no curve.
double LegendWidth(const CurveSheet& sheet) {
    double longest = 0;
    for (const Curve& curve : sheet.curves) longest = std::max(longest, RoughTextWidth(curve.label, textSize));
    return longest > 0 ? longest + 40 : 0;
}

Frame LayOut(const CurveSheet& sheet) {
    Range x;
    Range y;
    for (const Curve& curve : sheet.curves) {
        for (const auto& piece : curve.pieces) {
            for (const PicturePoint& p : piece) x.Take(p.x), y.Take(p.y);
        }
    }
    if (sheet.hasLevel) (sheet.levelStands ? x : y).Take(sheet.level);
    Frame frame;
    frame.plot = {84, 40, std::max(sheet.width - 20 - LegendWidth(sheet), 120.0), std::max(sheet.height - 58, 80.0)};
    frame.x = ReadableAxis(x.low, x.high, TickIntervalsFor(frame.plot.Width(), RoughTextWidth("00000.0", textSize)));
    frame.y = ReadableAxis(y.low, y.high, TickIntervalsFor(frame.plot.Height(), 2 * textSize));
    return frame;
}

void DrawAxes(Picture& picture, const CurveSheet& sheet, const Frame& frame) {
    const PictureBox& plot = frame.plot;
    std::vector<PicturePoint> grid;
    for (std::size_t i = 0; i < frame.x.ticks.size(); ++i) {
        const double at = frame.At({frame.x.ticks[i], 0}).x;
        grid.insert(grid.end(), {{at, plot.top}, {at, plot.bottom + 4}});
        AddText(picture, {at, plot.bottom + 15}, frame.x.labels[i], {TextAnchor::Middle});
    }
    for (std::size_t i = 0; i < frame.y.ticks.size(); ++i) {
        const double at = frame.At({0, frame.y.ticks[i]}).y;
        grid.insert(grid.end(), {{plot.left - 4, at}, {plot.right, at}});
        AddText(picture, {plot.left - 8, at}, frame.y.labels[i], {TextAnchor::End});
    }
    AddSegments(picture, std::move(grid), Rgb(0xDDDDDD), 1);
    AddFrame(picture, plot, inkColour, 1);
    AddText(picture, {plot.left, 20}, sheet.title, {TextAnchor::Start, 1.15 * textSize, true});
    AddText(picture, {(plot.left + plot.right) / 2, sheet.height - 18}, sheet.xTitle, {TextAnchor::Middle});
    AddText(picture, {20, (plot.top + plot.bottom) / 2}, sheet.yTitle, {TextAnchor::Middle, textSize, false, true});
}

void DrawCurve(Picture& picture, const Curve& curve, const Frame& frame) {
    for (const auto& piece : curve.pieces) {
        std::vector<PicturePoint> line(piece.size());
        std::ranges::transform(piece, line.begin(), [&](const PicturePoint& p) { return frame.At(p); });
        for (const PicturePoint& p : line) {
            if (curve.marked || line.size() == 1)
                AddBox(picture, {p.x - 2.5, p.y - 2.5, p.x + 2.5, p.y + 2.5}, curve.colour);
        }
        AddLine(picture, std::move(line), curve.colour, 2);
    }
}

void DrawLegend(Picture& picture, const CurveSheet& sheet, const Frame& frame) {
    const double left = frame.plot.right + 12;
    double y = frame.plot.top + textSize / 2;
    for (const Curve& curve : sheet.curves) {
        if (curve.label.empty()) continue;
        AddSegments(picture, {{left, y}, {left + 22, y}}, curve.colour, 2);
        AddText(picture, {left + 28, y}, curve.label);
        y += 1.5 * textSize;
    }
}

}  // namespace

Picture DrawCurves(const CurveSheet& sheet) {
    Picture picture;
    picture.width = sheet.width;
    picture.height = sheet.height;
    AddBox(picture, {0, 0, sheet.width, sheet.height}, paperColour);
    const Frame frame = LayOut(sheet);
    DrawAxes(picture, sheet, frame);
    if (sheet.hasLevel) {
        const PicturePoint at = frame.At({sheet.level, sheet.level});
        const PictureBox& plot = frame.plot;
        AddSegments(picture,
                    sheet.levelStands ? std::vector<PicturePoint>{{at.x, plot.top}, {at.x, plot.bottom}}
                                      : std::vector<PicturePoint>{{plot.left, at.y}, {plot.right, at.y}},
                    inkColour, 1.5);
    }
    for (const Curve& curve : sheet.curves) DrawCurve(picture, curve, frame);
    DrawLegend(picture, sheet, frame);
    return picture;
}

std::string CurvesText(const CurveSheet& sheet) {
    std::string text;
    for (const Curve& curve : sheet.curves) {
        text += sheet.xTitle + '\t' + (curve.label.empty() ? sheet.yTitle : curve.label) + '\n';
        for (const auto& piece : curve.pieces) {
            for (const PicturePoint& p : piece) text += ShortNumber(p.x, 6) + '\t' + ShortNumber(p.y, 6) + '\n';
        }
    }
    return text;
}

}  // namespace kaldra
