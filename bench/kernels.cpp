// Times the phases of a run apart, on the n by n square of tools/square_problem.
//
//     build/release/bin/kaldra-bench [--benchmark_filter=REGEX]
//
// Every figure is one call on the steady problem, with the model prepared as a run prepares it. The factorisation
// prints the GFLOP/s of its profile.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "element/assembly.h"
#include "element/boundary_conditions.h"
#include "element/element_matrices.h"
#include "functions/function_value.h"
#include "model/data_file.h"
#include "model/function_setup.h"
#include "model/problem_model.h"
#include "platform/memory.h"
#include "results/node_results.h"
#include "run/analysis.h"
#include "run/iteration.h"
#include "run/run_state.h"
#include "solver/skyline.h"
#include "square_problem.h"

namespace {

using namespace kaldra;

void Require(bool condition, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "kaldra-bench: %s failed\n", what);
    std::exit(1);
}

std::string ProblemPath(std::int64_t n) {
    const auto folder = std::filesystem::temp_directory_path() / "kaldra-bench";
    std::filesystem::create_directories(folder);
    return (folder / ("square-" + std::to_string(n) + ".kdr")).string();
}

// Reads the n by n problem and makes every table of its run.
void PrepareModel(std::int64_t n) {
    const std::string path = ProblemPath(n);
    if (model.dataFileName == path && model.nodeCount > 0) return;
    Require(WriteSquareProblem(path, static_cast<int>(n), SquareKind::Steady), "writing the problem");
    (void)FreeModel();
    InitModel(1);
    model.dataFileName = path;
    Require(ReadDataFile() == 1, "reading the problem");
    Require(MakePointTables() == 1 && SetupFunctions() == 1, "preparing the model");
    runState.startStep = 0;
    runState.currentStep = 0;
    runState.iteration = 1;
    runState.running = 1;
    Require(PrepareTables() == 1 && PrepareBoundaryValues() == 1, "preparing the run");
}

void Reader(benchmark::State& state) {
    const std::string path = ProblemPath(state.range(0));
    Require(WriteSquareProblem(path, static_cast<int>(state.range(0)), SquareKind::Steady), "writing the problem");
    for (auto _ : state) {
        (void)FreeModel();
        InitModel(1);
        model.dataFileName = path;
        Require(ReadDataFile() == 1, "reading the problem");
    }
    (void)FreeModel();
    InitModel(1);
    model.dataFileName.clear();
}

void FunctionValue(benchmark::State& state) {
    PrepareModel(10);
    const std::vector<FunctionPoint>& points = model.kFunctions[0].points;
    float x = -12;
    for (auto _ : state) {
        benchmark::DoNotOptimize(EvaluateFunction(points, x));
        x = x > 12 ? -12.0F : x + 0.37F;
    }
}

void OneElementMatrix(benchmark::State& state) {
    PrepareModel(10);
    ElementMatrix K;
    ElementMatrix Cap;
    for (auto _ : state) {
        benchmark::DoNotOptimize(ComputeElementMatrices(0, K, Cap, PointValues::Evaluated));
        benchmark::ClobberMemory();
    }
}

void Assembly(benchmark::State& state) {
    PrepareModel(state.range(0));
    for (auto _ : state) {
        ++model.temperatureVersion;           // look at every value again
        model.batches.entriesFormed = false;  // and form every matrix
        Require(AssembleSteadySystem() == 1, "the assembly");
    }
    state.SetComplexityN(state.range(0));
}

void Factorisation(benchmark::State& state) {
    PrepareModel(state.range(0));
    Require(AssembleSteadySystem() == 1, "the assembly");
    for (auto _ : state) Require(FactorSkyline() == 1, "the factorisation");
    const double work = CostOfSkyline().operations * static_cast<double>(state.iterations());
    state.counters["GFLOP/s"] = benchmark::Counter(work * 1e-9, benchmark::Counter::kIsRate);
    state.SetComplexityN(state.range(0));
}

void Solution(benchmark::State& state) {
    PrepareModel(state.range(0));
    Require(AssembleSteadySystem() == 1 && FactorSkyline() == 1, "the factorisation");
    const std::vector<float> rhs = model.SolutionVector;
    for (auto _ : state) {
        model.SolutionVector = rhs;
        Require(SolveSkylineDouble(model.SolutionVector) == 1, "the solution");
    }
}

void NodeResults(benchmark::State& state) {
    PrepareModel(state.range(0));
    for (auto _ : state) Require(WriteNodeResults() == 1, "writing the results");
}

BENCHMARK(Reader)->Arg(100)->Arg(316)->Unit(benchmark::kMillisecond);
BENCHMARK(FunctionValue);
BENCHMARK(OneElementMatrix);
BENCHMARK(Assembly)->Arg(50)->Arg(100)->Arg(316)->Unit(benchmark::kMillisecond)->Complexity();
BENCHMARK(Factorisation)->Arg(50)->Arg(100)->Arg(200)->Unit(benchmark::kMillisecond)->Complexity();
BENCHMARK(Solution)->Arg(50)->Arg(100)->Arg(200)->Unit(benchmark::kMillisecond);
BENCHMARK(NodeResults)->Arg(100)->Arg(316)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
