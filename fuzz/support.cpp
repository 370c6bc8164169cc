#include "support.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "frontend/commands.h"
#include "model/boundary_range.h"
#include "model/data_file.h"
#include "model/function_setup.h"
#include "model/problem_model.h"
#include "platform/files.h"
#include "platform/parallel.h"
#include "restart/initial_conditions.h"
#include "results/initial_results.h"
#include "results/old_output.h"
#include "run/analysis.h"
#include "run/run_state.h"
#include "run/warnings.h"

namespace kaldra {

namespace fs = std::filesystem;

namespace {

// The folder of this process.
struct WorkFolder {
    WorkFolder() {
        std::string pattern = (fs::temp_directory_path() / "kaldra-fuzz-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) std::abort();
        path = pattern;
        SetThreadCount(1);  // thousands of tiny systems a second: waking helpers would cost more than the work
    }
    ~WorkFolder() {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    std::string path;
};

const std::string& Folder() {
    static const WorkFolder folder;
    return folder.path;
}

}  // namespace

std::string FuzzPath(std::string_view name) { return Folder() + '/' + std::string(name); }

std::string_view BytesOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

void WriteFuzzFile(std::string_view name, std::string_view bytes) {
    std::ofstream file(FuzzPath(name), std::ios::binary);
    file << bytes;
    Require(file.flush().good(), "the folder of the fuzz target takes files");
}

std::string ReadFuzzFile(std::string_view name) {
    std::ostringstream bytes;
    bytes << std::ifstream(FuzzPath(name), std::ios::binary).rdbuf();
    return bytes.str();
}

void Require(bool kept, const char* promise) {
    if (kept) return;
    std::fprintf(stderr, "Broken promise: %s\n", promise);
    std::abort();
}

void BeginInput() {
    NewDocument();
    ClearWarnings();
    (void)TakeLastSystemError();
    for (const fs::directory_entry& entry : fs::directory_iterator(Folder())) fs::remove(entry.path());
}

// ---------------------------------------------------------------------------------------------------------------------
// A problem with results

const std::string_view smallProblem = R"(FILEINFO
KALDRA 4.23
TITLE
Frost in a column
two elements
transient
kJ m day C
ANALYSIS
2 1 3.34E+05 1 0.0
CONVERGE
40 0.1 4
TIME 3
1 7.0  7.0 1
2 7.0 14.0 1
3 7.0 21.0 1
MATERIAL 1
1 1 1 2000.0 2800.0 0.40
KFUNCTION 1
1 2 0.0 4.0
conductivity
-10.0 190.0
 10.0 130.0
SFUNCTION 1
1 3 0.0 4.0
water
-20.0 0.06
 -0.5 0.30
  0.0 1.00
MFUNCTION 0
BFUNCTION 1
1 3 0 0 0.0 0.0 1
air
 0.0  2.0
14.0 -8.0
28.0  2.0
NODE 6
1 0.0  0.0  0.0 1 1 0 1 2.0
2 1.0  0.0  0.0 1 1 0 1 2.0
3 0.0 -0.5  0.0 0 0 0 1 2.0
4 1.0 -0.5  0.0 0 0 0 1 2.0
5 0.0 -1.0  0.0 3 0 0 1 2.0
6 1.0 -1.0  0.0 3 0 0 1 2.0
ELEMENT 3
1 2 1 3 4 0 0 0 0 1 4 1.0
2 4 3 5 0 0 0 0 0 1 3 1.0
3 4 5 6 0 0 0 0 0 1 1 1.0
POLE 0
FLUX 1
1 1
1 -0.1 -0.75 1.1 -0.75
qBOUNDARY 1
5 6 3 0 5.0 0 0
)";

static std::map<std::string, std::string> RunSmallProblem() {
    std::map<std::string, std::string> files;
    BeginInput();
    WriteFuzzFile("case.kdr", smallProblem);
    Require(OpenDataFile(FuzzPath("case.kdr")) == 1 && Start() == 1, "the small problem runs");
    HandleCalcThreadMsg(runFinishedMessage, 1);  // waits for the thread
    for (const fs::directory_entry& entry : fs::directory_iterator(Folder())) {
        const std::string name = entry.path().filename().string();
        files[name] = ReadFuzzFile(name);
    }
    Require(files.contains("case.r03") && files.contains("case.j03"), "the small problem leaves its results");
    return files;
}

void RestoreSmallProblem() {
    static const std::map<std::string, std::string> files = RunSmallProblem();
    BeginInput();
    for (const auto& [name, bytes] : files) WriteFuzzFile(name, bytes);
    Require(OpenDataFile(FuzzPath("case.kdr")) == 1, "the small problem is opened");
}

// ---------------------------------------------------------------------------------------------------------------------
// Short runs

// What StartAnalysis does between its lock and its thread.
static bool PrepareRun() {
    ClearWarnings();
    (void)FreeModel();
    InitModel(1);
    if (!ReadDataFile() || !MakePointTables() || !ReadInitialConditions() || !SetupFunctions()) return false;
    (void)BoundaryFunctionsOutside(runState.startStep);
    return true;
}

static bool IsSmall() {
    constexpr std::int32_t largest = 100;
    return model.nodeCount <= largest && model.elementCount <= largest && model.fluxSectionCount <= largest;
}

static int RunShortly() {
    model.maxIterations = std::min(model.maxIterations, 4);
    model.stepCount = std::min(model.stepCount, std::max(runState.startStep, 1) + 1);
    runState.haltRequested = 0;
    runState.unconvergedSteps = 0;
    runState.running = 1;
    if (model.analysisType == transient && !WriteInitialResults()) return 0;
    return ClearOldOutput() ? CalcThreadProc() : 0;
}

int RunBriefly(Solver solver) {
    WishSolver(solver);
    int result = PrepareRun() ? -1 : 0;
    if (result == -1 && IsSmall()) result = RunShortly();
    EndRun();
    return result;
}

}  // namespace kaldra
