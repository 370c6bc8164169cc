// The staged switching of integration points, on temperatures made by hand.

#include "element/phase_change.h"

#include <algorithm>

#include "convergence/convergence_file.h"
#include "platform/number_text.h"
#include "run/run_state.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

class PhaseChange : public KaldraTest {
protected:
    // Elements of one point each, with three nodes of their own, so that a point has the temperature that is set.
    void SetUp() override {
        Problem problem;
        problem.analysis = "2 1 100 1 0";
        problem.S = {FunctionRows(1, {"-1 0", "1 1"})};
        problem.materials = {"1 1 1 1 1 1", "2 0 0 1 1 1"};
        problem.times = {"1 1 1 1"};
        for (int e = 0; e < 11; ++e) {
            const int n = problem.Node(e, 0);
            problem.Node(e + 1, 0);
            problem.Node(e, 1);
            problem.Element(FormatText("%d %d %d 0 0 0 0 0", n, n + 1, n + 2), 1, "1", e == 10 ? 2 : 1);
        }
        ASSERT_TRUE(Prepare(problem));
        ASSERT_EQ(CreateConvergenceFile(), 1);
        runState.currentStep = 1;
    }
    static void SetPoint(std::size_t e, float previous, float temperature) {
        for (std::size_t i = 0; i < 3; ++i) model.nodeStates[3 * e + i] = {temperature, previous, 0};
    }
    static int State(std::size_t e) { return model.PhaseState[PointPlace(e, 0)]; }
    static std::vector<int> States() {
        std::vector<int> states;
        for (std::size_t e = 0; e < 11; ++e) states.push_back(State(e));
        return states;
    }
};

// The warmest go first; a call that finds nothing establishes the region, once.
TEST_F(PhaseChange, TenPointsAtMostFourAtATime) {
    model.maxPhasePoints = 4;
    for (std::size_t e = 0; e < 11; ++e) SetPoint(e, -1, static_cast<float>((e * 7) % 11 + 1));
    const std::vector<std::vector<int>> expected{
        {0, 1, 0, 1, 0, 0, 1, 0, 0, 1, 0},  // temperatures 8, 11, 10, 9 of 1 8 4 11 7 3 10 6 2 9 (5: NULL)
        {0, 1, 1, 1, 1, 1, 1, 1, 0, 1, 0},
        {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0},
    };
    for (const auto& states : expected) {
        EXPECT_EQ(ControlPhaseChange(), 1);
        EXPECT_EQ(States(), states);
        EXPECT_EQ(runState.PhaseChangeMode, phaseSearching);
    }
    for (int call = 0; call < 2; ++call) {
        EXPECT_EQ(ControlPhaseChange(), 1);
        EXPECT_EQ(runState.PhaseChangeMode, phaseEstablished);
        EXPECT_THAT(recorder.status, ElementsAre("Phase change region established."));
    }
    EXPECT_THAT(ReadFile("case.cnp"), testing::EndsWith("=\r\nPhase change region established.\r\n"));
}

TEST_F(PhaseChange, DirectionsAreLimitedApart) {
    model.maxPhasePoints = 2;
    for (std::size_t e = 0; e < 5; ++e) SetPoint(e, -1, 1 + static_cast<float>(e));
    for (std::size_t e = 5; e < 10; ++e) SetPoint(e, 1, -1 - static_cast<float>(e));
    EXPECT_EQ(ControlPhaseChange(), 1);
    EXPECT_EQ(States(), (std::vector<int>{0, 0, 0, 1, 1, 0, 0, 0, 2, 2, 0}));
}

struct Crossing {
    float previous, temperature;
    int state;
};

TEST_F(PhaseChange, ACrossingLeavesTheFreezingPointOnBothSides) {
    model.maxPhasePoints = 20;
    const std::vector<Crossing> crossings{{-1, 1, 1}, {1, -1, 2}, {0, 1, 0}, {0, -1, 0},
                                          {-1, 0, 0}, {1, 0, 0},  {2, 1, 0}, {-2, -1, 0}};
    for (std::size_t e = 0; e < crossings.size(); ++e) SetPoint(e, crossings[e].previous, crossings[e].temperature);
    EXPECT_EQ(ControlPhaseChange(), 1);
    for (std::size_t e = 0; e < crossings.size(); ++e) EXPECT_EQ(State(e), crossings[e].state) << e;
    EXPECT_EQ(runState.PhaseChangeMode, phaseSearching);

    // A point that went back keeps its state, and a switched one is no candidate for the other direction.
    SetPoint(0, 1, -1);
    EXPECT_EQ(ControlPhaseChange(), 1);
    EXPECT_EQ(State(0), 1);
    EXPECT_EQ(runState.PhaseChangeMode, phaseEstablished);
}

TEST_F(PhaseChange, NoPointsAtATimeEstablishAtOnce) {
    for (const int most : {0, -3}) {
        model.maxPhasePoints = most;
        runState.PhaseChangeMode = phaseSearching;
        SetPoint(0, -1, 1);
        EXPECT_EQ(ControlPhaseChange(), 1);
        EXPECT_EQ(runState.PhaseChangeMode, phaseEstablished);
        EXPECT_EQ(State(0), 0);
    }
    runState.running = 0;
    EXPECT_EQ(ControlPhaseChange(), 0);  // Stop, without a word
}

}  // namespace
}  // namespace kaldra
