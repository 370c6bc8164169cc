#include "prepared_run.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "element/boundary_conditions.h"
#include "model/data_file.h"
#include "model/function_setup.h"
#include "model/problem_model.h"
#include "platform/parallel.h"
#include "run/analysis.h"
#include "run/iteration.h"
#include "run/run_state.h"

namespace kaldra {

void Require(bool condition, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "%s: %s failed\n", program_invocation_short_name, what);
    std::exit(1);
}

std::string ProblemFile(std::int64_t n, SquareKind kind) {
    const auto folder = std::filesystem::temp_directory_path() / "kaldra-bench";
    std::filesystem::create_directories(folder);
    const std::string name = (kind == SquareKind::Steady ? "steady-" : "freezing-") + std::to_string(n) + ".kdr";
    const std::string path = (folder / name).string();
    if (!std::filesystem::exists(path)) {
        Require(WriteSquareProblem(path, static_cast<int>(n), kind), "writing the problem");
    }
    return path;
}

void ReadProblem(std::int64_t n, SquareKind kind) {
    const std::string path = ProblemFile(n, kind);
    (void)FreeModel();
    InitModel(1);
    model.dataFileName = path;
    Require(ReadDataFile() == 1, "reading the problem");
}

void PrepareRun(std::int64_t n, SquareKind kind, Solver solver) {
    static Solver prepared = Solver::Automatic;
    static int preparedThreads = 0;
    const bool isSame = prepared == solver && preparedThreads == ThreadCount();
    if (isSame && model.dataFileName == ProblemFile(n, kind) && model.nodeCount > 0) return;
    prepared = solver;
    preparedThreads = ThreadCount();
    ReadProblem(n, kind);
    Require(MakePointTables() == 1 && SetupFunctions() == 1, "preparing the model");
    runState.startStep = kind == SquareKind::Steady ? 0 : 1;
    runState.currentStep = runState.startStep;
    runState.iteration = 1;
    runState.PhaseChangeMode = phaseEstablished;  // every point takes latent heat
    runState.running = 1;
    WishSolver(solver);
    Require(PrepareTables() == 1 && PrepareBoundaryValues() == 1, "preparing the run");
}

}  // namespace kaldra
