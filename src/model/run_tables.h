// Tables that one run makes from the mesh and keeps to its end: the elements in batches, and the matrix of the system.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "functions/lane_function.h"
#include "platform/memory.h"
#include "solver/dense_kernels.h"

namespace kaldra {

// Elements that are worked on side by side.
inline constexpr std::size_t laneCount = 8;

// Elements that agree in the node slots in use, the number of integration points and the material. They stand in
// batches of eight; the lanes left over in the last batch repeat its last element. NULL elements use no slot: they have
// a place for what is recorded at their points, and nothing is computed there.
struct ElementKind {
    std::size_t material = 0;                 // index
    std::size_t slots = 0;                    // node slots in use
    std::array<std::uint8_t, 8> slot{};       // which ones, in order
    std::size_t points = 0;                   // integration points
    bool infinite = false;                    // in one direction or both
    std::array<std::array<float, 8>, 9> N{};  // interpolation functions per point, in the slots in use
    std::size_t firstBatch = 0;
    std::size_t batchCount = 0;
    std::size_t firstShape = 0;  // of its first batch in `shapes`
    std::size_t firstEntry = 0;  // in `entries`
    std::size_t firstLoad = 0;   // in `nodes` and `loads`
    std::size_t firstPoint = 0;  // in the tables per integration point

    [[nodiscard]] std::size_t ShapesPerBatch() const { return points * (2 * slots + 2) * laneCount; }
    [[nodiscard]] std::size_t EntriesPerBatch() const { return slots * slots * laneCount; }
    [[nodiscard]] std::size_t LoadsPerBatch() const { return slots * laneCount; }
    [[nodiscard]] std::size_t PointsPerBatch() const { return points * laneCount; }
};

// What a LaneFunction points to.
struct LaneFunctionTables {
    std::vector<float> x;
    std::vector<LaneInterval> intervals;
    std::vector<double> columns;
};

// The elements with points. What belongs to a batch is laid out with the lane running fastest:
//
//     nodes    [slot][lane]                 index of the node
//     shapes   [point][B1.. B2.. w, A][lane] global derivatives by x and by y of every slot, then d wr ws and the depth
//     entries  [row slot][column slot][lane] element matrix of the system
//     loads    [slot][lane]                 Cap T old
//     oldWater [point][lane]                unfrozen part of the water when the step began, 0 to 1
struct ElementBatches {
    std::vector<ElementKind> kinds;
    std::vector<std::int32_t> element;    // per batch and lane: index of the element
    std::vector<std::uint8_t> laneInUse;  // per batch: lanes that are no repetition
    std::vector<std::size_t> kindOfBatch;
    std::vector<std::int32_t> nodes;
    LargeTable<float> shapes;
    LargeTable<float> entries;
    LargeTable<float> loads;
    LargeTable<float> oldWater;
    std::vector<std::int64_t> placeOfElement;  // per element: batch * laneCount + lane; -1 for one without points
    std::size_t pointPlaces = 0;               // integration points of all batches and lanes

    // Per material: its functions.
    struct Functions {
        LaneFunction conductivity, water;
        LaneFunctionTables conductivityTables, waterTables;
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
    LargeTable<std::int32_t> row;
    LargeTable<double> value;
    // Where the values come from: element entries, in the order in which they are added.
    LargeTable<std::int64_t> sourceStart;  // per value, and one behind the last
    LargeTable<std::int32_t> source;       // in ElementBatches.entries
    std::vector<std::int64_t> loadStart;   // per node, and one behind the last
    std::vector<std::int32_t> load;        // in ElementBatches.loads
    std::uint64_t version = 0;             // changes whenever a value may have changed

    // The entries between a free and a prescribed equation, in the order in which they move to the right-hand side, and
    // the codes that they are listed for.
    struct Coupling {
        std::int32_t free, prescribed;
        std::int64_t value;
    };
    std::vector<Coupling> couplings;
    std::vector<std::int32_t> couplingCode;
};

// Where the groups of SkylineStore stand.
struct SkylineProfile {
    std::vector<std::int64_t> top;    // per group of eight columns: its first row
    std::vector<std::int64_t> start;  // in SkylineStore; and one behind the last
    std::vector<double> reciprocal;   // 1 / d of the last factorisation
};

// Equations that the sparse factorisation eliminates together, and the front that they are eliminated in: its columns
// are their positions, padded to a multiple of eight, and then the later positions that they are coupled with, the
// remainder.
struct Supernode {
    std::int32_t first = 0;      // position of the first pivot, a multiple of eight
    std::int32_t pivots = 0;     // equations
    std::int32_t padded = 0;     // pivots, rounded up to a multiple of eight
    std::int32_t remainder = 0;  // further columns
    std::int32_t parent = -1;    // -1: none
    std::int32_t firstChild = -1;
    std::int32_t nextSibling = -1;
    std::int32_t depth = 0;       // parents above it
    std::int64_t firstRow = 0;    // of its remainder in EliminationTree::row
    std::int64_t firstEntry = 0;  // in EliminationTree::entryPlace
    std::int64_t factor = 0;      // where its rows stand in the factor
    std::int64_t update = 0;      // where its remainder stands until its parent takes it:
    bool updateIsShared = false;  // among those that outlast their subtree, or else in the thread's workspace

    [[nodiscard]] std::int64_t PivotGroups() const { return padded / 8; }
    [[nodiscard]] std::int64_t RemainderGroups() const { return (remainder + 7) / 8; }
    [[nodiscard]] std::int64_t Groups() const { return PivotGroups() + RemainderGroups(); }
    // Where a group begins, counted from `factor`: it holds the pivots' rows down to its last column.
    [[nodiscard]] std::int64_t FactorOffset(std::int64_t group) const {
        const std::int64_t full = group < PivotGroups() ? group : PivotGroups();
        return 32 * full * (full + 1) + (group - full) * padded * 8;
    }
    [[nodiscard]] std::int64_t FactorEntries() const { return FactorOffset(Groups()); }
    // The same for the groups of the remainder, counted from `update`: they hold the rows of the remainder.
    [[nodiscard]] static std::int64_t UpdateOffset(std::int64_t group) { return 32 * group * (group + 1); }
    [[nodiscard]] std::int64_t UpdateEntries() const { return UpdateOffset(RemainderGroups()); }
};

// Supernodes that one thread works on, one after another: parts of the tree with all that is below them.
struct Subtree {
    std::int32_t begin = 0;  // supernodes
    std::int32_t end = 0;
};

// How the sparse factorisation goes about model.system: fixed once per run. A position is the place of an equation in
// the order of elimination, with the padding of every supernode.
struct EliminationTree {
    std::vector<Supernode> nodes;             // every one after its children
    std::vector<Subtree> subtrees;            // in order; the other supernodes are worked on by all threads, one by one
    std::vector<std::int32_t> top;            // those others, in order
    std::vector<std::int32_t> equation;       // per position; -1 for padding
    std::vector<std::int32_t> row;            // positions of the remainders, rising within each
    std::vector<std::int32_t> place;          // per row: its column in the front of the parent
    std::vector<std::int32_t> entryPlace;     // where an entry of the matrix goes, from Supernode::factor on
    std::vector<std::int32_t> entryValue;     // which one it is, in SystemMatrix::value
    std::array<std::int64_t, 2> workspace{};  // values of remainders of even and odd depth that a thread holds at most
    std::int64_t sharedUpdates = 0;           // values of the remainders that outlast their subtree
    std::int64_t factorEntries = 0;           // values of the factor
    double operations = 0;                    // multiplications and additions of a factorisation
};

// What one thread needs to factorise a subtree.
struct SubtreeWorkspace {
    std::array<LargeTable<double>, 2> updates;  // remainders, of even and odd depth
    LargeTable<double> pivots;                  // the pivots' rows of a front
    LargeTable<double> scratch;                 // of a strip
    std::vector<ColumnGroup> groups;            // of a front
};

// The last sparse factorisation, and what a factorisation and a solution work in.
struct SparseFactor {
    LargeTable<double> rows;         // per supernode: the pivots' rows of its groups
    std::vector<double> reciprocal;  // 1 / d per position
    LargeTable<double> sharedUpdates;
    std::vector<SubtreeWorkspace> workspaces;  // per thread
    LargeTable<double> own;                    // solution per position
    LargeTable<double> left;                   // what a supernode leaves to its parent, from firstLeft on
    std::vector<std::int64_t> firstLeft;       // per supernode: multiples of eight; and one behind the last
};

// What the last solution came from.
struct LastSolution {
    std::uint64_t version = 0;  // SystemMatrix::version of the factor at hand; 0: none
    std::vector<std::int32_t> code;
    std::vector<float> rightHandSide;
    std::vector<float> solution;
};

}  // namespace kaldra
