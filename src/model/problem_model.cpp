#include "model/problem_model.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "convergence/graph_memory.h"
#include "platform/memory.h"
#include "run/front_end.h"
#include "run/messages.h"
#include "run/run_state.h"

namespace kaldra {

ProblemModel model;

std::size_t PointCount(std::size_t e) {
    return static_cast<std::size_t>(std::max(model.elements[e].integrationPoints, 0));
}

// Where the points of an element's batch begin, and how many the batch has.
struct BatchPoints {
    std::size_t first, count, lane;
};

static BatchPoints BatchPointsOf(std::size_t e) {
    assert(model.batches.placeOfElement[e] >= 0);
    const auto place = static_cast<std::size_t>(model.batches.placeOfElement[e]);
    const std::size_t batch = place / laneCount;
    const ElementKind& kind = model.batches.kinds[model.batches.kindOfBatch[batch]];
    const std::size_t count = kind.PointsPerBatch();
    return {kind.firstPoint + (batch - kind.firstBatch) * count, count, place % laneCount};
}

std::size_t PointPlace(std::size_t e, std::size_t point) {
    const BatchPoints points = BatchPointsOf(e);
    return points.first + point * laneCount + points.lane;
}

PointRuns PointResultsOf(std::size_t e) {
    const BatchPoints points = BatchPointsOf(e);
    float* const first = model.PointResults.data() + 5 * points.first + points.lane;
    const auto run = [&](std::size_t number) { return PointRun(first + number * points.count); };
    return {run(0), run(1), run(2), run(3), run(4)};
}

bool IsNullElement(const ElementRec& element) {
    return model.materials[IndexOf(element.material)].conductivityFunction == 0;
}

// The first table that cannot be had ends the chain, with the message shown and the later tables left out.
static bool CreateEmptyTables() {
    return MakeTable(model.materials, 1) && MakeTable(model.kFunctions, 1) && MakeTable(model.sFunctions, 1) &&
           MakeTable(model.mFunctions, 1) && MakeTable(model.bFunctions, 1) && MakeTable(model.fluxSections, 1) &&
           MakeTable(model.fluxResults, 1) && MakeTable(model.timeSteps, 1) && MakeTable(model.nodes, 1) &&
           MakeTable(model.elements, 1) && MakeTable(model.qBoundaries, 1) && MakeTable(model.nodeStates, 1) &&
           CreateGraphTables() && MakeTable(model.PointResultOffset, 1) && MakeTable(model.PointResults, 1) &&
           MakeTable(model.SolutionVector, 1) && MakeTable(model.EquationCode, 1) &&
           MakeTable(model.SkylineColumnPtr, 1) && MakeTable(model.SkylineStore, 1) && MakeTable(model.SlopeFloor, 1) &&
           MakeTable(model.PhaseState, 1);
}

static void ForgetDocument() {
    frontEnd.CloseGraphWindow();
    model.analysisType = 0;
    runState.fileOpen = 0;
    runState.convergenceFileExists = 0;
    runState.pendingFileName.clear();
    runState.openPattern = StringText(1073);
}

void InitModel(int mode) {
    runState.currentStep = std::max(runState.startStep - 1, 0);
    runState.running = 0;
    if (mode == 0) ForgetDocument();
    if (mode == 1) (void)CreateEmptyTables();
}

int FreeModel() {
    FreeGraphTables();
    ProblemModel empty;
    empty.dataFileName = std::move(model.dataFileName);
    empty.baseName = std::move(model.baseName);
    empty.analysisType = model.analysisType;
    model = std::move(empty);
    return 1;
}

}  // namespace kaldra
