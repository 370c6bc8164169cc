#include "view/view_session.h"

#include <algorithm>
#include <cmath>

#include "model/file_names.h"
#include "model/problem_model.h"
#include "platform/memory.h"
#include "platform/number_text.h"

namespace kaldra {

namespace {

// Forgets what was read of results.
void Forget(ViewSession& session) {
    session.shown = noStep;
    session.readAhead = 0;
    session.temperatures.clear();
    session.hasRange = false;
}

void TakeRange(ViewSession& session, const std::vector<float>& temperatures) {
    float least = 0;
    float greatest = 0;
    if (!TemperatureRange(session.scene, temperatures, least, greatest)) return;
    session.least = session.hasRange ? std::min(session.least, least) : least;
    session.greatest = session.hasRange ? std::max(session.greatest, greatest) : greatest;
    session.hasRange = true;
}

// The step to show: the one with this number if it is still there, else the last.
std::size_t StepToShow(const ViewSession& session, std::int32_t number) {
    const auto found = std::ranges::find(session.set.steps, number, &SavedStep::step);
    if (found != session.set.steps.end()) return static_cast<std::size_t>(found - session.set.steps.begin());
    return session.set.steps.size() - 1;
}

[[nodiscard]] int OpenAt(ViewSession& session, const std::string& path, std::int32_t number) {
    session.isOpen = false;
    session.path = path;
    Forget(session);
    if (!OpenResultSet(path, session.set) || !BuildScene(session.scene)) return 0;
    session.isOpen = true;
    if (session.set.steps.empty()) return 1;
    return ShowStep(session, StepToShow(session, number));
}

std::string TimeText(double time) { return ShortNumber(time, 6); }

}  // namespace

int OpenView(ViewSession& session, const std::string& path) {
    session = {};
    return OpenAt(session, path, -1);
}

int RefreshView(ViewSession& session) {
    const std::int32_t number = session.shown == noStep ? -1 : session.set.steps[session.shown].step;
    return OpenAt(session, std::string(session.path), number);
}

int ShowStep(ViewSession& session, std::size_t index) {
    if (index >= session.set.steps.size()) return 0;
    StepResults results;
    if (!ReadStepResults(session.set.steps[index].step, results)) return 0;
    if (!SetSceneStep(session.scene, results)) return 0;
    session.results = std::move(results);
    session.shown = index;
    return 1;
}

bool ReadAhead(ViewSession& session) {
    if (session.readAhead >= session.set.steps.size()) return false;
    StepResults results;
    if (!ReadStepResults(session.set.steps[session.readAhead].step, results)) {
        session.set.steps.resize(session.readAhead);
        return false;
    }
    std::vector<float> temperatures;
    if (!MakeTable(temperatures, results.nodes.size())) return false;
    std::ranges::transform(results.nodes, temperatures.begin(), &NodeResult::temperature);
    TakeRange(session, temperatures);
    session.temperatures.push_back(std::move(temperatures));
    return ++session.readAhead < session.set.steps.size();
}

ColourScale ScaleOf(const ViewSession& session, const ScaleChoice& choice) {
    double low = static_cast<double>(session.scene.least);
    double high = static_cast<double>(session.scene.greatest);
    if (choice.fixedOverSteps && session.hasRange) {
        low = std::min(low, static_cast<double>(session.least));
        high = std::max(high, static_cast<double>(session.greatest));
    }
    if (choice.given) {
        low = choice.low;
        high = choice.high;
    }
    return MakeColourScale(low, high, choice.bands, static_cast<double>(model.freezingPoint));
}

std::string StepText(const ViewSession& session) {
    if (session.shown == noStep) return "no step";
    const SavedStep& step = session.set.steps[session.shown];
    if (step.step == 0) return "steady state";
    return FormatText("step %d, time %s", step.step, TimeText(static_cast<double>(step.elapsed)));
}

std::string TitleOf(const ViewSession& session) {
    const std::string name = session.path.substr(FileNameOffset(session.path));
    return session.shown == noStep ? name : FormatText("%s    %s", name, StepText(session));
}

std::string ProbeText(const ViewSession& session, double x, double y) {
    const Probe probe = ProbeAt(session.scene, session.shown == noStep ? nullptr : &session.results, x, y);
    if (probe.element == 0) return {};
    std::string text = FormatText("x %s  y %s   element %d   nearest node %d", ShortNumber(x), ShortNumber(y),
                                  probe.element, probe.node);
    if (!probe.takesPart) return text + "   NULL material";
    const auto number = [](float value) { return ShortNumber(static_cast<double>(value), 5); };
    if (session.shown != noStep) text += FormatText("   temperature %s", number(probe.temperature));
    if (probe.hasPoint) {
        text += FormatText("   conductivity %s   unfrozen water %s", number(probe.conductivity),
                           number(probe.unfrozenWater));
    }
    return text;
}

// ---------------------------------------------------------------------------------------------------------------------
// Curves

CurveSheet SectionSheet(const ViewSession& session, PicturePoint from, PicturePoint to) {
    CurveSheet sheet;
    const auto place = [](PicturePoint p) { return FormatText("(%s, %s)", ShortNumber(p.x, 3), ShortNumber(p.y, 3)); };
    sheet.title = FormatText("From %s to %s, %s", place(from), place(to), StepText(session));
    sheet.xTitle = "Distance";
    sheet.yTitle = "Temperature";
    sheet.hasLevel = true;
    sheet.level = static_cast<double>(model.freezingPoint);
    Curve curve;
    for (const auto& samples : SampleLine(session.scene, from.x, from.y, to.x, to.y)) {
        auto& piece = curve.pieces.emplace_back();
        for (const SectionSample& sample : samples) piece.push_back({sample.distance, sample.temperature});
    }
    sheet.curves.push_back(std::move(curve));
    return sheet;
}

CurveSheet HistorySheet(const ViewSession& session, std::int32_t node) {
    CurveSheet sheet;
    const NodeRec& record = model.nodes[IndexOf(node)];
    sheet.title = FormatText("Node %d at (%s, %s)", node, ShortNumber(static_cast<double>(record.x)),
                             ShortNumber(static_cast<double>(record.y)));
    sheet.xTitle = "Time";
    sheet.yTitle = "Temperature";
    sheet.hasLevel = true;
    sheet.level = static_cast<double>(model.freezingPoint);
    Curve curve;
    curve.marked = true;
    auto& piece = curve.pieces.emplace_back();
    for (std::size_t s = 0; s < session.readAhead; ++s) {
        piece.push_back({static_cast<double>(session.set.steps[s].elapsed),
                         static_cast<double>(session.temperatures[s][IndexOf(node)])});
    }
    sheet.curves.push_back(std::move(curve));
    return sheet;
}

static bool CollectThaw(const ViewSession& session, double x, ThawHistory& history) {
    if (!CutVertical(x, history.line) || history.line.samples.empty()) return false;
    for (std::size_t s = 0; s < session.readAhead; ++s) {
        StepResults results;
        results.step = session.set.steps[s].step;
        results.elapsed = session.set.steps[s].elapsed;
        if (!MakeTable(results.nodes, session.temperatures[s].size())) return false;
        for (std::size_t n = 0; n < results.nodes.size(); ++n) {
            results.nodes[n].temperature = session.temperatures[s][n];
        }
        if (!AddToHistory(history, results)) return false;
    }
    return !history.steps.empty();
}

static Curve TrumpetCurve(const VerticalLine& line, const std::vector<double>& values, double weight, const char* label,
                          Colour colour) {
    Curve curve;
    curve.label = label;
    curve.colour = colour;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i == 0 || !line.samples[i].joined) curve.pieces.emplace_back();
        curve.pieces.back().push_back({values[i] / weight, line.samples[i].y});
    }
    return curve;
}

bool ThawSheets(const ViewSession& session, double x, CurveSheet& depth, CurveSheet& trumpet) {
    ThawHistory history;
    if (!CollectThaw(session, x, history)) return false;
    const std::string place = FormatText("x = %s", ShortNumber(x));
    depth.title = FormatText("Depth of thaw at %s", place);
    depth.xTitle = "Time";
    depth.yTitle = "Depth below the surface";
    Curve curve;
    curve.marked = true;
    auto& piece = curve.pieces.emplace_back();
    for (const StepThaw& step : history.steps) piece.push_back({step.elapsed, step.thaw.depth});
    depth.curves = {std::move(curve)};

    const Trumpet& last = history.periods.back();
    trumpet.title = FormatText("Temperatures at %s, time %s to %s", place, TimeText(last.period.from),
                               TimeText(history.steps.back().elapsed));
    trumpet.xTitle = "Temperature";
    trumpet.yTitle = "Height y";
    trumpet.hasLevel = trumpet.levelStands = true;
    trumpet.level = static_cast<double>(model.freezingPoint);
    trumpet.curves = {TrumpetCurve(history.line, last.least, 1, "least", Rgb(0x0072B2)),
                      TrumpetCurve(history.line, last.greatest, 1, "greatest", Rgb(0xD55E00))};
    if (last.weight > 0) {
        trumpet.curves.push_back(TrumpetCurve(history.line, last.sum, last.weight, "mean", Rgb(0x202020)));
    }
    return true;
}

}  // namespace kaldra
