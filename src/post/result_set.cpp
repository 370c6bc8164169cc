#include "post/result_set.h"

#include <algorithm>
#include <utility>

#include "model/data_file.h"
#include "model/file_names.h"
#include "model/problem_model.h"
#include "model/time_sequence.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/number_text.h"
#include "restart/step_files.h"
#include "results/flux_geometry.h"
#include "run/analysis.h"
#include "run/messages.h"
#include "run/run_state.h"

namespace kaldra {

// How many rows a flux file has comes from the mesh.
[[nodiscard]] static int FindCrossings() {
    if (!MakeTable(model.fluxResults, model.fluxSections.size())) return 0;
    runState.running = 1;  // or it would take a Stop for given
    const int found = BuildFluxCrossings();
    runState.running = 0;
    return found;
}

// A steady state replaces its files one after another and deletes none before: while a run is under way or after one
// that was killed, which its marker tells, they may be of two runs.
static bool MayBeMixed() {
    return model.analysisType == steadyState && FileExists(ReplaceExtension(model.dataFileName, StringText(1089)));
}

StepStamps StampsOf(std::int32_t step) {
    StepStamps stamps;
    std::ranges::transform(std::array{'r', 't', 'g', 'j'}, stamps.begin(),
                           [step](char letter) { return StampOf(StepFileBesideData(letter, step)); });
    return stamps;
}

// Stamps are taken before the files are read: what is written meanwhile changes them. `known` are whole.
static bool IsReadable(std::int32_t step, const StepStamps& stamps, const std::vector<SavedStep>& known) {
    if (stamps[0] == FileStamp{}) return false;
    const auto found = std::ranges::find(known, step, &SavedStep::step);
    return (found != known.end() && found->stamps == stamps) || HasWholeResults(step);
}

[[nodiscard]] static int FindSavedSteps(ResultSet& set, const std::vector<SavedStep>& known) {
    set.steps.clear();
    set.remark.clear();
    const std::int32_t first = model.analysisType == steadyState ? 0 : 1;
    const std::int32_t last = model.analysisType == steadyState ? 0 : model.stepCount;
    for (std::int32_t step = first; step <= last && !MayBeMixed(); ++step) {
        const StepStamps stamps = StampsOf(step);
        if (!IsReadable(step, stamps, known)) continue;
        if (!AppendRecord(set.steps, SavedStep{step, ElapsedTime(step), stamps})) return 0;
        if (set.remark.empty() && IsNewerThan(model.dataFileName, StepFileBesideData('r', step))) {
            set.remark = FormatText("%s was changed after the results of step %d", model.dataFileName, step);
        }
    }
    return 1;
}

int OpenResultSet(const std::string& path, ResultSet& set) {
    const FileStamp now = StampOf(path);
    std::vector<SavedStep> known;
    if (set.path == path && set.dataFile == now) known = std::exchange(set.steps, {});
    set = {path, now, {}, {}};
    (void)FreeModel();
    InitModel(1);
    model.dataFileName = path;
    std::int32_t dotPosition = 0;
    std::int32_t length = 0;
    if (!FindExtension(path, dotPosition, length)) return 0;
    if (!ReadDataFile()) return 0;
    if (!MakeTable(model.PointResultOffset, static_cast<std::size_t>(model.elementCount))) return 0;
    BuildPointResultOffsets();
    return FindCrossings() && FindSavedSteps(set, known);
}

std::size_t PointsBegin(std::size_t e) { return static_cast<std::size_t>(model.PointResultOffset[e]); }

}  // namespace kaldra
