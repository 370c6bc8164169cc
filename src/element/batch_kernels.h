// The work on eight elements side by side, compiled for several processors and chosen when the program runs.
//
// Every lane does the same operations in the same order as the plain procedures of element_matrices, so every
// processor gives the same bits as they do. Plain pointers and numbers only: what is compiled for one processor must
// share no inline code with the rest of the program.
#pragma once

#include <cstddef>
#include <cstdint>

#include "functions/lane_function.h"

namespace kaldra {

// The nodal temperatures of the whole model.
struct LaneTables {
    const float* temperature;  // of node 0; `previous` stands behind it
    std::size_t nodeStride;    // floats from node to node
};

// What one batch is evaluated with.
struct LaneBatch {
    std::size_t slots, points;
    const float (*N)[8];        // per point
    const std::int32_t* nodes;  // [slot][lane]
    const float* shapes;        // as in ElementBatches
    float* record;              // of PointResults: [run][point][lane]
    float* floor;               // of SlopeFloor: [point][lane]
    const std::uint8_t* phase;  // of PhaseState: [point][lane]
    float* oldWater;            // [point][lane]: unfrozen part of the water when the step began
};

// Settings of the iteration and of the material.
struct LaneSettings {
    bool transient;
    bool conductivityHolds;  // keep the recorded conductivity
    bool allPointsOpen;      // every point takes latent heat
    bool stepIsNew;          // oldWater is still to be evaluated
    float increment;
    float freezingPoint;
    float latentHeat;
    float conductivityRatio;
    float waterContent;
    float frozenHeatCapacity;
    float unfrozenHeatCapacity;
    LaneFunction conductivity;
    LaneFunction water;
};

// The intervals in which the lanes stood last. They cost or spare a search, and change no result.
struct LaneHints {
    std::size_t conductivity = 0;
    std::size_t water = 0;
    std::size_t oldWater = 0;
};

// What the geometry of one batch of finite elements is computed from. The functions are those of the slots in use.
struct LaneGeometry {
    std::size_t slots, points;
    const float (*N)[8];        // per point
    const float (*dN)[2][8];    // per point: by r, by s
    const float (*weights)[2];  // per point: of s, of r
    const float* xy;            // [slot][x, y][lane]
    const float* thickness;     // [lane]
    bool axisymmetric;
};

struct BatchKernels {
    // Computes the shapes of a batch, as in ElementBatches. Bit i is lane i: gives those with an area scale that is not
    // positive.
    unsigned (*map)(const LaneGeometry& batch, float* shapes);
    // Evaluates and records the values at the points. Gives whether a conductivity or a capacity is another than was
    // recorded.
    bool (*evaluate)(const LaneTables& tables, const LaneBatch& batch, const LaneSettings& settings, LaneHints& hints);
    // Forms the element matrices of the system, K alone or dt K + Cap and with it Cap T old, from the record.
    void (*form)(const LaneTables& tables, const LaneBatch& batch, const LaneSettings& settings, float* entries,
                 float* loads);
    // Forms Cap T old alone.
    void (*load)(const LaneTables& tables, const LaneBatch& batch, float* loads);
    // Tells per point, 16 bits each, which lanes have crossed the freezing point: bits 0 to 7 upwards, 8 to 15
    // downwards. `now` takes the present temperatures of points that any has crossed, [point][lane]. Gives whether
    // there are any.
    bool (*cross)(const LaneTables& tables, const LaneBatch& batch, float freezingPoint, float* now,
                  std::uint16_t* crossed);
};

extern const BatchKernels batchKernelsPlain;
#if defined(__x86_64__)
extern const BatchKernels batchKernelsAvx2;
extern const BatchKernels batchKernelsAvx512;
#endif

// The kernels for this processor.
[[nodiscard]] const BatchKernels& ChosenBatchKernels();

}  // namespace kaldra
