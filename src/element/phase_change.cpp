#include "element/phase_change.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

#include "convergence/convergence_file.h"
#include "element/element_batches.h"
#include "model/problem_model.h"
#include "platform/memory.h"
#include "run/front_end.h"
#include "run/messages.h"
#include "run/run_state.h"

namespace kaldra {

namespace {

// A point that has crossed the freezing point in this step and is not switched yet.
struct Candidate {
    float temperature;
    std::size_t place;
};

struct Candidates {
    std::vector<Candidate> thawing;
    std::vector<Candidate> freezing;
};

[[nodiscard]] int CollectCandidates(Candidates& found) {
    std::vector<PointCrossing> crossings;
    if (!FindPointCrossings(crossings)) return 0;
    for (const PointCrossing& crossing : crossings) {
        std::vector<Candidate>& list = crossing.thaws ? found.thawing : found.freezing;
        if (!AppendRecord(list, {crossing.temperature, crossing.place})) return 0;
    }
    return 1;
}

// Brings the `count` entries that come first by `before` to the front, by exchanges. Of entries with the same
// temperature the exchanges decide which of them make it; where all are taken, their order does not matter.
template <class Before>
void SelectFirst(std::vector<Candidate>& list, std::size_t count, Before before) {
    if (count == list.size()) return;
    for (std::size_t i = 0; i < count && IsRunning(); ++i) {
        for (std::size_t j = i + 1; j < list.size(); ++j) {
            if (before(list[j].temperature, list[i].temperature)) std::swap(list[i], list[j]);
        }
    }
}

// Switches the first points of a list on, as many as one call may, and tells how many.
template <class Before>
std::size_t SwitchOn(std::vector<Candidate>& list, unsigned char state, Before before) {
    const auto most = static_cast<std::size_t>(std::max(model.maxPhasePoints, 0));
    const std::size_t count = std::min(list.size(), most);
    SelectFirst(list, count, before);
    for (std::size_t i = 0; i < count; ++i) model.PhaseState[list[i].place] = state;
    return count;
}

[[nodiscard]] int ReportEstablished() {
    runState.phaseRegionReported = 1;
    const std::array<std::string, 1> line{std::string(StringText(1240))};
    frontEnd.AppendStatus(line[0]);
    File file;
    return OpenConvergenceFile(file) && AppendConvergenceLines(file, line);
}

}  // namespace

int ControlPhaseChange() {
    Candidates found;
    if (!IsRunning() || !CollectCandidates(found)) return 0;
    const auto warmer = [](float a, float b) { return a > b; };
    const auto colder = [](float a, float b) { return a < b; };
    const std::size_t thawing = SwitchOn(found.thawing, pointThawing, warmer);
    const std::size_t freezing = SwitchOn(found.freezing, pointFreezing, colder);
    if (thawing > 0 || freezing > 0) {
        ++model.switchedVersion;
        return 1;
    }
    runState.PhaseChangeMode = phaseEstablished;
    return runState.phaseRegionReported != 0 ? 1 : ReportEstablished();
}

}  // namespace kaldra
