#include "frontend/graph.h"

#include "convergence/graph_memory.h"
#include "frontend/commands.h"
#include "frontend/print_fit.h"
#include "run/run_state.h"
#include "support/chart_operations.h"
#include "support/convergence_text.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

using testing::Contains;
using testing::IsEmpty;

int repaints = 0;
bool graphEnabled = false;

class Graph : public KaldraTest {
protected:
    Graph() {
        repaints = 0;
        graphEnabled = true;
        SetGraphDefaults();
        ChartOperations::Connect();
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

    static std::vector<std::string> Redraw() {
        (void)ChartOperations::Take();
        RedrawGraph();
        return ChartOperations::Take();
    }

    // The open document: a transient problem of two steps with a history.
    void OpenDocument(const std::string& history) {
        const Problem twoSteps = TransientColumn({"1 0.5 0.5 1", "2 0.5 1.0 1"});
        WriteFile("case.cnp", history);
        ASSERT_EQ(OpenDataFile(WriteFile("case.kdr", twoSteps.Text())), 1);
    }
};

TEST_F(Graph, AsksForThisDrawing) {
    model.analysisType = transient;
    graphMemory.GraphStep = 7;
    graphMemory.GraphFontStyle = graphBold | graphItalic;
    HaveCurve({1.23456789, 100000.4, 2, 3, 4}, 1, 4);
    EXPECT_THAT(Redraw(),
                ElementsAre("Begin", "Title Step Number 7", "XTitle Iteration #", "YTitle Vector Norm", "Type 6 0",
                            "XScale 1 0 0 0.0 0 0", "YScale 1 0 0 0.0 0 0", "Symbol 1 7", "SymbolSize 12.0",
                            "LineWidth 1 1", "LineColour 1 2", "Font 1 Arial", "TextStyle 0 1 48 125",
                            "TextStyle 1 1 48 93", "TextStyle 2 1 48 93", "TextStyle 3 1 48 93",
                            // five digits in single precision
                            "YData 4 1 1.23459995E+000 1.00000000E+005 2.00000000E+000 3.00000000E+000",
                            "XData 4 1.00000000E+000 2.00000000E+000 3.00000000E+000 4.00000000E+000",
                            "Options 6 24604 0", "End"));
    EXPECT_EQ(graphMemory.GraphNorms[0], static_cast<double>(1.2346F));  // in place
    EXPECT_EQ(graphMemory.GraphNorms[4], 4);
}

TEST_F(Graph, OptionBitsFollowTheDisplayFlags) {
    for (const auto& [flags, options] :
         {std::pair{0, 0x402C}, {graphSymbols, 0x403C}, {graphColour, 0x400C}, {graphThickLines, 0x602C}}) {
        graphMemory.GraphDisplayFlags = flags;
        HaveCurve({1, 2}, 1, 2);
        EXPECT_THAT(Redraw(), Contains(FormatText("Options 6 %d 0", options)));
    }
}

TEST_F(Graph, AShortCurveFixesItsXAxis) {
    for (const auto& [points, scale] : {std::pair{1, "XScale 60 2 1 2.0 0 0"}, {3, "XScale 60 4 1 4.0 0 0"}}) {
        HaveCurve({1, 2, 3, 4}, 1, points);
        EXPECT_THAT(Redraw(), Contains(scale));
    }
    HaveCurve({1, 2, 3, 4}, 2, 4);  // three points that do not begin at 1
    EXPECT_THAT(Redraw(), testing::Not(Contains(testing::StartsWith("XScale 60"))));
}

TEST_F(Graph, ARangeWithoutPointsLeavesTheOldDrawing) {
    HaveCurve({1, 2}, 3, 9);
    EXPECT_THAT(Redraw(), IsEmpty());
    HaveCurve({1, 2}, 1, 2);
    graphMemory.GraphPointCount = 9;  // the tables were made anew behind its back
    EXPECT_THAT(Redraw(), Contains("YData 2 1 1.00000000E+000 2.00000000E+000"));
    FreeGraphTables();
    EXPECT_THAT(Redraw(), IsEmpty());
}

TEST_F(Graph, OpensWithTheLastStepOfTheFileAndGoesWithItsTables) {
    OpenDocument(ConvergenceText({{1, {1, 2, 3, 4}}, {4, {5, 6}}}));
    EXPECT_EQ(GraphCaption(), "Convergence - case.kdr");
    OpenGraph();
    EXPECT_THAT(ChartOperations::Take(), testing::IsSupersetOf({"Open C", "Create 0.0 0.0 300.0 400.0 1000.0 64 259",
                                                                "Paint 1", "Title Step Number 4", "End"}));
    EXPECT_EQ(repaints, 1);
    EXPECT_FALSE(graphEnabled);
    EXPECT_FALSE(CommandsNow().graph);
    EXPECT_EQ(runState.graphOwnsModel, 1);
    EXPECT_EQ(model.stepCount, 2);
    EXPECT_TRUE(model.nodes.size() == 1 && model.nodeCount == 0);

    WriteFile("case.cnp", ConvergenceText({{9, {5, 6}}}));
    UpdateGraph();
    EXPECT_THAT(ChartOperations::Take(), testing::IsSupersetOf({"Clear 1", "Title Step Number 9"}));

    CloseGraph();
    EXPECT_THAT(ChartOperations::Take(), ElementsAre("Destroy 3", "Close"));
    EXPECT_EQ(model.stepCount, 0);
    EXPECT_EQ(runState.graphOwnsModel, 0);
    EXPECT_TRUE(graphEnabled);
    GraphWindowGone();
    EXPECT_THAT(ChartOperations::Take(), IsEmpty());
}

TEST_F(Graph, AFileThatCannotBeReadLeavesAnEmptyWindow) {
    OpenDocument("damaged");
    OpenGraph();
    EXPECT_THAT(TakeMessages(), ElementsAre(1153));
    EXPECT_TRUE(GraphWindowIsOpen());
    EXPECT_EQ(repaints, 0);
    UpdateGraph();  // draws what is there: nothing
    EXPECT_THAT(TakeMessages(), ElementsAre(1153));
    EXPECT_THAT(ChartOperations::Take(), testing::Not(Contains("Begin")));
    NewDocument();
    EXPECT_FALSE(GraphWindowIsOpen());
}

TEST_F(Graph, PrintsFittedAndCopiesTheJob) {
    EXPECT_EQ(PrintChart({"printer", "", 3, printLandscape}), 1);
    EXPECT_THAT(ChartOperations::Take(), ElementsAre("PrintOpen printer  4", "PrintPlace 250.0 0.0 750.0 1000.0 1 3",
                                                     "PrintPages 0 3 2", "PrintClose"));
    EXPECT_EQ(PrintChart({}), 0);
    EXPECT_THAT(TakeMessages(), ElementsAre(1282));
}

TEST(PrintFit, TheSideThatFitsFirstLimits) {
    struct Case {
        Extent chart, page;
        PagePlace place;
    };
    for (const Case& c : {Case{{1, 2}, {10, 10}, {2.5, 0, 7.5, 10}},  // bands above and below
                          Case{{2, 1}, {10, 10}, {0, 2.5, 10, 7.5}},  // and at the sides
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
