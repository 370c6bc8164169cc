#include "element/phase_change.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

#include "convergence/convergence_file.h"
#include "element/element_matrices.h"
#include "element/small_matrix.h"
#include "model/problem_model.h"
#include "platform/memory.h"
#include "platform/narrow.h"
#include "run/front_end.h"
#include "run/messages.h"
#include "run/run_state.h"

namespace kaldra {

namespace {

// A point that has crossed the freezing point in this step and is not switched yet.
struct Candidate {
    float temperature;
    std::size_t pointIndex;
};

struct Candidates {
    std::vector<Candidate> thawing;
    std::vector<Candidate> freezing;
};

// A temperature exactly at the freezing point at either end of the step is no crossing.
[[nodiscard]] int CollectFrom(std::size_t e, Candidates& found) {
    const ElementRec& element = model.elements[e];
    const SlotValues present = SlotTemperatures(element, &NodeState::temperature);
    const SlotValues old = SlotTemperatures(element, &NodeState::previous);
    const std::size_t points = PointCount(e);
    RuleTable rule;
    GetIntegrationRule(rule, points);
    for (std::size_t i = 0; i < points; ++i) {
        const std::size_t pointIndex = static_cast<std::size_t>(model.PointResultOffset[e]) + i;
        if (model.PhaseState[pointIndex] != 0) continue;
        SlotValues N;
        ShapeFunctions(N, rule[i].r, rule[i].s, element.nodes);
        const float now = Narrow(VecDot(N.data(), present.data(), slotCount));
        const float before = Narrow(VecDot(N.data(), old.data(), slotCount));
        const bool thaws = now > model.freezingPoint && before < model.freezingPoint;
        const bool freezes = now < model.freezingPoint && before > model.freezingPoint;
        if (thaws && !AppendRecord(found.thawing, {now, pointIndex})) return 0;
        if (freezes && !AppendRecord(found.freezing, {now, pointIndex})) return 0;
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
    for (std::size_t i = 0; i < count; ++i) model.PhaseState[list[i].pointIndex] = state;
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
    for (std::size_t e = 0; e < static_cast<std::size_t>(model.elementCount); ++e) {
        if (!IsRunning()) return 0;
        if (!IsNullElement(model.elements[e]) && !CollectFrom(e, found)) return 0;
    }
    const auto warmer = [](float a, float b) { return a > b; };
    const auto colder = [](float a, float b) { return a < b; };
    const std::size_t thawing = SwitchOn(found.thawing, pointThawing, warmer);
    const std::size_t freezing = SwitchOn(found.freezing, pointFreezing, colder);
    if (thawing > 0 || freezing > 0) return 1;
    runState.PhaseChangeMode = phaseEstablished;
    return runState.phaseRegionReported != 0 ? 1 : ReportEstablished();
}

}  // namespace kaldra
