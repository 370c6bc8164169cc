// The linear system of one iteration, by the skyline.

#include "solver/skyline.h"

#include <algorithm>
#include <cmath>

#include "platform/parallel.h"
#include "run/run_state.h"
#include "solver/elimination.h"
#include "solver/solution.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

using Codes = std::vector<std::int32_t>;

class Skyline : public KaldraTest {
protected:
    Skyline() { runState.running = 1; }

    // A system of n free equations without entries.
    static void MakeSystem(std::int32_t n) {
        model.nodeCount = n;
        model.EquationCode.assign(static_cast<std::size_t>(n), equationFree);
        model.SolutionVector.assign(static_cast<std::size_t>(n), 0);
        model.system = SystemMatrix();
        model.system.columnStart = {0};
        model.system.version = 1;
    }
    // Adds the next column: `first` and the entries from that row down to the diagonal.
    static void Column(std::int32_t first, const std::vector<double>& values) {
        for (const double value : values) {
            model.system.row.push_back(first++);
            model.system.value.push_back(value);
        }
        model.system.columnStart.push_back(static_cast<std::int64_t>(model.system.row.size()));
    }
    // A ring of n nodes: 3 on the diagonal, -1 between neighbours, so the last column is full.
    // The solution 1, 2, ... n survives narrowing to f32 exactly.
    static void MakeRing(std::int32_t n) {
        MakeSystem(n);
        for (std::int32_t j = 0; j < n; ++j) {
            std::vector<double> column;
            const std::int32_t first = j == n - 1 ? 0 : std::max(j - 1, 0);
            for (std::int32_t i = first; i <= j; ++i) column.push_back(i == j ? 3 : i == j - 1 || i == 0 ? -1 : 0);
            Column(first, column);
        }
    }
    // The right-hand side of the ring for the solution 1, 2, ... n.
    static std::vector<float> RingLoad(std::int32_t n) {
        std::vector<float> load;
        for (std::int32_t j = 1; j <= n; ++j) load.push_back(static_cast<float>(j));
        load.front() = static_cast<float>(3 - 2 - n);
        load.back() = static_cast<float>(3 * n - (n - 1) - 1);
        return load;
    }
    static int Solve() {
        return PrepareSolution() && EliminateFixedDouble(model.system, model.SolutionVector, model.EquationCode) &&
               SolveSystem();
    }
};

// From less than one group of columns to many strips, on one thread and on several.
TEST_F(Skyline, SolvesFreeSystemsOfAnySize) {
    for (const int threads : {1, 2, 3}) {
        SetThreadCount(threads);
        for (const std::int32_t n : {3, 6, 8, 9, 24, 25, 100, 333}) {
            MakeRing(n);
            model.SolutionVector = RingLoad(n);
            ASSERT_EQ(Solve(), 1);
            for (std::int32_t j = 0; j < n; ++j) {
                EXPECT_EQ(model.SolutionVector[static_cast<std::size_t>(j)], static_cast<float>(j + 1)) << n;
            }
        }
    }
}

TEST_F(Skyline, PrescribedAndInactiveNodesKeepTheirValues) {
    struct Ring {
        Codes code;
        std::vector<float> load, solution;
    };
    for (const Ring& ring :
         {Ring{{1, 1, 0, 1, 9}, {7, 0.25F, 0.75F, 2, 42}, {7, 0.25F, 1, 2, 42}},
          // the last is prescribed and closes the ring, the middle one is inactive
          {{0, 0, 9, 0, 1}, {-4, 5, 9, 7, 5}, {1, 2, 9, 4, 5}},
          // the first reaches far to the right, beyond columns that do not hold its row
          {{1, 0, 0, 0, 1, 0, 0, 0, 0}, {1, 2, 3, 4, 5, 6, 7, 8, 18}, {1, 2, 3, 4, 5, 6, 7, 8, 9}}}) {
        MakeRing(static_cast<std::int32_t>(ring.code.size()));
        model.EquationCode = ring.code;
        model.SolutionVector = ring.load;
        ASSERT_EQ(Solve(), 1);
        EXPECT_EQ(model.SolutionVector, ring.solution);
    }
}

// The same matrix is factorised once and the same system solved once; a new value or code begins anew.
TEST_F(Skyline, WhatIsKnownIsNotSolvedAgain) {
    MakeRing(30);
    model.SolutionVector = RingLoad(30);
    ASSERT_EQ(Solve(), 1);
    model.lastSolution.solution[0] = -77;  // seen only if it is taken
    model.SolutionVector = RingLoad(30);
    ASSERT_EQ(SolveSystem(), 1);
    EXPECT_EQ(model.SolutionVector[0], -77);
    model.SolutionVector = RingLoad(30);
    model.SolutionVector[3] += 1;
    std::ranges::fill(model.system.value, 0);  // the version says that it is the same
    ASSERT_EQ(SolveSystem(), 1);
    EXPECT_NEAR(model.SolutionVector[3], 4 + 1 / std::sqrt(5.0), 1e-6);
    MakeRing(30);
    model.system.version = 2;
    model.EquationCode[3] = 1;
    model.SolutionVector = RingLoad(30);
    ASSERT_EQ(EliminateFixedDouble(model.system, model.SolutionVector, model.EquationCode) && SolveSystem(), 1);
    EXPECT_EQ(model.SolutionVector[3], 4);
    EXPECT_EQ(model.SolutionVector[29], 30);
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
        MakeSystem(2);
        Column(0, {pivot.store[0]});
        Column(0, {pivot.store[1], pivot.store[2]});
        model.EquationCode = pivot.code;
        EXPECT_EQ(Solve(), pivot.result);
        EXPECT_EQ(TakeMessages(), pivot.messages);
    }
}

// A strip of 24 columns begins at the highest of them.
TEST_F(Skyline, TheTallestColumnMakesItsStrip) {
    MakeSystem(60);
    for (std::int32_t j = 0; j < 60; ++j) {
        const std::int32_t first = j == 50 ? 19 : j;
        Column(first, std::vector<double>(static_cast<std::size_t>(j - first + 1), 1.0));
    }
    ASSERT_EQ(BuildSkylineProfile(), 1);
    EXPECT_THAT(model.skyline.top, ElementsAre(0, 0, 0, 24, 24, 24, 16, 16, 16));
    EXPECT_EQ(model.SkylineColumnPtr[23], model.skyline.start[3] - 1);  // the last entry of its group
    EXPECT_EQ(model.SkylineColumnPtr[50], model.skyline.start[6] + (50 - 16) * 8 + 2);
    EXPECT_EQ(CostOfSkyline().entries, 8 * (8 + 16 + 24 + 8 + 16 + 24 + 40 + 48 + 56));
}

}  // namespace
}  // namespace kaldra
