#include "convergence/graph_memory.h"

#include "platform/memory.h"
#include "run/messages.h"

namespace kaldra {

GraphMemory graphMemory;
std::recursive_mutex hmtxGraphMem;

bool GraphWindowIsOpen() {
    const std::scoped_lock lock(hmtxGraphMem);
    return graphMemory.GraphWindow != 0;
}

int CreateGraphTables() {
    FreeGraphTables();
    GraphMemory& g = graphMemory;
    {
        const std::scoped_lock lock(hmtxGraphMem);
        if (TryResizeTable(g.GraphIterations, 1) && TryResizeTable(g.GraphNorms, 1) &&
            TryResizeTable(g.GraphStepList, 1) && TryResizeTable(g.GraphStepIterations, 1)) {
            return 1;
        }
    }
    return ShowOutOfMemory();
}

// Doubles, since a table that grows by one point an iteration would be copied in every one of them.
[[nodiscard]] static bool TryMakeRoom(std::vector<double>& table, std::size_t count) {
    return count <= table.capacity() || TryReserveTable(table, 2 * count);
}

int StoreGraphPoint(std::int32_t iteration, double norm, bool& redrawDue) {
    GraphMemory& g = graphMemory;
    const auto count = static_cast<std::size_t>(iteration);
    {
        const std::scoped_lock lock(hmtxGraphMem);
        if (TryMakeRoom(g.GraphIterations, count) && TryMakeRoom(g.GraphNorms, count)) {
            g.GraphIterations.resize(count);
            g.GraphNorms.resize(count);
            g.GraphIterations.back() = iteration;
            g.GraphNorms.back() = norm;
            g.GraphPointCount = iteration;
            redrawDue = g.GraphWindow != 0 && g.GraphUpdateMode == graphAutomatically &&
                        iteration <= g.GraphLastIteration &&
                        (g.GraphPointCount - g.GraphFirstIteration) % g.GraphUpdateInterval == 0;
            return 1;
        }
    }
    return ShowOutOfMemory();
}

void FreeGraphTables() {
    const std::scoped_lock lock(hmtxGraphMem);
    GraphMemory& g = graphMemory;
    std::vector<double>().swap(g.GraphIterations);
    std::vector<double>().swap(g.GraphNorms);
    std::vector<std::int32_t>().swap(g.GraphStepList);
    std::vector<std::int32_t>().swap(g.GraphStepIterations);
    g.GraphPointCount = 0;
    g.GraphStepCount = 0;
}

void SetGraphDefaults() {
    const std::scoped_lock lock(hmtxGraphMem);
    GraphMemory& g = graphMemory;
    g.GraphPointCount = 0;
    g.GraphFirstIteration = 1;
    g.GraphUpdateMode = graphAutomatically;
    g.GraphUpdateInterval = 1;
    g.GraphStep = 0;
    g.GraphStepCount = 0;
    g.GraphDisplayFlags = graphSymbols | graphColour | graphThickLines;
    g.GraphFontStyle = 0;
    g.GraphFontSize = 125.0F;
    g.GraphFontName = StringText(1213);
}

void SetGraphStep(std::int32_t step) {
    const std::scoped_lock lock(hmtxGraphMem);
    graphMemory.GraphStep = step;
}

}  // namespace kaldra
