// Times the phases of a run apart, on the N by N square of tools/square_problem.
//
//     build/release/bin/kaldra-bench [--benchmark_filter=REGEX]
//
// The first argument of a benchmark is N, a second one the number of threads. Every figure is one call, with the model
// prepared as a run prepares it. Factorisations print the GFLOP/s of their multiplications and additions; dgemm of the
// same run stands beside them.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "dgemm.h"
#include "element/assembly.h"
#include "element/element_batches.h"
#include "element/element_matrices.h"
#include "element/system_matrix.h"
#include "functions/function_value.h"
#include "model/problem_model.h"
#include "platform/parallel.h"
#include "prepared_run.h"
#include "results/gradient_results.h"
#include "results/material_results.h"
#include "results/node_results.h"
#include "run/iteration.h"
#include "run/run_state.h"
#include "solver/elimination_tree.h"
#include "solver/skyline.h"
#include "solver/solution.h"
#include "solver/sparse.h"

namespace {

using namespace kaldra;

void Assemble() {
    ++model.temperatureVersion;           // look at every value again
    model.batches.entriesFormed = false;  // and form every matrix
    const int done = model.analysisType == transient ? AssembleTransientSystem() : AssembleSteadySystem();
    Require(done == 1, "the assembly");
}

void TakeThreads(const benchmark::State& state) { SetThreadCount(static_cast<int>(state.range(1))); }

void CountWork(benchmark::State& state, double operations) {
    const double all = operations * static_cast<double>(state.iterations());
    state.counters["GFLOP/s"] = benchmark::Counter(all * 1e-9, benchmark::Counter::kIsRate);
}

// ---------------------------------------------------------------------------------------------------------------------
// Reading and small things

void Reader(benchmark::State& state) {
    (void)ProblemFile(state.range(0), SquareKind::Steady);  // written before the clock runs
    for (auto _ : state) ReadProblem(state.range(0), SquareKind::Steady);
    model.dataFileName.clear();
}

void FunctionValue(benchmark::State& state) {
    PrepareRun(10, SquareKind::Steady, Solver::Skyline);
    const std::vector<FunctionPoint>& points = model.kFunctions[0].points;
    float x = -12;
    for (auto _ : state) {
        benchmark::DoNotOptimize(EvaluateFunction(points, x));
        x = x > 12 ? -12.0F : x + 0.37F;
    }
}

void OneElementMatrix(benchmark::State& state) {
    PrepareRun(10, SquareKind::Steady, Solver::Skyline);
    ElementMatrix K;
    ElementMatrix Cap;
    for (auto _ : state) {
        benchmark::DoNotOptimize(ComputeElementMatrices(0, K, Cap));
        benchmark::ClobberMemory();
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Once per run

template <class Build>
void OncePerRun(benchmark::State& state, const Build& build) {
    TakeThreads(state);
    PrepareRun(state.range(0), SquareKind::Steady, Solver::Sparse);
    for (auto _ : state) Require(build() == 1, "the preparation");
    model.dataFileName.clear();
}

void Geometry(benchmark::State& state) {
    OncePerRun(state, [] { return FillElementBatches(); });
}
void Pattern(benchmark::State& state) { OncePerRun(state, BuildSystemMatrix); }
void Ordering(benchmark::State& state) { OncePerRun(state, BuildEliminationTree); }

// ---------------------------------------------------------------------------------------------------------------------
// Every iteration

// All element matrices formed and added, with the nanoseconds per integration point.
void Assembly(benchmark::State& state) {
    TakeThreads(state);
    PrepareRun(state.range(0), SquareKind::Freezing, Solver::Sparse);
    for (auto _ : state) Assemble();
    const double points = 4.0 * static_cast<double>(state.range(0) * state.range(0) * state.iterations()) * 1e-9;
    state.counters["ns/point"] = benchmark::Counter(points, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void Dgemm1000(benchmark::State& state) {
    constexpr std::size_t n = 1000;
    const std::vector<double> a(n * n, 1.5);
    const std::vector<double> b(n * n, 0.25);
    std::vector<double> c(n * n);
    for (auto _ : state) {
        if (!Dgemm(n, a.data(), b.data(), c.data(), static_cast<int>(state.range(0)))) {
            return state.SkipWithError("libopenblas.so.0 is not installed");
        }
        benchmark::ClobberMemory();
    }
    CountWork(state, 2.0 * n * n * n);
}

void SkylineFactor(benchmark::State& state) {
    TakeThreads(state);
    PrepareRun(state.range(0), SquareKind::Steady, Solver::Skyline);
    Assemble();
    Require(FactorSkyline() == 1, "the factorisation");  // touches the memory for the first time
    for (auto _ : state) Require(FactorSkyline() == 1, "the factorisation");
    CountWork(state, CostOfSkyline().operations);
}

void SparseFactor(benchmark::State& state) {
    TakeThreads(state);
    PrepareRun(state.range(0), SquareKind::Steady, Solver::Sparse);
    Assemble();
    Require(FactorSparse(model.SolutionVector) == 1, "the factorisation");
    for (auto _ : state) Require(FactorSparse(model.SolutionVector) == 1, "the factorisation");
    CountWork(state, model.tree.operations);
}

template <class Factor, class Solve>
void SolutionBy(benchmark::State& state, Solver solver, const Factor& factor, const Solve& solve) {
    TakeThreads(state);
    PrepareRun(state.range(0), SquareKind::Steady, solver);
    Assemble();
    Require(factor() == 1, "the factorisation");
    const std::vector<float> rhs = model.SolutionVector;
    for (auto _ : state) {
        model.SolutionVector = rhs;
        Require(EliminatePrescribed() == 1 && solve(model.SolutionVector) == 1, "the solution");
    }
}

void SkylineSolution(benchmark::State& state) { SolutionBy(state, Solver::Skyline, FactorSkyline, SolveSkylineDouble); }
void SparseSolution(benchmark::State& state) {
    SolutionBy(
        state, Solver::Sparse, [] { return FactorSparse(model.SolutionVector); },
        [](std::vector<float>& rhs) { return ReduceSparse(rhs) && SolveSparse(rhs); });
}

// Every point of the upper half crosses the freezing point.
void PhaseControl(benchmark::State& state) {
    TakeThreads(state);
    PrepareRun(state.range(0), SquareKind::Freezing, Solver::Sparse);
    for (std::size_t i = 0; i < model.nodeStates.size(); ++i) {
        model.nodeStates[i].previous = 1;
        model.nodeStates[i].temperature = model.nodes[i].y > 0.5F ? -1.0F : 1.0F;
    }
    std::vector<PointCrossing> crossings;
    for (auto _ : state) Require(FindPointCrossings(crossings) == 1, "the phase control");
}

// ---------------------------------------------------------------------------------------------------------------------
// Result files

template <class Write>
void Writer(benchmark::State& state, const Write& write) {
    TakeThreads(state);
    PrepareRun(state.range(0), SquareKind::Freezing, Solver::Sparse);
    for (auto _ : state) Require(write() == 1, "writing the results");
}

void NodeFile(benchmark::State& state) { Writer(state, WriteNodeResults); }
void GradientFile(benchmark::State& state) { Writer(state, WriteGradientResults); }
void MaterialFile(benchmark::State& state) { Writer(state, WriteMaterialResults); }

// ---------------------------------------------------------------------------------------------------------------------

void BySizeAndThreads(benchmark::internal::Benchmark* b) {
    for (const int threads : {1, 2}) {
        for (const int n : {100, 316, 1000}) b->Args({n, threads});
    }
    b->Unit(benchmark::kMillisecond)->UseRealTime();
}

void BySizeOfSkyline(benchmark::internal::Benchmark* b) {
    for (const int threads : {1, 2}) {
        for (const int n : {100, 316}) b->Args({n, threads});
    }
    b->Unit(benchmark::kMillisecond)->UseRealTime();
}

BENCHMARK(Reader)->Arg(100)->Arg(316)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(FunctionValue);
BENCHMARK(OneElementMatrix);
BENCHMARK(Geometry)->Apply(BySizeAndThreads);
BENCHMARK(Pattern)->Apply(BySizeAndThreads);
BENCHMARK(Ordering)->Apply(BySizeAndThreads);
BENCHMARK(Assembly)->Apply(BySizeAndThreads);
BENCHMARK(Dgemm1000)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(SkylineFactor)->Apply(BySizeOfSkyline);
BENCHMARK(SparseFactor)->Apply(BySizeAndThreads);
BENCHMARK(SkylineSolution)->Apply(BySizeOfSkyline);
BENCHMARK(SparseSolution)->Apply(BySizeAndThreads);
BENCHMARK(PhaseControl)->Apply(BySizeAndThreads);
BENCHMARK(NodeFile)->Apply(BySizeAndThreads);
BENCHMARK(GradientFile)->Apply(BySizeAndThreads);
BENCHMARK(MaterialFile)->Apply(BySizeAndThreads);

}  // namespace

BENCHMARK_MAIN();
