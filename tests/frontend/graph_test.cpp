#include "frontend/graph.h"

#include "convergence/graph_memory.h"
#include "frontend/chart_drawing.h"
#include "frontend/commands.h"
#include "frontend/print_fit.h"
#include "platform/number_text.h"
#include "run/run_state.h"
#include "support/convergence_text.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

int repaints = 0;
bool graphEnabled = false;

class Graph : public KaldraTest {
protected:
    Graph() {
        repaints = 0;
        graphEnabled = true;
        SetGraphDefaults();
        ConnectChartRecorder();
        frontEnd.CloseGraphWindow = [] { GraphWindowGone(); };
        frontEnd.SetGraphEnabled = [](bool enabled) { graphEnabled = enabled; };
        frontEnd.RepaintGraph = [] {
            ++repaints;
            EXPECT_TRUE(GraphMemoryIsFree());
        };
    }

    // A curve in memory, displayed from `first` to `last`.
    static void HaveCurve(std::vector<double> norms, std::int32_t first, std::int32_t last) {
        graphMemory.GraphPointCount = static_cast<std::int32_t>(norms.size());
        graphMemory.GraphIterations.clear();
        for (std::size_t i = 1; i <= norms.size(); ++i) graphMemory.GraphIterations.push_back(static_cast<double>(i));
        graphMemory.GraphNorms = std::move(norms);
        graphMemory.GraphFirstIteration = first;
        graphMemory.GraphLastIteration = last;
    }

    static const ChartDrawing& Redraw() {
        RedrawGraph();
        return ShownDrawing();
    }

    // The open document: a transient problem of two steps with a history.
    void OpenDocument(const std::string& history) {
        const Problem twoSteps = TransientColumn({"1 0.5 0.5 1", "2 0.5 1.0 1"});
        WriteFile("case.cnp", history);
        ASSERT_EQ(OpenDataFile(WriteFile("case.kdr", twoSteps.Text())), 1);
    }
};

TEST_F(Graph, ShowsItsCurveAsAWhole) {
    model.analysisType = transient;
    graphMemory.GraphStep = 7;
    graphMemory.GraphFontStyle = graphItalic;
    HaveCurve({1.23456789, 100000.4, 2, 3, 4}, 1, 4);
    EXPECT_FALSE(ShownDrawing().drawn);
    const ChartDrawing& shown = Redraw();
    EXPECT_TRUE(shown.drawn && shown.joinsPoints && shown.marksPoints && shown.thickLine && shown.coloured);
    EXPECT_EQ(shown.title, "Step Number 7");
    EXPECT_EQ(shown.fontName, "Arial");
    EXPECT_EQ(shown.texts[chartMainTitle].sizePercent, 125);
    EXPECT_EQ(shown.texts[chartLegend].sizePercent, 93);
    EXPECT_TRUE(shown.texts[chartAxisTitles].italic && !shown.texts[chartAxisTitles].bold);
    EXPECT_EQ(CurveText(shown),
              "Iteration #\tVector Norm\n1\t1.2346E+000\n2\t1.0000E+005\n3\t2.0000E+000\n4\t3.0000E+000\n");
    EXPECT_EQ(graphMemory.GraphNorms[0], static_cast<double>(1.2346F));  // five digits in single precision, in place

    chartService.ChartClear(1);
    chartService.ChartBegin();
    EXPECT_TRUE(ShownDrawing().drawn);  // until the next one ends
    chartService.ChartDestroy(0);
    EXPECT_FALSE(ShownDrawing().drawn);
}

TEST_F(Graph, LooksAsTheDisplayFlagsSay) {
    for (const std::int32_t flags : {0, graphSymbols, graphColour, graphThickLines}) {
        graphMemory.GraphDisplayFlags = flags;
        HaveCurve({1, 2}, 1, 2);
        const ChartDrawing& shown = Redraw();
        EXPECT_EQ(shown.marksPoints, flags == graphSymbols);
        EXPECT_EQ(shown.coloured, flags == graphColour);
        EXPECT_EQ(shown.thickLine, flags == graphThickLines);
    }
}

TEST_F(Graph, AShortCurveFixesItsXAxis) {
    for (const std::int32_t points : {1, 3}) {
        HaveCurve({1, 2, 3, 4}, 1, points);
        EXPECT_EQ(Redraw().xScale.kind, chartScaleFixed);
        const std::vector<double> ticks = XAxisOf(ShownDrawing(), 10).ticks;
        EXPECT_TRUE(ticks.front() == 0 && ticks.back() == points + 1);
    }
    HaveCurve({1, 2, 3, 4}, 2, 4);  // three points that do not begin at 1
    EXPECT_EQ(Redraw().xScale.kind, chartScaleAutomatic);
}

TEST_F(Graph, ARangeWithoutPointsLeavesTheOldDrawing) {
    HaveCurve({1, 2}, 1, 2);
    graphMemory.GraphPointCount = 9;  // the tables were made anew behind its back
    EXPECT_THAT(Redraw().y, ElementsAre(1, 2));
    HaveCurve({3, 4}, 3, 9);
    EXPECT_THAT(Redraw().y, ElementsAre(1, 2));
    FreeGraphTables();
    EXPECT_THAT(Redraw().y, ElementsAre(1, 2));
}

TEST_F(Graph, OpensWithTheLastStepOfTheFileAndGoesWithItsTables) {
    OpenDocument(ConvergenceText({{1, {1, 2, 3, 4}}, {4, {5, 6}}}));
    EXPECT_EQ(GraphCaption(), "Convergence - case.kdr");
    OpenGraph();
    EXPECT_EQ(ShownDrawing().title, "Step Number 4");
    EXPECT_EQ(repaints, 1);
    EXPECT_FALSE(graphEnabled || CommandsNow().graph);
    EXPECT_TRUE(runState.graphOwnsModel == 1 && model.stepCount == 2);
    EXPECT_TRUE(model.nodes.size() == 1 && model.nodeCount == 0);

    WriteFile("case.cnp", ConvergenceText({{9, {5, 6}}}));
    UpdateGraph();
    EXPECT_EQ(ShownDrawing().title, "Step Number 9");

    CloseGraph();
    EXPECT_FALSE(ShownDrawing().drawn);
    EXPECT_TRUE(runState.graphOwnsModel == 0 && model.stepCount == 0 && graphEnabled);
    GraphWindowGone();  // a second time: nothing is left to close
}

TEST_F(Graph, AFileThatCannotBeReadLeavesAnEmptyWindow) {
    OpenDocument("damaged");
    OpenGraph();
    EXPECT_TRUE(GraphWindowIsOpen());
    EXPECT_EQ(repaints, 0);
    UpdateGraph();  // draws what is there: nothing
    EXPECT_THAT(TakeMessages(), ElementsAre(1153, 1153));
    EXPECT_FALSE(ShownDrawing().drawn);
    NewDocument();
    EXPECT_FALSE(GraphWindowIsOpen());
}

// A drawing twice as wide as high, on a square page.
TEST_F(Graph, PrintsFittedAndCopiesTheJob) {
    EXPECT_EQ(PrintChart({}), 0);
    EXPECT_THAT(TakeMessages(), ElementsAre(1282));
    static std::string printed;
    printed.clear();
    chartService.PrintOpen = [](std::string_view device, std::string_view file, std::int32_t orientation) {
        return printed += FormatText("open %s%s %d", device, file, orientation), 0;
    };
    chartService.DrawnHeight = [](auto...) { return 100.0; };
    chartService.DrawnWidth = [](auto...) { return 200.0; };
    chartService.PageHeight = chartService.PageWidth = [](auto...) { return 1000.0; };
    chartService.PrintPlace = [](double top, double left, double bottom, double right, auto...) {
        printed += FormatText(", place %.1f %.1f %.1f %.1f", top, left, bottom, right);
    };
    chartService.PrintPages = [](auto, std::int32_t copies, auto) { printed += FormatText(", %d copies", copies); };
    chartService.PrintClose = [] { printed += ", close"; };
    EXPECT_EQ(PrintChart({"printer", "", 3, printLandscape}), 1);
    EXPECT_EQ(printed, "open printer 4, place 250.0 0.0 750.0 1000.0, 3 copies, close");
}

TEST(PrintFit, TheSideThatFitsFirstLimits) {
    struct Case {
        Extent chart, page;
        PagePlace place;
    };
    for (const Case& c : {Case{{2, 1}, {10, 10}, {0, 2.5, 10, 7.5}},  // bands at the sides
                          Case{{3, 3}, {10, 10}, {0, 0, 10, 10}}, Case{{4, 2}, {8, 40}, {0, 18, 8, 22}}}) {
        const PagePlace place = FitToPage(c.chart, c.page);
        EXPECT_DOUBLE_EQ(place.top, c.place.top);
        EXPECT_DOUBLE_EQ(place.left, c.place.left);
        EXPECT_DOUBLE_EQ(place.bottom, c.place.bottom);
        EXPECT_DOUBLE_EQ(place.right, c.place.right);
    }
}

}  // namespace
}  // namespace kaldra
