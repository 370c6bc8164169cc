#include "frontend/console/run_record.h"

#include <array>
#include <ctime>
#include <nlohmann/json.hpp>

#include "build_commit.h"
#include "model/file_names.h"
#include "model/problem_model.h"
#include "platform/memory.h"
#include "platform/sha256.h"
#include "post/output_file.h"

namespace kaldra {

using Json = nlohmann::ordered_json;

// A number as its shortest decimal, where a plain conversion to f64 would show digits that nobody wrote.
static Json ShortNumber(float value) {
    std::string text;
    AppendNumber(text, value);
    return Json::parse(text);
}

static Json TextOrNull(const std::string& text) { return text.empty() ? Json(nullptr) : Json(text); }

static Json FileOrNull(const FileRecord& file) {
    if (file.path.empty()) return nullptr;
    return {{"path", file.path}, {"sha256", TextOrNull(file.sha256)}};
}

static Json StepList(const std::vector<StepRecord>& steps) {
    Json list = Json::array();
    for (const StepRecord& step : steps) {
        list.push_back({{"step", step.step},
                        {"elapsed", ShortNumber(step.elapsed)},
                        {"iterations", step.iterations},
                        {"converged", step.converged},
                        {"halted", step.halted},
                        {"saved", step.saved}});
    }
    return list;
}

static Json KindText(std::int32_t analysisType) {
    if (analysisType == steadyState) return "steady state";
    return analysisType == transient ? Json("transient") : Json(nullptr);
}

// A name may be bytes of any character set; what is no UTF-8 is replaced.
static std::string RecordText(const RunRecord& r) {
    Json exit = {{"reason", r.exitReason}};
    exit["status"] = r.exitStatus < 0 ? Json(nullptr) : Json(r.exitStatus);
    exit["step_under_way"] = r.stepUnderWay < 0 ? Json(nullptr) : Json(r.stepUnderWay);
    const Json json = {{"program", "kaldra-run"},
                       {"version", KALDRA_VERSION},
                       {"commit", KALDRA_COMMIT},
                       {"command_line", r.commandLine},
                       {"working_folder", r.workingFolder},
                       {"data_file", FileOrNull(r.dataFile)},
                       {"analysis", KindText(r.analysisType)},
                       {"start_step", r.startStep},
                       {"initial_temperatures", FileOrNull(r.initialTemperatures)},
                       {"initial_conductivities", FileOrNull(r.initialConductivities)},
                       {"solver", TextOrNull(r.solver)},
                       {"threads", r.threads},
                       {"begin", r.begin},
                       {"end", TextOrNull(r.end)},
                       {"seconds", r.end.empty() ? Json(nullptr) : Json(r.seconds)},
                       {"steps", StepList(r.steps)},
                       {"messages", r.messages},
                       {"warnings", r.warnings},
                       {"exit", exit}};
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

std::string RunRecordName(const std::string& dataFile) { return ReplaceExtension(dataFile, ".run.json"); }

int WriteRunRecord(const RunRecord& record) {
    constexpr std::size_t bytesPerStep = 2000;
    std::string text;
    return WithMemory(record.steps.size() * bytesPerStep, [&] { text = RecordText(record); }) &&
           WriteOutput(RunRecordName(record.dataFile.path), text);
}

std::string PresentTime() {
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    gmtime_r(&now, &utc);
    std::array<char, 32> text{};
    const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &utc);
    return {text.data(), length};
}

FileRecord RecordOfFile(const std::string& path) { return {path, path.empty() ? std::string() : Sha256OfFile(path)}; }

}  // namespace kaldra
