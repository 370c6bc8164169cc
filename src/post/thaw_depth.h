// Temperatures along a vertical through the mesh: where it freezes, how deep it thawed, and how wide it swung.
//
//         x
//     ----|-------- surface: the highest active ground at x
//         |  thawed
//         o-------- crossing, thawed above: the deepest of them is the depth of thaw
//         |  frozen
//         o-------- crossing, frozen above
//         |  thawed
//
// Ground is frozen at and below the freezing point, as in the analysis. Between samples, which stand an eighth of an
// element apart or closer (a 64th along a direction of infinity), temperature is taken for linear. Ground at infinity
// is followed to eight times the distance of an infinite element's near side from the pole. The model has to be read.
// No toolkit.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "element/shape_functions.h"
#include "restart/step_results.h"

namespace kaldra {

// A sample of a vertical: what the nodes of an element contribute to the temperature there.
struct LineSample {
    double y = 0;
    bool joined = false;       // to the sample above, through active ground
    std::int32_t element = 0;  // index
    SlotValues N{};
};

struct VerticalLine {
    double x = 0;
    std::vector<LineSample> samples;  // from the surface down; none where no active element lies
};

// Cuts the active elements along x. Gives 1, or 0 after message 1138.
[[nodiscard]] int CutVertical(double x, VerticalLine& line);

// Temperature of every sample.
[[nodiscard]] std::vector<double> TemperaturesAlong(const VerticalLine& line, const StepResults& results);

struct FreezingCrossing {
    double y = 0;
    double depth = 0;  // below the first sample
    bool thawedAbove = false;
};

// Every crossing of the freezing point, from the surface down. A touch is no crossing.
[[nodiscard]] std::vector<FreezingCrossing> CrossingsAlong(const VerticalLine& line,
                                                           const std::vector<double>& temperatures);

// How deep the ground is thawed at one time.
struct ThawDepth {
    double depth = 0;          // of the deepest crossing with thawed ground above; 0: nothing thaws from above
    bool toTheBottom = false;  // thawed from the surface on without a crossing: `depth` is where the ground ends
};

[[nodiscard]] ThawDepth ThawDepthAlong(const VerticalLine& line, const std::vector<double>& temperatures);

// A period (from, to] of the boundary functions that repeat, the longest where they differ; without any, all time.
struct ThawPeriod {
    std::int32_t number = 1;
    double from = 0, to = 0;
};

[[nodiscard]] ThawPeriod PeriodOf(double elapsed);

// Temperatures over one period: the trumpet curve. By sample.
struct Trumpet {
    ThawPeriod period;
    std::vector<double> least, sum, greatest;
    double weight = 0;  // mean = sum / weight; a saved step counts for the time since the one before it

    ThawDepth deepest;
    std::int32_t deepestStep = 0;
    double deepestTime = 0;
};

struct StepThaw {
    std::int32_t step = 0;
    double elapsed = 0;
    std::vector<FreezingCrossing> crossings;
    ThawDepth thaw;
};

// A vertical and what the steps said of it so far.
struct ThawHistory {
    VerticalLine line;
    std::vector<StepThaw> steps;
    std::vector<Trumpet> periods;  // with at least one step
};

// Adds a step behind those that are there. Gives 1, or 0 after message 1138.
[[nodiscard]] int AddToHistory(ThawHistory& history, const StepResults& results);

}  // namespace kaldra
