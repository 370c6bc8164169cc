#include "element/boundary_conditions.h"

#include "element/assembly.h"
#include "run/run_state.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

class BoundaryConditions : public KaldraTest {
protected:
    // A quadrilateral of 8 nodes, 6 wide and 2 high with its left side at `left`, thickness 3.
    static Problem Slab(double left, std::string_view analysis, std::string_view bottom = "0 3 0 0 0 0",
                        std::string_view top = "0 0 0 0 0 0") {
        Problem slab;
        slab.analysis = analysis;
        for (const double x : {left, left + 3, left + 6}) slab.Node(x, 0, bottom);  // 1, 2 (side), 3
        for (const double x : {left, left + 6}) slab.Node(x, 1);                    // 4, 5 (sides)
        for (const double x : {left, left + 3, left + 6}) slab.Node(x, 2, top);     // 6, 7 (side), 8
        slab.Element("8 6 1 3 7 4 2 5", 9, "3");
        return slab;
    }
    // Up to the boundary values of step `step`.
    bool PrepareAll(const Problem& problem, std::int32_t step = 0) {
        if (!Prepare(problem)) return false;
        runState.currentStep = step;
        if (model.problemView == viewPlan && !ComputeNodalAreas()) return false;
        return FindQBoundaryElements() && FindBoundaryElements() && PrepareBoundaryValues();
    }
    static std::vector<float> Values(float NodeRec::*field) {
        std::vector<float> values;
        for (const NodeRec& node : model.nodes) values.push_back(node.*field);
        return values;
    }
};

// 5 per unit area on 6 by 3: 90 in all, 15 : 60 : 15. Along the chord of two nodes 45 : 45. About the axis the parts
// are weighted by the radius, and an edge on the axis takes nothing.
TEST_F(BoundaryConditions, EdgeLoads) {
    struct Load {
        double left;
        const char* view;
        const char* edge;
        std::vector<float> applied;  // to the nodes 1 to 4
    };
    for (const Load& load : {Load{0, "1", "1 3", {15, 60, 15, 0}},
                             {0, "1", "3 1", {15, 60, 15, 0}},
                             {0, "1", "1 2", {22.5F, 22.5F, 0, 0}},
                             {1, "2", "1 3", {15, 240, 105, 0}},
                             {0, "2", "6 1", {0, 0, 0, 0}},
                             {2, "2", "1 6", {10, 0, 0, 40}},
                             {1, "2", "1 2", {45, 67.5F, 0, 0}}}) {  // 1 and 2 make no side of the element
        Problem slab = Slab(load.left, "1 " + std::string(load.view) + " 0 1 0");
        slab.edges = {std::string(load.edge) + " 1 0 5 0 0"};
        ASSERT_TRUE(PrepareAll(slab));
        const std::vector<float> applied = Values(&NodeRec::qApplied), values = Values(&NodeRec::bcValue);
        EXPECT_THAT(std::span(applied).first(4), Near(1e-4F, load.applied)) << load.edge;
        EXPECT_TRUE(values[1] == applied[1] && values[3] == 0);  // only type 3 takes the flux over
    }
}

TEST_F(BoundaryConditions, EdgesOfATriangleMeetInItsCorners) {
    Problem triangle;
    for (const auto& [x, y] : {std::pair{0, 0}, {2, 0}, {0, 2}, {1, 0}, {1, 1}, {0, 1}})
        triangle.Node(x, y, "0 3 0 0 0 0");
    triangle.Element("1 2 3 0 4 5 6 0", 3);
    triangle.edges = {"3 1 1 0 6 0 0", "1 2 1 0 3 0 0", "3 2 1 0 0 0 0"};
    ASSERT_TRUE(PrepareAll(triangle));
    EXPECT_THAT(Values(&NodeRec::bcValue), Near(1e-5F, {3, 1, 2, 4, 0, 8}));
    EXPECT_EQ(model.qBoundaries[2].sideNode, 5);
}

// The diagonal of the consistent mass gives a corner of an 8-node rectangle 3/76 of its area and a side node 16/76
// (Hinton et al.); the area here is 12. A modifier of 3 acts in a transient run.
TEST_F(BoundaryConditions, PlanViewLumpsAreas) {
    Problem plan = Slab(0, "1 3 0 1 0", "2 3 0 1 1 2", "4 5 0 0 0 0");
    plan.M = {FunctionRows(1, {"0 1", "4 5"})};
    plan.edges = {"1 3 1 0 5 0 0"};  // edges do not count in plan view
    ASSERT_TRUE(PrepareAll(plan));
    const float corner = 12 * 3.0F / 76, side = 12 * 16.0F / 76;
    EXPECT_THAT(Values(&NodeRec::nodalArea), Near(1e-4F, {corner, side, corner, 0, 0, corner, side, corner}));
    EXPECT_THAT((std::array{model.nodes[1].bcValue, model.nodes[6].qApplied}), Near(1e-4F, {2 * side, 4 * side}));
    EXPECT_EQ(model.nodes[6].bcValue, 4);  // type 5 joins the areas, not the load
    plan.analysis = "2 3 0 1 0";
    ASSERT_TRUE(PrepareAll(plan));
    EXPECT_NEAR(model.nodes[1].bcValue, 3 * 2 * side, 1e-4);
    plan.elements = {"1 3 1 6 8 2 4 7 5 1 9 3"};  // clockwise
    EXPECT_FALSE(PrepareAll(plan));
    EXPECT_THAT(TakeMessages(), ElementsAre(1194));
}

TEST_F(BoundaryConditions, SteadyStateTakesConstantsOnly) {
    Problem column = Column();
    column.M = {FunctionRows(1, {"0 7", "1 7"})};
    column.B = {"1 2 0 0 0 0\nfunction\n0 3\n1 3"};
    column.nodes[0] = "1 0 0 -5 1 0 1 0 0";  // a modifier plays no part
    column.nodes[2] = "3 0 1 4 8 0 0 0 0";   // any other type is a load on a free node
    column.nodes[6] = "7 5 5 4 1 1 0 0 0";   // inactive: its function is not looked at
    column.edges = {"1 2 1 0 5 1 0"};        // an edge may have a function, read at time 0
    ASSERT_TRUE(PrepareAll(column));
    EXPECT_THAT(Values(&NodeRec::bcValue), ElementsAre(-5, -1, 4, 0, 9, 9, 4));
    EXPECT_THAT(model.EquationCode, ElementsAre(1, 1, 0, 0, 1, 1, 9));
    EXPECT_FLOAT_EQ(model.nodes[0].qApplied, 1.5F);
    column.nodes[3] = "4 1 1 0 2 1 0 0 0";
    EXPECT_FALSE(PrepareAll(column));
    EXPECT_THAT(TakeMessages(), ElementsAre(1029));
}

// In step 2 of a transient run, at time 25: B 1 repeats with period 10 and reads 5, B 2 reads 25, M gives 3 at the
// temperature of 2 degrees of all nodes, the freezing point is -1.
TEST_F(BoundaryConditions, FunctionsAndModifiersActByType) {
    Problem slab = Slab(0, "2 1 0 1 -1");
    slab.times = {"1 5 5", "2 20 25"};
    slab.B = {"1 2 0 0 0 0 1\nrepeats\n0 0\n10 10", "2 2 0 0 0 0 0\nonce\n0 0\n50 50"};
    slab.M = {FunctionRows(1, {"0 1", "4 5"})};
    slab.edges = {"6 8 1 0 100 2 1"};  // 25 * 3 instead of 100, on an area of 18
    slab.nodes = {"1 0 0 -5 1 1 0 1 2", "2 3 0 -5 1 2 1 1 2", "3 6 0 -5 1 0 1 1 2", "4 0 1 7 2 1 1 1 2",
                  "5 6 1 7 2 0 1 1 2",  "6 0 2 7 3 0 1 1 2",  "7 3 2 7 4 2 1 1 2",  "8 6 2 0 7 2 0 1 2"};
    ASSERT_TRUE(PrepareAll(slab, 2));
    EXPECT_THAT(Values(&NodeRec::bcValue), Near(1e-4F, {5, 26 * 3 - 1, -5, 15, 7, 225, 7, 0}));
    EXPECT_THAT(model.EquationCode, ElementsAre(1, 1, 1, 0, 0, 0, 0, 0));
    const auto valueFor = [](std::int32_t type, float period) {
        float value = 77;
        model.nodes[0].bcType = type;
        model.bFunctions[0].period = period;
        model.bFunctions[0].fixedArgument = 4;
        EXPECT_EQ(BoundaryFunctionValue(1, 1, value), 1);
        return value;
    };
    EXPECT_EQ(valueFor(5, 25), 0);  // at the period's end its first point
    EXPECT_EQ(valueFor(5, 0), 10);  // a period of 0 does not repeat
    EXPECT_FLOAT_EQ(valueFor(6, 10), 4);
    EXPECT_FLOAT_EQ(valueFor(7, 10), 4);
    EXPECT_EQ(valueFor(8, 10), 77);  // nothing is read
}

// Node 3 alone at 1 degree drives -1 to 1 and 5, -2 to 4 and 4 to itself. A boundary node with nothing applied takes no
// flow, and neither does one of type 0.
TEST_F(BoundaryConditions, FlowsBelongToBoundaryNodes) {
    Problem column = Column();
    column.nodes[2] = "3 0 1 0 2 0 0 0 0";
    column.nodes[4] = "5 0 2 3 2 0 0 0 0";
    ASSERT_TRUE(PrepareAll(column));
    model.nodeStates.assign(7, {});
    model.nodeStates[2].temperature = 1;
    std::ranges::fill(model.PointResults, 2.0F);
    ASSERT_EQ(ComputeNodalFlows(), 1);
    EXPECT_THAT(model.SolutionVector, ElementsAre(-1, 0, 0, 0, -1, 0, 0));
    model.nodes[2].bcValue = 1e-20F;
    ASSERT_EQ(ComputeNodalFlows(), 1);
    EXPECT_THAT(model.SolutionVector, ElementsAre(-1, 0, 4, 0, -1, 0, 0));
    runState.running = 0;
    EXPECT_EQ(ComputeNodalFlows() + AssembleSteadySystem(), 0);
}

}  // namespace
}  // namespace kaldra
