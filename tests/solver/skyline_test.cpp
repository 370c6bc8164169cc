#include "solver/skyline.h"

#include "platform/faults.h"
#include "run/run_state.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

using Codes = std::vector<std::int32_t>;

class Skyline : public KaldraTest {
protected:
    Skyline() { runState.running = 1; }
};

// A ring of n nodes: 3 on the diagonal, -1 between neighbours, so the last column is full.
// The solution 1, 2, ... n survives narrowing to f32 exactly.
struct Ring {
    explicit Ring(std::int32_t n) : code(static_cast<std::size_t>(n)), rhs(code.size()) {
        for (std::int32_t j = 0; j < n; ++j) {
            for (std::int32_t i = j == 0 || j == n - 1 ? 0 : j - 1; i <= j; ++i) {
                store.push_back(i == j ? 3 : i == j - 1 || i == 0 ? -1 : 0);
            }
            ptr.push_back(static_cast<std::int32_t>(store.size()) - 1);
        }
    }
    double& Entry(std::int32_t i, std::int32_t j) {
        return store[static_cast<std::size_t>(ptr[static_cast<std::size_t>(j)] - j + i)];
    }
    int Solve() { return EliminateFixedDouble(store, rhs, code, ptr) && SolveSkylineDouble(store, rhs, code, ptr); }

    std::vector<double> store;
    Codes code, ptr;
    std::vector<float> rhs;
};

TEST_F(Skyline, SolvesAFreeSystem) {
    Ring ring(6);
    ring.rhs = {-5, 2, 3, 4, 5, 12};
    ASSERT_EQ(ring.Solve(), 1);
    EXPECT_THAT(ring.rhs, ElementsAre(1, 2, 3, 4, 5, 6));
}

TEST_F(Skyline, PrescribedAndInactiveNodesKeepTheirValues) {
    Ring ring(5);
    ring.Entry(3, 4) = ring.Entry(0, 4) = 0;  // as the assembly leaves the columns of inactive nodes
    ring.code = {1, 1, 0, 1, 9};
    ring.rhs = {7, 0.25F, 0.75F, 2, 42};
    ASSERT_EQ(ring.Solve(), 1);
    EXPECT_THAT(ring.rhs, ElementsAre(7, 0.25F, 1, 2, 42));

    Ring inner(5);  // the last is prescribed and closes the ring, the middle one is inactive
    inner.Entry(1, 2) = inner.Entry(2, 3) = 0;
    inner.code = {0, 0, 9, 0, 1};
    inner.rhs = {-4, 5, 9, 7, 5};
    ASSERT_EQ(inner.Solve(), 1);
    EXPECT_THAT(inner.rhs, ElementsAre(1, 2, 9, 4, 5));
}

// The first equation is prescribed and reaches far to the right, beyond columns that do not hold its row.
TEST_F(Skyline, EliminationReachesEveryColumnOfItsRow) {
    Ring ring(9);
    ring.code[0] = ring.code[4] = 1;
    ring.rhs = {1, 6 - 1 - 3, 3, 4, 5, 6, 7, 8, 27 - 8 - 1};
    ASSERT_EQ(EliminateFixedDouble(ring.store, ring.rhs, ring.code, ring.ptr), 1);
    for (const auto& [i, j] : {std::pair{0, 1}, {0, 8}, {3, 4}, {4, 5}}) EXPECT_EQ(ring.Entry(i, j), 0);
    EXPECT_TRUE(ring.Entry(0, 0) == 1 && ring.Entry(4, 4) == 1);
    EXPECT_THAT(ring.rhs, ElementsAre(1, 3, 3, 9, 5, 11, 7, 8, 19));
    ASSERT_EQ(SolveSkylineDouble(ring.store, ring.rhs, ring.code, ring.ptr), 1);
    EXPECT_THAT(ring.rhs, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9));
    std::vector<double> one{4};
    std::vector<float> value{2.5F};
    ASSERT_EQ(EliminateFixedDouble(one, value, Codes{1}, Codes{0}) + SolveSkylineDouble(one, value, Codes{1}, Codes{0}),
              2);
    EXPECT_TRUE(one[0] == 1 && value[0] == 2.5F);
}

// A full matrix of 12, so that the inner products are long: 1 everywhere and 12 + i more on the diagonal.
TEST_F(Skyline, SolvesAFullMatrix) {
    std::vector<double> store;
    std::vector<float> rhs;
    Codes ptr;
    for (int j = 0; j < 12; ++j) {
        for (int i = 0; i <= j; ++i) store.push_back(i == j ? 13 + j : 1);
        ptr.push_back(static_cast<std::int32_t>(store.size()) - 1);
        rhs.push_back(static_cast<float>(78 + (12 + j) * (j + 1)));
    }
    const Codes code(12);
    ASSERT_EQ(SolveSkylineDouble(store, rhs, code, ptr), 1);
    EXPECT_THAT(rhs, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12));
}

TEST_F(Skyline, SmallPivotsAreShown) {
    struct Pivot {
        std::vector<double> store;  // of two equations: 00, 01, 11
        Codes code;
        int result;
        std::vector<int> messages;
    };
    for (const Pivot& pivot : {Pivot{{0.99e-20, 0, 1}, {0, 0}, 0, {1170}}, Pivot{{-1e-20, 0, 1}, {0, 0}, 1, {}},
                               Pivot{{0, 0, 1}, {9, 0}, 1, {}}, Pivot{{1, 0, -1e-20}, {0, 0}, 0, {1171}},
                               Pivot{{1, 0, 1.01e-20}, {0, 0}, 1, {}}, Pivot{{1, 0, 0}, {0, 9}, 1, {}},
                               Pivot{{1, 1, 1}, {0, 0}, 1, {}}}) {  // the diagonal before it is reduced to 0
        std::vector<double> store = pivot.store;
        std::vector<float> rhs{0, 0};
        EXPECT_EQ(SolveSkylineDouble(store, rhs, pivot.code, Codes{0, 2}), pivot.result);
        EXPECT_EQ(TakeMessages(), pivot.messages);
    }
}

TEST_F(Skyline, EndsAtStopAndWithoutMemory) {
    Ring ring(4);
    runState.running = 0;
    EXPECT_EQ(SolveSkylineDouble(ring.store, ring.rhs, ring.code, ring.ptr), 0);
    EXPECT_THAT(TakeMessages(), ElementsAre());
    runState.running = 1;
    for (const int call : {1, 2}) {
        ArmFault(FaultSeam::Allocation, call);
        EXPECT_EQ(ring.Solve(), 0);
    }
    EXPECT_THAT(TakeMessages(), ElementsAre(1138, 1138));
}

Codes Profile(std::int32_t nodes, const std::vector<ElementRec>& elements, int result = 1) {
    model.elements = elements;
    model.elementCount = static_cast<std::int32_t>(elements.size());
    model.nodeCount = nodes;
    model.SkylineColumnPtr.assign(static_cast<std::size_t>(nodes), 77);
    EXPECT_EQ(BuildSkylineProfile(), result);
    return model.SkylineColumnPtr;
}

TEST_F(Skyline, ElementsAloneMakeTheProfile) {
    EXPECT_THAT(Profile(4, {{1, {3, 1, 2}, 1, 1, 0, 0}, {1, {0, 3, 0, 4}, 1, 1, 0, 0}}), ElementsAre(0, 2, 5, 7));
    EXPECT_EQ(SkylineLength(), 8U);
    model.materials.assign(1, MaterialRec{});  // element 2 is NULL, and widens the profile all the same
    EXPECT_THAT(Profile(4, {{1, {1, 2, 3}, 1, 1, 0, 0}, {1, {1, 0, 0, 0, 0, 0, 0, 4}, 1, 1, 0, 0}}),
                ElementsAre(0, 2, 5, 9));
    EXPECT_THAT(Profile(4, {{1, {2, 4}, 1, 1, 0, 0}}), ElementsAre(-1, 0, 0, 3));  // nodes 1 and 3 in no element
    EXPECT_EQ(SkylineLength(), 4U);
}

// Every column of 70000 reaches up to the first: 2.45e9 entries.
TEST_F(Skyline, AProfileBeyond32BitsIsRefused) {
    std::vector<ElementRec> elements;
    for (std::int32_t n = 2; n + 6 <= 70000; n += 7) {
        elements.push_back({1, {1, n, n + 1, n + 2, n + 3, n + 4, n + 5, n + 6}, 1, 1, 0, 0});
    }
    (void)Profile(70000, elements, 0);
    EXPECT_THAT(TakeMessages(), ElementsAre(1138));
}

}  // namespace
}  // namespace kaldra
