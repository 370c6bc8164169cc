// ProblemModel: every table and scalar of one analysis.
//
// Records refer to each other by the 1-based numbers of the data file, 0 meaning none; record n stands at IndexOf(n).
// A table always exists: an empty one holds one zero-filled record and has count 0. Tables are zero-filled when they
// are made, so fields that the reader does not set start at 0.
//
// The front end touches the tables only while no calculation thread lives, the calculation thread only while it lives:
// there is no lock. The model is always released and created as a pair, FreeModel then InitModel(1).
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "model/run_tables.h"
#include "platform/memory.h"

namespace kaldra {

// Where record number n of a table stands.
[[nodiscard]] constexpr std::size_t IndexOf(std::int32_t number) { return static_cast<std::size_t>(number - 1); }

inline constexpr std::size_t slotCount = 8;             // node slots of an element
inline constexpr std::int32_t largestSmallTable = 255;  // records of the material and function tables at most

// Values of NodeRec.bcType.
inline constexpr std::int32_t bcFree = 0;
inline constexpr std::int32_t bcTemperature = 1;
inline constexpr std::int32_t bcNodalFlux = 2;
inline constexpr std::int32_t bcUnitFlux = 3;
inline constexpr std::int32_t bcUnitFluxAlso = 5;   // joins bcUnitFlux in nodalArea and qApplied
inline constexpr std::int32_t bcLastOfElapsed = 5;  // up to here a boundary function is read at elapsed time
inline constexpr std::int32_t bcLastOfFixed = 7;    // from there up to here at its fixedArgument

// Values of EquationCode.
inline constexpr std::int32_t equationFree = 0;
inline constexpr std::int32_t equationPrescribed = 1;
inline constexpr std::int32_t equationInactive = 9;  // the node belongs to no active element

// Values of analysisType and problemView.
inline constexpr std::int32_t steadyState = 1;
inline constexpr std::int32_t transient = 2;
inline constexpr std::int32_t viewAxisymmetric = 2;
inline constexpr std::int32_t viewPlan = 3;

// One node of the mesh as the data file gives it, and its boundary value.
struct NodeRec {
    float x;  // the radius in an axisymmetric problem
    float y;
    float bcValue;    // boundary value in force: temperature, or nodal heat flow
    float bcInput;    // constant boundary value of the file; 0 where a boundary function gives it
    float nodalArea;  // tributary area of a unit flux node in plan view
    float qApplied;   // unit flux integrated to a nodal flow
    std::int32_t bcType;
    std::int32_t bcFunction;        // BoundaryFunction number
    std::int32_t modifierFunction;  // M function number
};

// What the iteration works on, one per node.
struct NodeState {
    float temperature;  // latest iterate
    float previous;     // steady state: before the present iteration; transient: end of the previous step
    float sumVolume;    // stays 0; last column of the .tin file
};

// An element. Its family follows from the slots in use: slot 4 for a quadrilateral, slot 3 for a triangle, else a line.
//
//     2 --5-- 1         3
//     |       |         | \                     1 (r = +1)
//     6       8         7   6          2 --5-- 1
//     |       |         |     \                 2 (r = -1)
//     3 --7-- 4         1 --5-- 2
struct ElementRec {
    float thickness;
    std::int32_t nodes[slotCount];  // four corners, then the side node behind each corner; 0 absent
    std::int32_t material;
    std::int32_t integrationPoints;
    std::int32_t infiniteR;  // direction of infinity along x: -1, 0, +1
    std::int32_t infiniteS;  // along y
};

struct MaterialRec {
    std::int32_t conductivityFunction;  // K function number; 0 makes the material NULL
    std::int32_t waterContentFunction;  // S function number
    float conductivityRatio;            // second to first principal conductivity; always 1
    float conductivityAngle;            // degrees; always 0
    float waterContent;                 // in situ volumetric water content
    float unfrozenHeatCapacity;         // volumetric, above freezingPoint
    float frozenHeatCapacity;           // volumetric, at and below freezingPoint
};

// One point of a function, in order of rising x.
struct FunctionPoint {
    float x;
    float y;
    float slope;  // dy/dx, from function setup
};

// A K, S or M function of temperature.
struct PropertyFunction {
    std::int32_t pointCount = 0;  // 0: the function is absent
    float smoothing = 0;          // 0: the points are used as they are
    float weight = 0;             // exponent of the slope fit
    std::vector<FunctionPoint> points;
};

// A B function: a boundary value against time.
struct BoundaryFunction {
    std::int32_t xKind = 0;  // stored, not used
    std::int32_t yKind = 0;  // stored, not used
    std::int32_t pointCount = 0;
    std::int32_t repeat = 0;  // 1: repeats with `period`
    float period = 0;         // x of the last point
    float fixedArgument = 0;  // argument for nodes of type 6 and 7
    float smoothing = 0;
    float weight = 0;
    std::int64_t line = 0;  // of its header in the data file
    std::vector<FunctionPoint> points;
};

struct TimeStepRec {
    float increment;
    float elapsed;  // at the end of the step
    std::int32_t saveFlag;
};

// One edge with a unit flux.
struct QBoundaryRec {
    std::int32_t node1;
    std::int32_t sideNode;  // found at run start
    std::int32_t node2;
    std::int32_t element;
    std::int32_t edgeKind;   // stored, not used
    std::int32_t bFunction;  // BoundaryFunction number
    std::int32_t modifier;   // M function number
    float q;
};

struct FluxLine {
    float x1, y1, x2, y2;
};

struct FluxSection {
    std::int32_t lineCount = 0;
    std::vector<FluxLine> lines;
};

// One element crossed by a flux section.
struct FluxCrossing {
    std::int32_t element;
    float xa, ya, xb, yb;  // the two points of the crossing, in the section's direction
    float heatFlux;
    float storage;
    std::int32_t leftNodes[slotCount];  // the element's nodes left of the direction or on the line, by slot
    std::int32_t rightNodes[slotCount];
};

struct FluxResult {
    std::int32_t crossingCount = 0;
    float heatFlux = 0;
    float storage = 0;
    std::vector<FluxCrossing> crossings;
};

struct ProblemModel {
    // What belongs to the open document and outlives a run.
    std::string dataFileName;
    std::string baseName;  // dataFileName less its last four characters
    std::int32_t analysisType = 0;

    // Settings.
    std::int32_t problemView = 0;  // 1 plane, 2 axisymmetric, 3 plan view
    float latentHeat = 0;          // per unit volume of water
    std::int32_t useDoubleStore = 0;
    float freezingPoint = 0;
    std::int32_t maxIterations = 0;
    float tolerance = 0;              // per cent change of the norm
    std::int32_t maxPhasePoints = 0;  // points switched per direction and call at most
    float poleX = 0, poleY = 0;
    std::string titleLine[4];
    std::int64_t convergeLine = 0;   // of the data file: the row of CONVERGE,
    std::int64_t firstStepLine = 0;  // and the first of TIME

    // Counts.
    std::int32_t nodeCount = 0, elementCount = 0, materialCount = 0;
    std::int32_t kFunctionCount = 0, sFunctionCount = 0, mFunctionCount = 0, bFunctionCount = 0;
    std::int32_t stepCount = 0, fluxSectionCount = 0, qBoundaryCount = 0;
    std::int32_t pointTotal = 0;  // integration points of all elements

    // Tables of the data file.
    std::vector<MaterialRec> materials;
    std::vector<PropertyFunction> kFunctions, sFunctions, mFunctions;
    std::vector<BoundaryFunction> bFunctions;
    std::vector<TimeStepRec> timeSteps;
    std::vector<NodeRec> nodes;
    std::vector<NodeState> nodeStates;
    std::vector<ElementRec> elements;
    std::vector<QBoundaryRec> qBoundaries;
    std::vector<FluxSection> fluxSections;
    std::vector<FluxResult> fluxResults;

    // Working tables of a run.
    std::vector<std::int32_t> PointResultOffset;  // per element: points of the elements before it
    std::vector<float> PointResults;              // five runs per batch, see PointRuns
    std::vector<float> SolutionVector;            // per node: right-hand side, solution, then nodal flow
    std::vector<std::int32_t> EquationCode;       // per node
    std::vector<std::int64_t> SkylineColumnPtr;   // per node: position of the diagonal
    LargeTable<double> SkylineStore;
    std::vector<float> SlopeFloor;               // per PointPlace: largest slope of the water content in this step
    std::vector<std::uint8_t> PhaseState;        // per PointPlace: 0 not switched, 1 thawing, 2 freezing
    std::vector<std::int32_t> boundaryElements;  // index of each that feeds nodal flows
    std::uint64_t temperatureVersion = 0;  // changes whenever a temperature on which point values rest has changed
    std::uint64_t switchedVersion = 0;     // changes whenever PhaseState has changed within a step
    ElementBatches batches;
    SystemMatrix system;
    SkylineProfile skyline;
    EliminationTree tree;
    SparseFactor sparse;
    LastSolution lastSolution;
};

extern ProblemModel model;

// Number of integration points of element index e; a count below 1 is an element without points.
[[nodiscard]] std::size_t PointCount(std::size_t e);

// Where a point of an element that has points stands in the tables per point, whose order is that of the batches with
// the lane running fastest: [batch][point][lane].
[[nodiscard]] std::size_t PointPlace(std::size_t e, std::size_t point);

// One recorded value at the points of an element, in its lane.
class PointRun {
public:
    explicit PointRun(float* first) : first_(first) {}
    float& operator[](std::size_t point) const { return first_[point * laneCount]; }

private:
    float* first_;
};

// The recorded values of an element's points. The block of a batch with p points begins at five times its place:
//
//     | conductivity | temperature | waterContent | waterSlope | heatCapacity |    each p laneCount values long
struct PointRuns {
    PointRun conductivity;
    PointRun temperature;
    PointRun waterContent;  // unfrozen, as a part of the volume
    PointRun waterSlope;    // its slope against temperature
    PointRun heatCapacity;  // volumetric, with the latent term
};

// Of an element that has points.
[[nodiscard]] PointRuns PointResultsOf(std::size_t e);

// True for an element that takes no part in the analysis: its material has no conductivity function.
[[nodiscard]] bool IsNullElement(const ElementRec& element);

// Mode 1 creates every table empty, all counts 0; message 1138 and an early return if one cannot be had.
// Mode 0 forgets the open document. Both put currentStep before startStep and clear `running`.
void InitModel(int mode);

// Releases every table and all working state; the open document's name and kind stay. Gives 1.
int FreeModel();

}  // namespace kaldra
