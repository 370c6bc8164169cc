// Reads the result files of one step back, and tells whether they are whole.
//
// A file is whole when it has the header of its step, all its rows, each with all its numbers, the end of the last line
// and nothing behind it. So what a run is still writing, or a killed one has left, is never taken for a result.
//
// The model has to be read and its flux crossings found, and for ReadStepResults its points counted. Both go through
// the line reader: on the front end's thread while no calculation thread lives, or on that thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kaldra {

struct NodeResult {
    float temperature = 0;
    float flow = 0;  // heat per time from outside into the mesh
};

// What the .g and the .r file say of one integration point.
struct PointResult {
    float fluxX = 0, fluxY = 0;
    float gradientX = 0, gradientY = 0;  // with its sign reversed, from warm to cold
    float temperature = 0;               // before the last solution
    float conductivity = 0;
    float waterSlope = 0;     // slope of the unfrozen water that makes the latent heat
    float unfrozenWater = 0;  // volume per volume of ground
    float heatCapacity = 0;   // with the latent term
};

struct SectionResult {
    float total = 0, heatFlux = 0, storage = 0;
};

struct CrossingResult {
    std::int32_t section = 0;
    std::int32_t element = 0;
    float total = 0, heatFlux = 0, storage = 0;
};

// The results of one saved step.
struct StepResults {
    std::int32_t step = 0;
    float elapsed = 0;                // at its end
    std::vector<NodeResult> nodes;    // by node index
    std::vector<PointResult> points;  // of element index e from PointResultOffset[e] on; zeros in NULL elements
    std::vector<SectionResult> sections;
    std::vector<CrossingResult> crossings;  // by section, and by element in each
};

// True if all result files of the step are whole. Nothing is shown.
[[nodiscard]] bool HasWholeResults(std::int32_t step);

// Reads all result files of the step. Gives 1, or 0 after message 5002 with the first file that is missing or not
// whole, or 1138; `results` is then of no use.
[[nodiscard]] int ReadStepResults(std::int32_t step, StepResults& results);

}  // namespace kaldra
