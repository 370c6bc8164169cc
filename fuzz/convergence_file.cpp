// The convergence file, read back for the graph: its steps, the curve of some of them, and a drawing.
#include <algorithm>

#include "convergence/convergence_history.h"
#include "convergence/graph_memory.h"
#include "frontend/graph.h"
#include "model/problem_model.h"
#include "support.h"

namespace kaldra {

static void ReadCurves() {
    if (!ScanConvergenceFile()) return;
    const GraphMemory& g = graphMemory;
    const auto steps = static_cast<std::size_t>(g.GraphStepCount);
    Require(steps <= g.GraphStepList.size() && steps <= g.GraphStepIterations.size(), "every step has an entry");
    for (std::size_t i = 0; i < std::min<std::size_t>(steps, 8); ++i) {
        if (!LoadConvergenceStep(g.GraphStepList[i])) continue;
        const auto points = static_cast<std::size_t>(g.GraphPointCount);
        Require(points <= g.GraphNorms.size() && points <= g.GraphIterations.size(), "every point has an entry");
        Require(g.GraphPointCount <= g.GraphStepIterations[i], "a curve has no more points than were counted");
    }
}

}  // namespace kaldra

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kaldra;
    RestoreSmallProblem();
    WriteFuzzFile("case.cnp", BytesOf(data, size));
    for (const std::int32_t kind : {transient, steadyState}) {
        model.analysisType = kind;
        ReadCurves();
        UpdateGraph();
    }
    return 0;
}
