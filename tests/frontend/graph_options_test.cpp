#include "frontend/graph_options.h"

#include "convergence/graph_memory.h"
#include "frontend/chart_drawing.h"
#include "frontend/commands.h"
#include "frontend/graph.h"
#include "run/run_state.h"
#include "support/convergence_text.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

class GraphOptionsDialog : public KaldraTest {
protected:
    GraphOptionsDialog() {
        ConnectChartRecorder();
        WriteFile("case.cnp", ConvergenceText({{1, {1, 2, 3, 4, 5}}, {2, {5, 6, 7}}}));
        const Problem twoSteps = TransientColumn({"1 0.5 0.5 1", "2 0.5 1.0 1"});
        EXPECT_EQ(OpenDataFile(WriteFile("case.kdr", twoSteps.Text())), 1);
    }
};

TEST_F(GraphOptionsDialog, ShowsTheStepsOfTheFileWhenIdle) {
    GraphOptions options = BeginGraphOptions();
    EXPECT_THAT(options.steps, ElementsAre("    1        5.0000E-001", "    2        1.0000E+000"));
    EXPECT_EQ(options.selectedStep, 1U);
    EXPECT_TRUE(options.stepsEnabled);
    EXPECT_FALSE(options.updateEnabled || IntervalEnabled(options));
    EXPECT_EQ(options.startText + ' ' + options.endText + ' ' + options.intervalText, "1 3 1");
    EXPECT_TRUE(options.symbols && options.colour && options.thickLines);
    EXPECT_EQ(FontLabel(options), "Arial Regular");

    options.startText = "2";
    SelectGraphStep(options, 0);
    EXPECT_EQ(options.startText + ' ' + options.endText, "1 5");
}

TEST_F(GraphOptionsDialog, DuringARunChangesTheUpdateRuleAndLeavesTheStep) {
    runState.running = 1;
    graphMemory.GraphStep = 2;
    GraphOptions options = BeginGraphOptions();
    EXPECT_THAT(options.steps, ElementsAre("    2        1.0000E+000"));
    EXPECT_FALSE(options.stepsEnabled);
    EXPECT_TRUE(options.updateEnabled && IntervalEnabled(options));
    options.intervalText = "3";
    graphMemory.GraphStep = 3;  // the run goes on while the dialog is open
    EXPECT_EQ(AcceptGraphOptions(options), 0);
    EXPECT_EQ(graphMemory.GraphUpdateInterval, 3);
    EXPECT_EQ(graphMemory.GraphStep, 3);

    options.updateMode = graphManually;
    EXPECT_FALSE(IntervalEnabled(options));
    options.intervalText = "9";
    EXPECT_EQ(AcceptGraphOptions(options), 0);
    EXPECT_EQ(graphMemory.GraphUpdateMode, graphManually);
    EXPECT_EQ(graphMemory.GraphUpdateInterval, 3);
    runState.running = 0;

    model.analysisType = steadyState;  // has one step, busy or not
    options = BeginGraphOptions();
    EXPECT_THAT(options.steps, ElementsAre("    0        Steady-State"));
    EXPECT_FALSE(options.stepsEnabled);
}

TEST_F(GraphOptionsDialog, ChecksInThisOrder) {
    struct Case {
        std::string start, end, interval;
        int message, field;
    };
    GraphOptions options = BeginGraphOptions();
    for (const Case& c : {
             Case{"x", "x", "x", 1115, optionsStart},
             Case{"", "2", "1", 1115, optionsStart},
             Case{"-1", "2", "1", 1115, optionsStart},
             Case{"99999999999", "2", "1", 1115, optionsStart},
             Case{"0", "2.5", "x", 1115, optionsEnd},
             Case{"0", "0", "x", 1176, optionsStart},
             Case{"2", "2", "x", 1175, optionsEnd},
             Case{"1", " 2 ", "x", 1115, optionsInterval},
             Case{"1", "2", "0", 1115, optionsInterval},
         }) {
        options.startText = c.start;
        options.endText = c.end;
        options.intervalText = c.interval;
        EXPECT_EQ(AcceptGraphOptions(options), c.field) << c.start << '|' << c.end << '|' << c.interval;
        EXPECT_THAT(TakeMessages(), ElementsAre(c.message));
        EXPECT_EQ(graphMemory.GraphUpdateInterval, 1);
    }
}

TEST_F(GraphOptionsDialog, TheUsersRangeReplacesTheOneOfTheReaders) {
    GraphOptions options = BeginGraphOptions();
    SelectGraphStep(options, 0);
    options.startText = "2";
    options.endText = "4";
    options.symbols = options.colour = false;
    ChooseGraphFont(options, std::string(40, 'f'), {.weight = 700, .italic = true}, 24, 16);
    ASSERT_EQ(AcceptGraphOptions(options), 0);
    const ChartTextLook& title = ShownDrawing().texts[chartMainTitle];
    EXPECT_TRUE(title.sizePercent == 150 && title.bold && title.italic);
    EXPECT_EQ(ShownDrawing().title, "Step Number 1");
    EXPECT_THAT(ShownDrawing().y, ElementsAre(2, 3, 4));
    EXPECT_EQ(graphMemory.GraphDisplayFlags, graphThickLines);
    EXPECT_EQ(graphMemory.GraphFontName.size(), longestFontName);
    EXPECT_EQ(FontLabel(options), std::string(32, 'f') + " Bold Italic");
}

TEST(GraphFont, SizesArePercentagesOfTheBaseHeight) {
    EXPECT_FLOAT_EQ(FontPercent(-20, 16), 125);
    EXPECT_EQ(FontPixels(125, 16), 20);
    EXPECT_EQ(FontPixels(125, 10), 13);  // 12.5 goes away from zero
}

TEST(GraphFont, StyleNames) {
    struct Case {
        FontFacts font;
        std::string style;
    };
    for (const Case& c : {
             Case{{}, "Regular"},
             Case{{.ownStyleName = "Book"}, "Book"},
             Case{{.weight = 401, .ownStyleName = "Book"}, "Bold"},
             Case{{.weight = 700, .italic = true, .faceIsBold = true}, "Italic"},
             Case{{.weight = 700, .italic = true, .faceIsBold = true, .faceIsItalic = true, .ownStyleName = "Heavy"},
                  "Heavy"},
             Case{{.scalable = false, .weight = 600, .ownStyleName = "Book"}, "Regular"},
             Case{{.scalable = false, .weight = 700, .italic = true, .faceIsItalic = true}, "Bold Italic"},
         }) {
        EXPECT_EQ(FontStyleName(c.font), c.style);
    }
}

}  // namespace
}  // namespace kaldra
