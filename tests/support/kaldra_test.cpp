#include "support/kaldra_test.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <thread>
#include <utility>

#include "convergence/convergence_file.h"
#include "convergence/convergence_monitor.h"
#include "convergence/graph_memory.h"
#include "element/element_batches.h"
#include "frontend/chart_service.h"
#include "frontend/commands.h"
#include "model/data_file.h"
#include "model/function_setup.h"
#include "model/line_reader.h"
#include "platform/faults.h"
#include "platform/memory.h"
#include "platform/parallel.h"
#include "platform/processor.h"
#include "results/text_writer.h"
#include "run/analysis.h"
#include "run/run_state.h"
#include "solver/solution.h"

namespace kaldra {

static Recorder record;

template <class State>
static void Renew(State& state) {  // what holds atomics or locks cannot be assigned
    std::destroy_at(&state);
    std::construct_at(&state);
}

static void ResetProcess() {
    frontEnd = FrontEnd();
    chartService = ChartService();
    ArmFault(FaultSeam::FileCall, 0);
    ArmFault(FaultSeam::Allocation, 0);
    ArmFault(FaultSeam::OperatorNew, 0);
    SetThreadCount(0);
    LimitProcessorLevel(ProcessorLevel::Avx512);
    WishSolver(Solver::Automatic);
    File none;
    ReadLine(none, clearbuf);
    (void)WriteBuffered(none, clearbuf);
    (void)TakeLastSystemError();
    ConvergencePath.clear();
    convergence = ConvergenceMeasure();
    graphMemory = GraphMemory();
    model = ProblemModel();
    Renew(runState);
    Renew(record);
}

static void AddLine(std::string_view text) {
    {
        const std::scoped_lock lock(record.lock);
        record.status.emplace_back(text);
    }
    record.onStatus(text);
}

static void ConnectRecorder() {
    frontEnd.AppendStatus = AddLine;
    frontEnd.AppendStatusPlain = AddLine;
    frontEnd.ClearStatus = [] { record.status.clear(); };
    frontEnd.GraphDataReady = [] { record.onGraphData(); };
    frontEnd.SetHaltEnabled = [](bool enabled) {
        const std::scoped_lock lock(record.lock);
        record.haltEnabled = enabled;
    };
    frontEnd.ShowMessage = [](const MessageBox& box) {
        const std::scoped_lock lock(record.lock);
        record.boxes.push_back(box);
    };
    frontEnd.RunFinished = [](int result) {
        const std::scoped_lock lock(record.lock);
        record.result = result;
        ++record.posts;
        record.finished.notify_all();
    };
}

bool GraphMemoryIsFree() {
    bool taken = false;
    std::thread([&] {
        taken = hmtxGraphMem.try_lock();
        if (taken) hmtxGraphMem.unlock();
    }).join();
    return taken;
}

KaldraTest::KaldraTest() : recorder(record) {
    ResetProcess();
    std::string pattern = (std::filesystem::temp_directory_path() / "kaldra-test-XXXXXX").string();
    folder = mkdtemp(pattern.data());
    ConnectRecorder();
    InitModel(0);
    InitModel(1);
}

KaldraTest::~KaldraTest() {
    EXPECT_FALSE(CalcThreadLives()) << "the test leaves a calculation thread";
    if (CalcThreadLives()) {
        runState.running = 0;
        HandleCalcThreadMsg(runFinishedMessage, 0);
    }
    for (const MessageBox& box : recorder.boxes) ADD_FAILURE() << "unread message " << box.number << ": " << box.text;
    ResetProcess();
    std::filesystem::remove_all(folder);
}

std::string KaldraTest::WriteFile(std::string_view name, std::string_view bytes) const {
    std::ofstream(Path(name), std::ios::binary) << bytes;
    return Path(name);
}

std::string KaldraTest::ReadFile(std::string_view name) const {
    std::ostringstream bytes;
    bytes << std::ifstream(Path(name), std::ios::binary).rdbuf();
    return bytes.str();
}

bool KaldraTest::HasFile(std::string_view name) const { return std::filesystem::exists(Path(name)); }

Contents KaldraTest::FilesBeside() const {
    Contents files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const std::string name = entry.path().filename().string();
        if (name != "case.kdr" && name != "case.lkp") files[name] = ReadFile(name);
    }
    return files;
}

std::vector<MessageBox> KaldraTest::TakeBoxes() { return std::exchange(recorder.boxes, {}); }

std::vector<int> KaldraTest::TakeMessages() {
    std::vector<int> numbers;
    for (const MessageBox& box : TakeBoxes()) numbers.push_back(box.number);
    return numbers;
}

std::string KaldraTest::TakeText(int number) {
    const std::vector<MessageBox> boxes = TakeBoxes();
    if (boxes.size() == 1 && boxes[0].number == number) return boxes[0].text;
    ADD_FAILURE() << boxes.size() << " messages, and not " << number << " alone";
    return "";
}

bool KaldraTest::Prepare(const Problem& problem) {
    (void)FreeModel();
    InitModel(1);
    model.dataFileName = WriteFile("case.kdr", problem.Text());
    if (!ReadDataFile() || !SetupFunctions()) return false;
    ChooseStartStep();
    runState.running = 1;
    return MakePointTables() && MakeTable(model.SlopeFloor, model.batches.pointPlaces) &&
           MakeTable(model.PhaseState, model.batches.pointPlaces) && FillElementBatches();
}

void KaldraTest::WaitForPost() {
    std::unique_lock lock(recorder.lock);
    const auto posted = [&] { return recorder.posts > 0; };
    if (!recorder.finished.wait_for(lock, std::chrono::seconds(120), posted)) {
        std::abort();  // nothing can be put right while the thread works on
    }
}

Outcome KaldraTest::RunOpened() {
    recorder.posts = 0;
    if (!Start()) return {};
    WaitForPost();  // behind which the tables are still there
    Outcome outcome{true, 0, model};
    outcome.result = WaitForEnd();
    return outcome;
}

int KaldraTest::WaitForEnd() {
    WaitForPost();
    recorder.posts = 0;
    HandleCalcThreadMsg(runFinishedMessage, recorder.result);
    return recorder.result;
}

void KaldraTest::PressBehind(const std::string& line, void (*press)()) {
    recorder.onStatus = [line, press, pressed = false](std::string_view text) mutable {
        if (pressed || !text.starts_with(line)) return;
        pressed = true;
        press();
    };
}

Outcome KaldraTest::Run(const Problem& problem) {
    return OpenDataFile(WriteFile("case.kdr", problem.Text())) ? RunOpened() : Outcome{};
}

}  // namespace kaldra
