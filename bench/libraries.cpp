// The sparse solution of a general library (Eigen, its own ordering or that of METIS) on the matrix of the N by N
// square, beside ours on the same matrix. One thread.
//
//     build/release/bin/kaldra-bench-libraries

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>  // for the library
#include <vector>

#include <Eigen/SparseCholesky>
#if KALDRA_METIS
#include <Eigen/MetisSupport>
#endif

#include "element/assembly.h"
#include "element/boundary_conditions.h"
#include "model/data_file.h"
#include "model/function_setup.h"
#include "model/problem_model.h"
#include "platform/parallel.h"
#include "run/analysis.h"
#include "run/iteration.h"
#include "run/run_state.h"
#include "solver/elimination_tree.h"
#include "solver/solution.h"
#include "solver/sparse.h"
#include "square_problem.h"

namespace {

using namespace kaldra;
using Matrix = Eigen::SparseMatrix<double>;

void Require(bool condition, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "kaldra-bench-libraries: %s failed\n", what);
    std::exit(1);
}

void PrepareModel(std::int64_t n) {
    const std::string path = (std::filesystem::temp_directory_path() / "kaldra-bench-libraries.kdr").string();
    Require(WriteSquareProblem(path, static_cast<int>(n), SquareKind::Steady), "writing the problem");
    (void)FreeModel();
    InitModel(1);
    model.dataFileName = path;
    Require(ReadDataFile() == 1 && MakePointTables() == 1 && SetupFunctions() == 1, "reading the problem");
    runState.startStep = runState.currentStep = 0;
    runState.iteration = runState.running = 1;
    SetThreadCount(1);
    WishSolver(Solver::Sparse);
    Require(PrepareTables() == 1 && PrepareBoundaryValues() == 1 && AssembleSteadySystem() == 1, "preparing the run");
}

// The free equations, both triangles.
Matrix FreeMatrix() {
    const SystemMatrix& m = model.system;
    std::vector<int> number(model.EquationCode.size(), -1);
    int count = 0;
    for (std::size_t i = 0; i < number.size(); ++i) {
        if (model.EquationCode[i] == equationFree) number[i] = count++;
    }
    std::vector<Eigen::Triplet<double>> entries;
    for (std::size_t j = 0; j < number.size(); ++j) {
        for (auto p = m.columnStart[j]; p < m.columnStart[j + 1]; ++p) {
            const auto i = static_cast<std::size_t>(m.row[static_cast<std::size_t>(p)]);
            if (number[i] < 0 || number[j] < 0) continue;
            entries.emplace_back(number[i], number[j], m.value[static_cast<std::size_t>(p)]);
            if (i != j) entries.emplace_back(number[j], number[i], m.value[static_cast<std::size_t>(p)]);
        }
    }
    Matrix matrix(count, count);
    matrix.setFromTriplets(entries.begin(), entries.end());
    return matrix;
}

template <class Ordering>
void Library(benchmark::State& state) {
    PrepareModel(state.range(0));
    const Matrix matrix = FreeMatrix();
    Eigen::SimplicialLDLT<Matrix, Eigen::Lower, Ordering> solver;
    solver.compute(matrix);
    for (auto _ : state) solver.factorize(matrix);
    Require(solver.info() == Eigen::Success, "the factorisation");
    state.counters["entries"] = static_cast<double>(solver.matrixL().nestedExpression().nonZeros());
}

template <class Ordering>
void LibraryAnalysis(benchmark::State& state) {
    PrepareModel(state.range(0));
    const Matrix matrix = FreeMatrix();
    Eigen::SimplicialLDLT<Matrix, Eigen::Lower, Ordering> solver;
    for (auto _ : state) solver.analyzePattern(matrix);
}

void Ours(benchmark::State& state) {
    PrepareModel(state.range(0));
    Require(FactorSparse(model.SolutionVector) == 1, "the factorisation");  // touches the memory for the first time
    for (auto _ : state) Require(FactorSparse(model.SolutionVector) == 1, "the factorisation");
    state.counters["entries"] = static_cast<double>(model.tree.factorEntries);
}

void OurAnalysis(benchmark::State& state) {
    PrepareModel(state.range(0));
    for (auto _ : state) Require(BuildEliminationTree() == 1, "the ordering");
}

void Sizes(benchmark::internal::Benchmark* b) { b->Arg(100)->Arg(316)->Arg(1000)->Unit(benchmark::kMillisecond); }

BENCHMARK(Ours)->Apply(Sizes);
BENCHMARK(OurAnalysis)->Apply(Sizes);
BENCHMARK(Library<Eigen::AMDOrdering<int>>)->Apply(Sizes);
BENCHMARK(LibraryAnalysis<Eigen::AMDOrdering<int>>)->Apply(Sizes);
#if KALDRA_METIS
BENCHMARK(Library<Eigen::MetisOrdering<int>>)->Apply(Sizes);
BENCHMARK(LibraryAnalysis<Eigen::MetisOrdering<int>>)->Apply(Sizes);
#endif

}  // namespace

BENCHMARK_MAIN();
