// What lies at a place of the mesh: for the cursor, and along a line.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "view/scene.h"

namespace kaldra {

struct Probe {
    std::int32_t element = 0;  // number; 0: no element is there
    bool takesPart = false;    // false: NULL, without values
    std::int32_t node = 0;     // number of the element's nearest node
    float temperature = 0;     // at the place, from the nodes
    bool hasPoint = false;     // the two below are those of the nearest integration point
    float conductivity = 0;
    float unfrozenWater = 0;  // volume per volume of ground
};

// `results`: of the scene's step; null without one, and temperatures are then 0.
[[nodiscard]] Probe ProbeAt(const Scene& scene, const StepResults* results, double x, double y);

struct SectionSample {
    double distance = 0;  // from the beginning of the line
    double temperature = 0;
};

// Temperatures at `count` equal steps along the line, in pieces: what is outside the mesh or NULL parts them.
[[nodiscard]] std::vector<std::vector<SectionSample>> SampleLine(const Scene& scene, double x1, double y1, double x2,
                                                                 double y2, std::int32_t count = 400);

// Number of the node nearest to a place that belongs to a cell, 0 if none is within `reach`.
[[nodiscard]] std::int32_t NearestNode(const Scene& scene, double x, double y, double reach);

}  // namespace kaldra
