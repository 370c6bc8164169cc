#include "element/element_matrices.h"

#include "element/element_batches.h"
#include "element/element_geometry.h"
#include "run/run_state.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

using Corners = std::vector<std::array<double, 2>>;

class ElementMatrices : public KaldraTest {
protected:
    // One element; node numbers are places in xy.
    bool PrepareElement(const Corners& xy, std::string_view slots, int points, std::string_view rest = "1") {
        Problem problem;
        problem.analysis = analysis;
        problem.pole = pole;
        problem.S = {FunctionRows(1, {"-2 0", "0 1"})};
        problem.materials = {"1 1 1 3 5 0.5"};
        for (const auto& [x, y] : xy) problem.Node(x, y);
        problem.Element(slots, points, rest);
        if (!Prepare(problem)) return false;
        GetElementCoordinates(0, xyOfSlots);
        return true;
    }
    int Compute() { return ComputeElementMatrices(0, K, Cap); }
    float Determinant(float r, float s) {
        EXPECT_TRUE(ComputePointGeometry(model.elements[0], xyOfSlots, {r, s, 1, 1}, at));
        return at.determinant;
    }
    std::vector<float> Position(float r, float s) {
        EXPECT_TRUE(ComputePointGeometry(model.elements[0], xyOfSlots, {r, s, 1, 1}, at));
        std::vector<float> position(2);
        for (std::size_t i = 0; i < 2 * slotCount; ++i) position[i % 2] += at.M[i / 2] * xyOfSlots[i];
        return position;
    }

    std::string analysis = "1 1 0 1 0", pole = "POLE 0";
    ElementMatrix K{}, Cap{};
    ElementCoordinates xyOfSlots{};
    PointGeometry at{};
};

const Corners square{{1, 1}, {0, 1}, {0, 0}, {1, 0}};
const Corners halfSquare{{0, 0}, {1, 0}, {0, 1}};

// Conductivity 2, thickness 3. Unit square: 2/3, -1/6, -1/3, -1/6 times 6. Right triangle with legs 1: exact.
TEST_F(ElementMatrices, MatchHandFigures) {
    ASSERT_TRUE(PrepareElement(square, "1 2 3 4 0 0 0 0", 4, "3") && Compute() == 1);
    EXPECT_THAT(std::span(K).first(4), Near(1e-5F, {4, -1, -2, -1}));
    ASSERT_TRUE(PrepareElement(halfSquare, "1 2 3 0 0 0 0 0", 1, "3") && Compute() == 1);
    std::vector<float> expected{6, -3, -3, 0, 0, 0, 0, 0, -3, 3, 0, 0, 0, 0, 0, 0, -3, 0, 3};
    expected.resize(64);
    EXPECT_THAT(K, Near(0, expected));
    EXPECT_THAT(Cap, testing::Each(0));  // in a steady state
    analysis = "1 2 0 1 0";              // about the axis the depth is thickness times radius, 1/3 at the only point
    ASSERT_TRUE(PrepareElement(halfSquare, "1 2 3 0 0 0 0 0", 1, "3") && Compute() == 1);
    EXPECT_THAT(std::span(K).first(3), Near(1e-6F, {2, -1, -1}));
    ASSERT_TRUE(PrepareElement(halfSquare, "1 2 3 0 0 0 0 0", 0) && Compute() == 1);
    EXPECT_THAT(K, testing::Each(0));
}

// A uniform temperature conducts nothing, and what flows from a to b flows from b to a.
TEST_F(ElementMatrices, RowsSumToZeroAndAreSymmetric) {
    const Corners eight{{3, 2}, {0, 2.5}, {0.5, 0}, {2, -1}, {1.5, 2.5}, {0.25, 1.25}, {1, -0.4}, {2.75, 0.5}};
    struct Shape {
        const char* slots;
        int points;
        const char* rest;
    };
    analysis = "1 2 0 1 0";
    pole = "POLE 1\n-5 -5";
    for (const Shape& shape : {Shape{"1 2 3 4 5 6 7 8", 9, "2"},
                               {"1 2 3 4 5 6 7 8", 4, "2"},
                               {"1 2 3 4 0 0 7 0", 4, "2"},
                               {"3 4 1 0 7 8 0 0", 3, "2"},
                               {"1 2 3 4 0 6 0 0", 4, "1 1 0"},
                               {"1 2 3 4 0 0 0 0", 4, "1 1 1"}}) {
        ASSERT_TRUE(PrepareElement(eight, shape.slots, shape.points, shape.rest) && Compute() == 1) << shape.slots;
        EXPECT_GT(K[0], 0.1F);
        for (std::size_t i = 0; i < slotCount; ++i) {
            float sum = 0;
            for (std::size_t j = 0; j < slotCount; ++j) {
                sum += K[i * slotCount + j];
                EXPECT_EQ(K[i * slotCount + j], K[j * slotCount + i]);
            }
            EXPECT_NEAR(sum, 0, 2e-6F * K[0]) << shape.slots << " row " << i;
        }
    }
}

TEST_F(ElementMatrices, InsideOutElementsAreNamed) {
    const auto shown = [&](std::string_view slots, std::string_view rest, int points = 4) {
        EXPECT_TRUE(PrepareElement(square, slots, points, rest) && Compute() == 0) << slots;
        const std::vector<MessageBox> boxes = TakeBoxes();
        return boxes.size() == 1 ? boxes[0].caption + ": " + boxes[0].text : "";
    };
    const std::string finite = "Error: Area of finite element #1 is zero or negative.\nVerify data in KALDRA DEFINE.";
    const std::string infinite =
        "Error: Area of infinite element #1 is zero or negative.\n"
        "Check Position of Pole & Direction of Infinity in KALDRA DEFINE.";
    EXPECT_EQ(shown("4 3 2 1 0 0 0 0", "1"), finite);        // clockwise
    EXPECT_EQ(shown("1 2 1 2 0 0 0 0", "1"), finite);        // no area
    EXPECT_EQ(shown("1 2 3 4 0 2 0 0", "1 1 0"), infinite);  // the pole lies on the near side
    pole = "POLE 1\n-5 -5";
    EXPECT_EQ(shown("1 2 3 4 0 0 0 0", "1 1 0"), infinite);  // near slots are missing
    EXPECT_EQ(shown("1 2 0 4 0 3 0 0", "1 1 0"), infinite);
    EXPECT_EQ(shown("1 2 0 4 0 3 0 0", "1 1 1"), infinite);
    EXPECT_EQ(shown("1 2 3 0 0 0 0 0", "1 1 1", 1), infinite);  // a triangle
}

// Near side at x = 10, 4 high, pole at x = 0: x = 20 / (1 - r), so that d = 40 / (1 - r)^2. A pole ten farther away
// doubles it. Towards y the same element turned by a quarter.
TEST_F(ElementMatrices, OneInfiniteDirectionMapsByTheDistanceFromThePole) {
    const Corners alongX{{12, 4}, {10, 4}, {10, 0}, {12, 0}, {10, 2}};
    for (const char* direction : {"1 1 0", "1 -1 0"}) {
        ASSERT_TRUE(PrepareElement(alongX, "1 2 3 4 0 5 0 0", 4, direction));
        EXPECT_THAT(xyOfSlots, ElementsAre(0, 0, 10, 4, 10, 0, 0, 0, 20, 4, 10, 2, 20, 0, 0, 0));
        EXPECT_THAT((std::array{Determinant(-1, 0.5F), Determinant(0, -0.25F), Determinant(0.5F, 0)}),
                    Near(1e-4F, {10, 40, 160}));
        EXPECT_THAT(Position(0.5F, -0.25F), Near(1e-4F, {40, 1.5F}));
    }
    pole = "POLE 1\n-10 7";
    analysis = "1 2 0 1 0";
    ASSERT_TRUE(PrepareElement(alongX, "1 2 3 4 0 5 0 0", 4, "1 1 0"));
    EXPECT_FLOAT_EQ(Determinant(0.5F, 0), 320);
    ASSERT_EQ(Compute(), 1);
    // On the field y, with radius 40 / (1 - r) from the pole and d = 80 / (1 - r)^2, K works 2 * 3200 * 4 * 27 / 4.
    constexpr std::array<float, slotCount> y{4, 4, 0, 0, 0, 2, 0, 0};
    float work = 0;
    for (std::size_t i = 0; i < K.size(); ++i) work += y[i / slotCount] * K[i] * y[i % slotCount];
    EXPECT_NEAR(work, 172800, 1);
    pole = "POLE 1\n5 0";
    ASSERT_TRUE(PrepareElement({{0, 12}, {0, 10}, {4, 10}, {4, 12}, {2, 10}}, "1 2 3 4 0 5 0 0", 4, "1 0 1"));
    EXPECT_THAT(xyOfSlots, ElementsAre(0, 0, 0, 10, 4, 10, 0, 0, 0, 20, 2, 10, 4, 20, 0, 0));
    EXPECT_FLOAT_EQ(Determinant(0.5F, 0), 160);
}

// Near corner (3, 5) from the pole: x = 6 / (1 - r), y = 10 / (1 - s), d = 60 / ((1 - r)(1 - s))^2. The opposite sign
// swaps slots 6 and 7, and with them x and y, which fits a corner below the pole.
TEST_F(ElementMatrices, TwoInfiniteDirectionsSwapByTheSigns) {
    pole = "POLE 1\n1 2";
    const Corners above{{9, 9}, {4, 9}, {4, 7}, {9, 7}}, below{{9, -9}, {9, -3}, {4, -3}, {4, -9}};
    for (const char* signs : {"1 1 1", "1 -1 -1"}) {
        ASSERT_TRUE(PrepareElement(above, "1 2 3 4 0 0 0 0", 4, signs));
        EXPECT_THAT(xyOfSlots, ElementsAre(0, 0, 0, 0, 3, 5, 0, 0, 0, 0, 3, 10, 6, 5, 0, 0));
        EXPECT_THAT((std::array{Determinant(-1, -1), Determinant(0, 0.5F), Determinant(0.5F, 0.75F)}),
                    Near(1e-2F, {3.75F, 240, 3840}));
        EXPECT_THAT(Position(0.5F, -0.25F), Near(1e-4F, {12, 8}));
    }
    for (const char* signs : {"1 1 -1", "1 -1 1"}) {
        ASSERT_TRUE(PrepareElement(below, "1 2 3 4 0 0 0 0", 4, signs));
        EXPECT_THAT(xyOfSlots, ElementsAre(0, 0, 0, 0, 3, -5, 0, 0, 0, 0, 6, -5, 3, -10, 0, 0));
        EXPECT_FLOAT_EQ(Determinant(0, 0.5F), 240);
        ASSERT_TRUE(PrepareElement(above, "1 2 3 4 0 0 0 0", 4, signs) && Compute() == 0);
    }
    ASSERT_TRUE(PrepareElement(above, "1 2 3 4 0 0 0 0", 4, "1 2 1") && Compute() == 0);  // no sign at all
    EXPECT_THAT(TakeMessages(), ElementsAre(1196, 1196, 1196));
}

// Conductivity is 2 - T/10 at the temperature of the point, the mean of the corners.
TEST_F(ElementMatrices, PointsRecordWhatTheyUsed) {
    ASSERT_TRUE(PrepareElement(halfSquare, "1 2 3 0 0 0 0 0", 1));
    model.kFunctions[0].points = {{-10, 3, -0.1F}, {10, 1, -0.1F}};
    for (const std::size_t n : {0, 1, 2}) model.nodeStates[n] = {static_cast<float>(4 * n), 100, 0};
    ASSERT_EQ(Compute(), 1);
    const PointRuns record = PointResultsOf(0);
    EXPECT_THAT((std::array{record.temperature[0], record.conductivity[0], K[0]}), Near(1e-6F, {4, 1.6F, 1.6F}));
    model.nodeStates[0].temperature = -500;
    RecordedElementMatrices(0, K, Cap);
    EXPECT_FLOAT_EQ(K[0], 1.6F);
    runState.initialConditionMode = 2;  // what an earlier run left holds in iteration 1 only
    runState.iteration = 1;
    record.conductivity[0] = 7;
    ASSERT_EQ(Compute(), 1);
    EXPECT_EQ(K[0], 7);
    runState.iteration = 2;
    ASSERT_EQ(Compute(), 1);
    EXPECT_EQ(K[0], 3);
}

// Water 0.5 of the volume, unfrozen part 1 + T/2 between -2 and 0, latent heat 40: 10 per degree where it acts.
TEST_F(ElementMatrices, CapacityTakesLatentHeatWhereThePhaseControlAllows) {
    analysis = "2 1 40 1 0";
    ASSERT_TRUE(PrepareElement(halfSquare, "1 2 3 0 0 0 0 0", 3, "6"));
    const auto capacity = [&](float present, float old, int mode, float floor = 0) {
        for (NodeState& state : model.nodeStates) state = {present, old, 0};
        runState.PhaseChangeMode = mode;
        model.SlopeFloor[0] = floor;
        EXPECT_EQ(Compute(), 1);
        return PointResultsOf(0).heatCapacity[0];
    };
    EXPECT_FLOAT_EQ(capacity(-1, 1, phaseSearching), 5);  // unfrozen before
    EXPECT_FLOAT_EQ(capacity(1, 0, phaseSearching), 3);   // at the freezing point counts as frozen
    EXPECT_FLOAT_EQ(capacity(-1, 1, phaseSearching, 0.25F), 10);
    EXPECT_FLOAT_EQ(capacity(-1, -1, phaseEstablished), 3);
    EXPECT_FLOAT_EQ(capacity(-1, 1, phaseEstablished), 10);  // secant: half of the water in two degrees
    EXPECT_THAT((std::array{PointResultsOf(0).waterContent[0], PointResultsOf(0).waterSlope[0]}),
                Near(1e-6F, {0.25F, 0.125F}));
    EXPECT_FLOAT_EQ(Cap[0], 5);  // 10 * 6 / 12, and half of it beside the diagonal
    EXPECT_FLOAT_EQ(Cap[1], 2.5F);
    EXPECT_FLOAT_EQ(capacity(-2.005F, -1.995F, phaseEstablished), 13);  // within a per cent: the slope of the curve
    model.sFunctions[0].points = {{-2, -3, 2}, {0, 1, 2}, {1, 3, 2}};   // the fraction is held to 0 .. 1
    EXPECT_FLOAT_EQ(capacity(-4, 2, phaseEstablished), 5 + 40.0F / 12);
    EXPECT_EQ(PointResultsOf(0).waterContent[0], 0);
    model.sFunctions[0].points = {{-2, 0, 0.5F}, {0, 1, 0.5F}};
    model.PhaseState[0] = 2;
    EXPECT_FLOAT_EQ(capacity(-1, 1, phaseSearching), 10);
    for (std::size_t point = 0; point < PointCount(0); ++point) PointResultsOf(0).heatCapacity[point] = 4;
    RecordedElementMatrices(0, K, Cap);
    EXPECT_FLOAT_EQ(Cap[0], 2);
    model.materials[0].waterContentFunction = 0;
    EXPECT_EQ(Compute(), 0);
    EXPECT_THAT(TakeMessages(), ElementsAre(1156));
}

}  // namespace
}  // namespace kaldra
