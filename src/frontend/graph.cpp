#include "frontend/graph.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "convergence/convergence_history.h"
#include "convergence/graph_memory.h"
#include "frontend/chart_service.h"
#include "frontend/commands.h"
#include "model/data_file.h"
#include "model/file_names.h"
#include "model/problem_model.h"
#include "platform/number_text.h"
#include "run/analysis.h"
#include "run/front_end.h"
#include "run/messages.h"
#include "run/run_state.h"

namespace kaldra {

// ---------------------------------------------------------------------------------------------------------------------
// The chart of the window

namespace {

constexpr std::int32_t noChart = -1;

struct GraphChart {
    ChartSession chartSession;
    std::int32_t chart = noChart;
};

GraphChart graphChart;

// A service that does not open leaves the window blank.
void CreateChart(ChartWindowHandle window) {
    if (chartService.ChartOpen(graphChart.chartSession, "C") != 0) return;
    ChartPlace place;
    place.height = chartService.ChartHeight(window);
    place.width = chartService.ChartWidth(window);
    graphChart.chart = chartService.ChartCreate(window, place, graphChart.chartSession);
    chartService.ChartPaint(1);
}

void SetGraphWindow(std::int32_t open) {
    const std::scoped_lock lock(hmtxGraphMem);
    graphMemory.GraphWindow = open;
}

}  // namespace

void GraphWindowGone() {
    if (!GraphWindowIsOpen()) return;
    const std::int32_t chart = std::exchange(graphChart.chart, noChart);
    if (chart >= 0) chartService.ChartDestroy(chart);
    SetGraphWindow(0);
    chartService.ChartClose();
    graphChart = {};
}

void PaintGraph() { chartService.ChartPaint(3); }

void CopyGraph() {
    chartService.ChartCopy(7, 0);
    frontEnd.Beep();
}

std::string GraphCaption() {
    std::string caption(StringText(1100));
    return caption.append(model.dataFileName, FileNameOffset(model.dataFileName));
}

// ---------------------------------------------------------------------------------------------------------------------
// The description of the drawing, with hmtxGraphMem held

namespace {

// The points that are drawn: `first` is the index of the first one.
struct DisplayRange {
    std::size_t first = 0;
    std::int32_t count = 0;  // below 1: nothing to draw
};

DisplayRange RangeToDraw() {
    const GraphMemory& g = graphMemory;
    const auto held = static_cast<std::int32_t>(std::min(g.GraphIterations.size(), g.GraphNorms.size()));
    const std::int32_t last = std::min({g.GraphLastIteration, g.GraphPointCount, held});
    const std::int32_t first = std::max(g.GraphFirstIteration, 1);
    return {static_cast<std::size_t>(first - 1), last - first + 1};
}

void DescribeTitles() {
    const bool steady = model.analysisType == steadyState;
    chartService.ChartTitle(steady ? std::string(StringText(1304))
                                   : FormatText("%s %d", StringText(1106), graphMemory.GraphStep));
    chartService.ChartXTitle(StringText(1102));
    chartService.ChartYTitle(StringText(1103));
}

// Gives the option bits, which are set when everything else is described.
std::int32_t DescribeCurveLook() {
    const std::int32_t flags = graphMemory.GraphDisplayFlags;
    std::int32_t options = chartOptionPlain;
    if ((flags & graphSymbols) != 0) {
        options |= chartOptionSymbols;
        chartService.ChartSymbol(1, 7);
        chartService.ChartSymbolSize(12.0);
    }
    options |= chartOptionLines;
    if ((flags & graphThickLines) != 0) {
        options |= chartOptionThickLines;
        chartService.ChartLineWidth(1, 1);
    }
    if ((flags & graphColour) != 0) {
        chartService.ChartLineColour(1, 2);
    } else {
        options |= chartOptionMonochrome;
    }
    return options;
}

void DescribeTexts() {
    const GraphMemory& g = graphMemory;
    const bool bold = (g.GraphFontStyle & graphBold) != 0;
    const bool italic = (g.GraphFontStyle & graphItalic) != 0;
    const std::int32_t style = (bold ? chartTextBold : 0) | (italic ? chartTextItalic : 0);
    chartService.ChartFont(1, g.GraphFontName);
    for (std::int32_t element = chartMainTitle; element < chartTextElements; ++element) {
        const float size = element == chartMainTitle ? g.GraphFontSize : g.GraphFontSize * 0.75F;
        chartService.ChartTextStyle(element, 1, style, static_cast<std::int32_t>(size));
    }
}

// Five digits, in single precision, are what the chart shows.
void RoundNorms(std::span<double> norms) {
    for (double& norm : norms) {
        float rounded = 0;
        if (ScanText(FormatText(" %20.4E ", norm), " %f ", &rounded).fields == 1) norm = static_cast<double>(rounded);
    }
}

}  // namespace

void RedrawGraph() {
    const DisplayRange range = RangeToDraw();
    const std::int32_t n = range.count;
    if (n < 1) return;
    chartService.ChartBegin();
    DescribeTitles();
    chartService.ChartType(6, 0);
    chartService.ChartXScale({});
    chartService.ChartYScale({});
    const std::int32_t options = DescribeCurveLook();
    DescribeTexts();
    if (graphMemory.GraphFirstIteration == 1 && n < 4) {
        chartService.ChartXScale({chartScaleFixed, n + 1, 1, static_cast<double>(n + 1), 0, 0});
    }
    const auto count = static_cast<std::size_t>(n);
    const auto norms = std::span(graphMemory.GraphNorms).subspan(range.first, count);
    RoundNorms(norms);
    chartService.ChartYData(n, 1, norms);
    chartService.ChartXData(n, std::span(graphMemory.GraphIterations).subspan(range.first, count));
    chartService.ChartOptions(6, options, 0);
    chartService.ChartEnd();
}

void ShowDrawing() {
    {
        const std::scoped_lock lock(hmtxGraphMem);
        chartService.ChartClear(1);
        RedrawGraph();
    }
    frontEnd.RepaintGraph();
}

// ---------------------------------------------------------------------------------------------------------------------
// The commands

namespace {

// Makes the tables that a graph request needs in place of whatever the model holds.
void BeginGraphTables() {
    (void)FreeModel();
    InitModel(1);
    runState.graphOwnsModel = 1;
}

// The step that a graph request shows: the last of the file, 0 for a steady-state analysis.
std::int32_t TakeLastStep() {
    if (model.analysisType == steadyState) return 0;
    const std::scoped_lock lock(hmtxGraphMem);
    GraphMemory& g = graphMemory;
    if (g.GraphStepCount > 0) g.GraphStep = g.GraphStepList[static_cast<std::size_t>(g.GraphStepCount - 1)];
    return g.GraphStep;
}

}  // namespace

void OpenGraph() {
    if (!GraphWindowIsOpen()) {
        void* const window = frontEnd.OpenGraphWindow();
        SetGraphWindow(1);
        frontEnd.SetGraphEnabled(false);
        CreateChart(window);
    }
    if (RunUnderWay()) return;
    BeginGraphTables();
    if (!ReadTimeSequence() || !ScanConvergenceFile() || !LoadConvergenceStep(TakeLastStep())) return EndRun();
    {
        const std::scoped_lock lock(hmtxGraphMem);
        RedrawGraph();
    }
    frontEnd.RepaintGraph();
}

void UpdateGraph() {
    if (!RunUnderWay()) {
        BeginGraphTables();
        (void)ReadTimeSequence();
        (void)ScanConvergenceFile();
        (void)LoadConvergenceStep(TakeLastStep());
    }
    ShowDrawing();
}

void DrawGraphData() {
    if (GraphWindowIsOpen()) ShowDrawing();
}

void CloseGraph() {
    if (runState.graphOwnsModel == 1 && !RunUnderWay()) {
        (void)FreeModel();
        InitModel(1);
    }
    runState.graphOwnsModel = 0;
    frontEnd.CloseGraphWindow();
    GraphWindowGone();
    frontEnd.SetGraphEnabled(CommandsNow().graph);
}

}  // namespace kaldra
