// The linear system of one iteration, by fronts.

#include "solver/sparse.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

#include "platform/faults.h"
#include "platform/parallel.h"
#include "platform/processor.h"
#include "run/run_state.h"
#include "solver/elimination.h"
#include "solver/skyline.h"
#include "solver/solution.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

// A grid of nodes, each coupled with the eight around it.
struct Grid {
    int columns, rows;
    bool shuffled;   // node numbers in any order
    double dx, dy;   // spacing; 0: all in one place
    int prescribed;  // every so-manieth equation; 0: none
    int inactive;
    int cut;  // columns from here on are coupled with no earlier one; 0: no such
};

class Sparse : public KaldraTest {
protected:
    Sparse() { runState.running = 1; }

    static void MakeSystem(const Grid& grid) {
        const int n = grid.columns * grid.rows;
        std::mt19937 random(17);
        std::vector<int> number(static_cast<std::size_t>(n));
        std::iota(number.begin(), number.end(), 0);
        if (grid.shuffled) std::ranges::shuffle(number, random);
        model.nodeCount = n;
        model.nodes.assign(static_cast<std::size_t>(n), NodeRec());
        model.EquationCode.assign(static_cast<std::size_t>(n), equationFree);
        model.SolutionVector.clear();
        std::vector<std::vector<std::pair<int, double>>> columns(static_cast<std::size_t>(n));
        std::uniform_real_distribution<double> value(0.5, 2);
        for (int place = 0; place < n; ++place) {
            const int x = place / grid.rows;
            const int y = place % grid.rows;
            const int own = number[static_cast<std::size_t>(place)];
            model.nodes[static_cast<std::size_t>(own)].x = static_cast<float>(x * grid.dx);
            model.nodes[static_cast<std::size_t>(own)].y = static_cast<float>(y * grid.dy);
            columns[static_cast<std::size_t>(own)].emplace_back(own, 17 + value(random));
            for (int other = 0; other < place; ++other) {
                const int left = other / grid.rows;
                if (std::abs(left - x) > 1 || std::abs(other % grid.rows - y) > 1) continue;
                if (grid.cut > 0 && left < grid.cut && x >= grid.cut) continue;
                const int i = number[static_cast<std::size_t>(other)];
                columns[static_cast<std::size_t>(std::max(i, own))].emplace_back(std::min(i, own), -value(random));
            }
        }
        model.system = SystemMatrix();
        model.system.columnStart = {0};
        model.system.version = 1;
        for (int j = 0; j < n; ++j) {
            auto& column = columns[static_cast<std::size_t>(j)];
            std::int32_t& code = model.EquationCode[static_cast<std::size_t>(j)];
            if (grid.prescribed > 0 && j % grid.prescribed == 0) code = equationPrescribed;
            if (grid.inactive > 0 && j % grid.inactive == 1) code = equationInactive;
            std::ranges::sort(column);
            for (const auto& [row, entry] : column) {
                const bool active = model.EquationCode[static_cast<std::size_t>(row)] != equationInactive;
                if (code == equationInactive || !active) continue;
                model.system.row.push_back(row);
                model.system.value.push_back(entry);
            }
            model.system.columnStart.push_back(static_cast<std::int64_t>(model.system.row.size()));
            model.SolutionVector.push_back(static_cast<float>(10 * std::sin(j)));
        }
    }
    static int Solve(Solver solver) {
        WishSolver(solver);
        return PrepareSolution() && EliminateFixedDouble(model.system, model.SolutionVector, model.EquationCode) &&
               SolveSystem();
    }
    // Of the factor, or its reciprocals: every entry above takes part in one of them.
    static std::vector<double> Diagonal(Solver solver) {
        if (solver == Solver::Sparse) return model.sparse.reciprocal;
        std::vector<double> diagonal;
        for (const auto place : model.SkylineColumnPtr) {
            diagonal.push_back(model.SkylineStore[static_cast<std::size_t>(place)]);
        }
        return diagonal;
    }
};

const Grid shuffledGrid{45, 50, true, 0.1, 0.1, 0, 0, 0};
const Grid smallGrid{25, 25, true, 0.1, 0.1, 0, 0, 0};  // enough for the skyline to take all threads

TEST_F(Sparse, GivesTheTemperaturesOfTheSkyline) {
    for (const Grid& grid :
         {Grid{1, 1, false, 1, 1, 0, 0, 0}, Grid{1, 1, false, 1, 1, 1, 0, 0}, Grid{6, 7, false, 1, 1, 0, 0, 0},
          Grid{30, 20, false, 1, 1, 13, 0, 0}, Grid{30, 20, true, 0.3, 7, 0, 11, 0}, Grid{400, 1, true, 1, 1, 17, 0, 0},
          Grid{20, 20, true, 0, 0, 0, 0, 0}, Grid{60, 24, true, 1, 1, 29, 31, 25}, shuffledGrid}) {
        MakeSystem(grid);
        const std::vector<float> rhs = model.SolutionVector;
        ASSERT_EQ(Solve(Solver::Skyline), 1);
        const std::vector<float> expected = model.SolutionVector;
        model.SolutionVector = rhs;
        ASSERT_EQ(Solve(Solver::Sparse), 1);
        EXPECT_EQ(UsedSolver(), Solver::Sparse);
        for (std::size_t i = 0; i < expected.size(); ++i) {
            EXPECT_FLOAT_EQ(model.SolutionVector[i], expected[i]) << grid.columns << " columns, equation " << i;
        }
    }
}

// Neither the processor nor the number of threads changes a bit, with either solver.
TEST_F(Sparse, EveryProcessorAndThreadCountGivesTheSameBits) {
    for (const Solver solver : {Solver::Skyline, Solver::Sparse}) {
        std::vector<double> expected;
        std::vector<float> solution;
        for (const auto level : {ProcessorLevel::Plain, ProcessorLevel::Avx2, ProcessorLevel::Avx512}) {
            LimitProcessorLevel(level);
            for (const int threads : {1, 2, 4}) {
                SetThreadCount(threads);
                MakeSystem(solver == Solver::Sparse ? shuffledGrid : smallGrid);
                ASSERT_EQ(Solve(solver), 1);
                const std::vector<double> factor = Diagonal(solver);
                if (expected.empty()) expected = factor;
                if (solution.empty()) solution = model.SolutionVector;
                EXPECT_TRUE(factor == expected && model.SolutionVector == solution) << threads << " threads";
            }
        }
    }
}

// Taken by itself where the node numbers make a wide profile, and not where they do not.
TEST_F(Sparse, IsTakenWhereItIsClearlyBetter) {
    MakeSystem(shuffledGrid);
    ASSERT_EQ(Solve(Solver::Automatic), 1);
    EXPECT_EQ(UsedSolver(), Solver::Sparse);
    MakeSystem(Grid{45, 50, false, 0.1, 0.1, 0, 0, 0});
    ASSERT_EQ(Solve(Solver::Automatic), 1);
    EXPECT_EQ(UsedSolver(), Solver::Skyline);
}

TEST_F(Sparse, TakesIndefiniteMatricesAndLooksAtTheDiagonalFirst) {
    MakeSystem(shuffledGrid);
    for (double& value : model.system.value) value = -value;
    std::vector<float> negative = model.SolutionVector;
    ASSERT_EQ(Solve(Solver::Sparse), 1);
    negative.swap(model.SolutionVector);
    MakeSystem(shuffledGrid);
    ASSERT_EQ(Solve(Solver::Sparse), 1);
    for (std::size_t i = 0; i < negative.size(); ++i) EXPECT_EQ(-negative[i], model.SolutionVector[i]);

    for (const auto& [equation, message] : {std::pair{0, 1170}, std::pair{7, 1171}}) {
        MakeSystem(shuffledGrid);
        model.system
            .value[static_cast<std::size_t>(model.system.columnStart[static_cast<std::size_t>(equation) + 1] - 1)] = 0;
        EXPECT_EQ(Solve(Solver::Sparse), 0);
        EXPECT_THAT(TakeMessages(), ElementsAre(message));
    }
}

TEST_F(Sparse, EndsAtStopAndWithoutMemory) {
    for (const Solver solver : {Solver::Skyline, Solver::Sparse}) {
        MakeSystem(shuffledGrid);
        WishSolver(solver);
        runState.running = 1;
        ASSERT_EQ(PrepareSolution(), 1);
        runState.running = 0;
        EXPECT_TRUE(FactorSkyline() == 0 && SolveSystem() == 0);
    }
    EXPECT_TRUE(FactorSparse(model.SolutionVector) == 0 && ReduceSparse(model.SolutionVector) == 0);
    EXPECT_TRUE(SolveSparse(model.SolutionVector) == 0 && PrepareSolution() == 0);
    runState.running = 1;
    int failures = 0;
    int detours = 0;
    for (int call = 1;; ++call) {
        MakeSystem(shuffledGrid);
        ArmFault(FaultSeam::Allocation, call);
        const int result = Solve(Solver::Automatic);
        if (result == 1 && UsedSolver() == Solver::Sparse) break;
        if (result == 1) {
            ++detours;  // the skyline served instead
        } else {
            EXPECT_THAT(TakeMessages(), ElementsAre(1138));
            ++failures;
        }
    }
    EXPECT_GE(failures, 15);
    EXPECT_GT(detours, 2);
}

}  // namespace
}  // namespace kaldra
