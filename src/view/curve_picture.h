// Curves over two axes: temperature against distance or time, depth against temperature.
#pragma once

#include <string>
#include <vector>

#include "view/picture.h"

namespace kaldra {

struct Curve {
    std::string label;                              // empty: not in the legend
    std::vector<std::vector<PicturePoint>> pieces;  // x and y of the axes
    Colour colour = Rgb(0x0072B2);
    bool marked = false;  // a dot on every point
};

struct CurveSheet {
    double width = 640, height = 420;
    std::string title, xTitle, yTitle;
    std::vector<Curve> curves;
    bool hasLevel = false;  // a line at y = level, or at x = level where `levelStands`
    bool levelStands = false;
    double level = 0;
};

[[nodiscard]] Picture DrawCurves(const CurveSheet& sheet);

// The curves as lines of x, tab, y, each curve under its label.
[[nodiscard]] std::string CurvesText(const CurveSheet& sheet);

}  // namespace kaldra
