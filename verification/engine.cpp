#include "engine.h"

#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <system_error>

#include "frontend/commands.h"
#include "model/problem_model.h"
#include "run/analysis.h"
#include "run/front_end.h"
#include "run/run_state.h"

namespace verification {

namespace {

// What both threads touch, under `lock`.
struct Inbox {
    std::mutex lock;
    std::condition_variable arrived;
    bool finished = false;
    int result = 0;
    std::string message;  // of the first box
};

Inbox inbox;

void NoteFinished(int result) {
    const std::scoped_lock lock(inbox.lock);
    inbox.finished = true;
    inbox.result = result;
    inbox.arrived.notify_one();
}

void NoteMessage(const kaldra::MessageBox& box) {
    const std::scoped_lock lock(inbox.lock);
    if (inbox.message.empty()) inbox.message = "message " + std::to_string(box.number) + ": " + box.text;
}

void ThrowMessage(const char* what) {
    const std::scoped_lock lock(inbox.lock);
    throw std::runtime_error(std::string(what) + (inbox.message.empty() ? "" : ", ") + inbox.message);
}

int WaitForResult() {
    std::unique_lock lock(inbox.lock);
    inbox.arrived.wait(lock, [] { return inbox.finished; });
    return inbox.result;
}

}  // namespace

Folder::Folder() {
    std::string name = (std::filesystem::temp_directory_path() / "kaldra-verify-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make a temporary folder");
    path_ = name;
}

Folder::~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

void ConnectEngine() {
    kaldra::frontEnd.RunFinished = NoteFinished;
    kaldra::frontEnd.ShowMessage = NoteMessage;
    kaldra::InitModel(0);
    kaldra::InitModel(1);
}

int RunFolder(const Folder& folder, int startStep) {
    {
        const std::scoped_lock lock(inbox.lock);
        inbox.finished = false;
        inbox.message.clear();
    }
    if (!kaldra::OpenDataFile(folder.DataFile().string())) ThrowMessage("the data file was refused");
    if (startStep > 1) kaldra::ChooseStartTime(startStep);
    if (!kaldra::Start()) ThrowMessage("the run did not start");
    const int result = WaitForResult();
    kaldra::HandleCalcThreadMsg(kaldra::runFinishedMessage, result);
    if (result != 1 || !inbox.message.empty()) ThrowMessage("the run failed");
    return kaldra::runState.unconvergedSteps;
}

void Run(const Problem& problem, const Folder& folder) {
    WriteDataFile(problem, folder.DataFile());
    const int unconverged = RunFolder(folder);
    if (unconverged > 0) throw std::runtime_error(std::to_string(unconverged) + " steps did not converge");
}

// ---------------------------------------------------------------------------------------------------------------------
// Result files

std::filesystem::path StepFile(const Folder& folder, char letter, int step) {
    char extension[16];
    std::snprintf(extension, sizeof extension, ".%c%02d", letter, step);
    return folder.Path() / (std::string("case") + extension);
}

namespace {

// The numbers of each line below the line of equal signs.
std::vector<std::vector<double>> ReadTable(const std::filesystem::path& path) {
    std::ifstream file(path);
    std::string line;
    while (std::getline(file, line) && !line.starts_with("==============")) {
    }
    std::vector<std::vector<double>> rows;
    while (std::getline(file, line)) {
        std::istringstream fields(line);
        std::vector<double>& row = rows.emplace_back();
        for (double value = 0; fields >> value;) row.push_back(value);
    }
    if (rows.empty()) throw std::runtime_error("no results in " + path.filename().string());
    return rows;
}

}  // namespace

std::vector<NodeRow> ReadNodes(const Folder& folder, int step) {
    std::vector<NodeRow> nodes;
    for (const auto& row : ReadTable(StepFile(folder, 't', step))) nodes.push_back({row.at(1), row.at(2)});
    return nodes;
}

std::vector<PointRow> ReadPoints(const Folder& folder, int step) {
    std::vector<PointRow> points;
    for (const auto& row : ReadTable(StepFile(folder, 'r', step))) {
        points.push_back({row.at(2), row.at(3), row.at(4), row.at(5), row.at(6)});
    }
    return points;
}

}  // namespace verification
