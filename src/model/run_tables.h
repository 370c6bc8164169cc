// Tables that one run makes from the mesh and keeps to its end: the elements in batches, and the matrix of the system.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "functions/lane_function.h"

namespace kaldra {

// Elements that are worked on side by side.
inline constexpr std::size_t laneCount = 8;

// Elements that agree in the node slots in use, the number of integration points and the material. They stand in
// batches of eight; the lanes left over in the last batch repeat its last element.
struct ElementKind {
    std::size_t material = 0;                 // index
    std::size_t slots = 0;                    // node slots in use
    std::array<std::uint8_t, 8> slot{};       // which ones, in order
    std::size_t points = 0;                   // integration points
    std::array<std::array<float, 8>, 9> N{};  // interpolation functions per point, in the slots in use
    std::size_t firstBatch = 0;
    std::size_t batchCount = 0;
    std::size_t firstShape = 0;  // of its first batch in `shapes`
    std::size_t firstEntry = 0;  // in `entries`
    std::size_t firstLoad = 0;   // in `nodes` and `loads`

    [[nodiscard]] std::size_t ShapesPerBatch() const { return points * (2 * slots + 2) * laneCount; }
    [[nodiscard]] std::size_t EntriesPerBatch() const { return slots * slots * laneCount; }
    [[nodiscard]] std::size_t LoadsPerBatch() const { return slots * laneCount; }
};

// The active elements. What belongs to a batch is laid out with the lane running fastest:
//
//     nodes    [slot][lane]                 index of the node
//     shapes   [point][B1.. B2.. w, A][lane] global derivatives by x and by y of every slot, then d wr ws and the depth
//     entries  [row slot][column slot][lane] element matrix of the system
//     loads    [slot][lane]                 Cap T old
struct ElementBatches {
    std::vector<ElementKind> kinds;
    std::vector<std::int32_t> element;    // per batch and lane: index of the element
    std::vector<std::uint8_t> laneInUse;  // per batch: lanes that are no repetition
    std::vector<std::size_t> kindOfBatch;
    std::vector<std::int32_t> nodes;
    std::vector<float> shapes;
    std::vector<float> entries;
    std::vector<float> loads;
    std::vector<std::int64_t> placeOfElement;  // per element: batch * laneCount + lane; -1 for one without points

    // Per material: its functions. The vectors hold what the others point to.
    struct Functions {
        LaneFunction conductivity, water;
        std::vector<float> conductivityX, waterX;
        std::vector<LaneInterval> conductivityIntervals, waterIntervals;
    };
    std::vector<Functions> functions;

    std::int64_t faultyElement = -1;  // first element that cannot be integrated; -1: none

    // What the recorded point values and the entries come from.
    struct Inputs {
        std::int32_t step = -1;  // -1: nothing is recorded yet
        bool allPointsOpen = false;
        bool conductivityHolds = false;
        std::uint64_t temperatures = 0;  // ProblemModel::temperatureVersion
        std::uint64_t switched = 0;      // ProblemModel::switchedVersion
        bool operator==(const Inputs&) const = default;
    };
    Inputs inputs;
    bool entriesFormed = false;  // for `increment`
    float increment = 0;
};

// The symmetric matrix of the system as it is assembled: the upper triangle without its zeros, column after column with
// the rows rising, so that the diagonal is the last of its column. An equation of no active element has no column.
struct SystemMatrix {
    std::vector<std::int64_t> columnStart;  // nodeCount + 1
    std::vector<std::int32_t> row;
    std::vector<double> value;
    // Where the values come from: element entries, in the order in which they are added.
    std::vector<std::int64_t> sourceStart;  // per value, and one behind the last
    std::vector<std::int32_t> source;       // in ElementBatches.entries
    std::vector<std::int64_t> loadStart;    // per node, and one behind the last
    std::vector<std::int32_t> load;         // in ElementBatches.loads
    std::uint64_t version = 0;              // changes whenever a value may have changed
};

// Where the groups of SkylineStore stand.
struct SkylineProfile {
    std::vector<std::int64_t> top;    // per group of eight columns: its first row
    std::vector<std::int64_t> start;  // in SkylineStore; and one behind the last
    std::vector<double> reciprocal;   // 1 / d of the last factorisation
};

// What the last solution came from.
struct LastSolution {
    std::uint64_t version = 0;  // SystemMatrix::version of the factor at hand; 0: none
    std::vector<std::int32_t> code;
    std::vector<float> rightHandSide;
    std::vector<float> solution;
};

}  // namespace kaldra
