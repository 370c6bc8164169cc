// The sparse solution of a general library (Eigen, its own ordering or that of METIS) on the matrix of the N by N
// square, beside ours on the same matrix. One thread.
//
//     build/release/bin/kaldra-bench-libraries

#include <benchmark/benchmark.h>

#include <iostream>  // for the library
#include <vector>

#include <Eigen/SparseCholesky>
#if KALDRA_METIS
#include <Eigen/MetisSupport>
#endif

#include "element/assembly.h"
#include "model/problem_model.h"
#include "platform/parallel.h"
#include "prepared_run.h"
#include "run/run_state.h"
#include "solver/elimination_tree.h"
#include "solver/solution.h"
#include "solver/sparse.h"

namespace {

using namespace kaldra;
using Matrix = Eigen::SparseMatrix<double>;

void PrepareMatrix(std::int64_t n) {
    SetThreadCount(1);
    PrepareRun(n, SquareKind::Steady, Solver::Sparse);
    Require(AssembleSteadySystem() == 1, "the assembly");
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
    PrepareMatrix(state.range(0));
    const Matrix matrix = FreeMatrix();
    Eigen::SimplicialLDLT<Matrix, Eigen::Lower, Ordering> solver;
    solver.compute(matrix);
    for (auto _ : state) solver.factorize(matrix);
    Require(solver.info() == Eigen::Success, "the factorisation");
    state.counters["entries"] = static_cast<double>(solver.matrixL().nestedExpression().nonZeros());
}

template <class Ordering>
void LibraryAnalysis(benchmark::State& state) {
    PrepareMatrix(state.range(0));
    const Matrix matrix = FreeMatrix();
    Eigen::SimplicialLDLT<Matrix, Eigen::Lower, Ordering> solver;
    for (auto _ : state) solver.analyzePattern(matrix);
}

void Ours(benchmark::State& state) {
    PrepareMatrix(state.range(0));
    Require(FactorSparse(model.SolutionVector) == 1, "the factorisation");  // touches the memory for the first time
    for (auto _ : state) Require(FactorSparse(model.SolutionVector) == 1, "the factorisation");
    state.counters["entries"] = static_cast<double>(model.tree.factorEntries);
}

void OurAnalysis(benchmark::State& state) {
    PrepareMatrix(state.range(0));
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
