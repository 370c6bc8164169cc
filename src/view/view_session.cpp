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

void DropKept(ViewSession& session) {
    session.kept.clear();
    session.keptBytes = 0;
}

std::size_t BytesOf(const StepResults& results) {
    return results.nodes.size() * sizeof(NodeResult) + results.points.size() * sizeof(PointResult) +
           results.sections.size() * sizeof(SectionResult) + results.crossings.size() * sizeof(CrossingResult);
}

void Keep(ViewSession& session, std::int32_t step, const StepStamps& stamps, const StepResults& results) {
    constexpr std::size_t mostBytes = std::size_t{1} << 29;
    const std::size_t bytes = BytesOf(results);
    if (session.keptBytes + bytes > mostBytes) return;
    if (TryMemory(bytes, [&] { session.kept[step] = {stamps, results}; })) session.keptBytes += bytes;
}

// The results of a step: from memory where its files are still those that were read. Gives 1, or 0 after a message.
[[nodiscard]] int TakeResults(ViewSession& session, std::int32_t step, StepResults& results) {
    const StepStamps stamps = StampsOf(step);
    const auto found = session.kept.find(step);
    if (found != session.kept.end() && found->second.stamps == stamps) {
        return WithMemory(BytesOf(found->second.results), [&] { results = found->second.results; });
    }
    if (found != session.kept.end()) {
        session.keptBytes -= BytesOf(found->second.results);
        session.kept.erase(found);
    }
    if (!ReadStepResults(step, results)) return 0;
    Keep(session, step, stamps, results);
    return 1;
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
    const FileStamp before = session.set.dataFile;
    if (!OpenResultSet(path, session.set) || !BuildScene(session.scene)) return 0;
    if (session.set.dataFile != before) DropKept(session);
    session.isOpen = true;
    if (session.set.steps.empty()) return 1;
    return ShowStep(session, StepToShow(session, number));
}

// A coordinate in as many digits as tell places of the mesh apart, wherever it lies.
std::string PlaceText(const Scene& scene, double place) {
    const float extent = std::max(scene.right - scene.left, scene.top - scene.bottom);
    const float farthest = std::max(std::max(std::abs(scene.left), std::abs(scene.right)),
                                    std::max(std::abs(scene.bottom), std::abs(scene.top)));
    const float away = extent > 0 ? std::clamp(farthest / extent, 1.0F, 1e5F) : 1;
    return ShortNumber(place, 4 + static_cast<int>(std::log10(away)));
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
    if (!TakeResults(session, session.set.steps[index].step, results)) return 0;
    if (!SetSceneStep(session.scene, results)) return 0;
    session.results = std::move(results);
    session.shown = index;
    return 1;
}

bool ReadAhead(ViewSession& session) {
    if (session.readAhead >= session.set.steps.size()) return false;
    StepResults results;
    if (!TakeResults(session, session.set.steps[session.readAhead].step, results)) {
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
    std::string text = FormatText("x %s  y %s   element %d   nearest node %d", PlaceText(session.scene, x),
                                  PlaceText(session.scene, y), probe.element, probe.node);
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
    const auto place = [&](PicturePoint p) {
        return FormatText("(%s, %s)", PlaceText(session.scene, p.x), PlaceText(session.scene, p.y));
    };
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
    sheet.title = FormatText("Node %d at (%s, %s)", node, PlaceText(session.scene, static_cast<double>(record.x)),
                             PlaceText(session.scene, static_cast<double>(record.y)));
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

static Curve LabelledCurve(const char* label, std::uint32_t colour) {
    Curve curve;
    curve.label = label;
    curve.colour = Rgb(colour);
    return curve;
}

static Curve TrumpetCurve(const VerticalLine& line, const std::vector<double>& values, double weight, Curve curve) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i == 0 || !line.samples[i].joined) curve.pieces.emplace_back();
        curve.pieces.back().push_back({values[i] / weight, line.samples[i].y});
    }
    return curve;
}

static CurveSheet DepthSheet(const ThawHistory& history, const std::string& place) {
    CurveSheet sheet;
    sheet.title = FormatText("Depth of thaw at %s", place);
    sheet.xTitle = "Time";
    sheet.yTitle = "Depth below the surface";
    Curve depth = LabelledCurve("depth of thaw", 0x0072B2);
    Curve thawedAbove = LabelledCurve("thawed above", 0xE69F00);
    Curve frozenAbove = LabelledCurve("frozen above", 0x56B4E9);
    Curve deepest = LabelledCurve("deepest of period", 0xD55E00);
    auto& line = depth.pieces.emplace_back();
    for (const StepThaw& step : history.steps) {
        line.push_back({step.elapsed, step.thaw.depth});
        for (const FreezingCrossing& crossing : step.crossings) {
            (crossing.thawedAbove ? thawedAbove : frozenAbove).pieces.push_back({{step.elapsed, crossing.depth}});
        }
    }
    for (const Trumpet& trumpet : history.periods) {
        deepest.pieces.push_back({{trumpet.deepestTime, trumpet.deepest.depth}});
    }
    sheet.curves = {std::move(depth), std::move(thawedAbove), std::move(frozenAbove), std::move(deepest)};
    return sheet;
}

static CurveSheet TrumpetSheet(const ThawHistory& history, const Trumpet& trumpet, const std::string& place) {
    CurveSheet sheet;
    double until = trumpet.period.from;  // the last step of a period that is not over
    for (const StepThaw& step : history.steps) {
        if (step.elapsed <= trumpet.period.to) until = std::max(until, step.elapsed);
    }
    sheet.title =
        FormatText("Temperatures at %s, time %s to %s", place, TimeText(trumpet.period.from), TimeText(until));
    sheet.xTitle = "Temperature";
    sheet.yTitle = "Height y";
    sheet.hasLevel = sheet.levelStands = true;
    sheet.level = static_cast<double>(model.freezingPoint);
    sheet.curves = {TrumpetCurve(history.line, trumpet.least, 1, LabelledCurve("least", 0x0072B2)),
                    TrumpetCurve(history.line, trumpet.greatest, 1, LabelledCurve("greatest", 0xD55E00))};
    if (trumpet.weight > 0) {
        sheet.curves.push_back(
            TrumpetCurve(history.line, trumpet.sum, trumpet.weight, LabelledCurve("mean", 0x202020)));
    }
    return sheet;
}

bool ThawSheets(const ViewSession& session, double x, CurveSheet& depth, CurveSheet& trumpet) {
    ThawHistory history;
    if (!CollectThaw(session, x, history)) return false;
    const std::string place = FormatText("x = %s", PlaceText(session.scene, x));
    depth = DepthSheet(history, place);
    const double shown = session.shown == noStep ? 0 : static_cast<double>(session.set.steps[session.shown].elapsed);
    const auto of = std::ranges::find(history.periods, PeriodOf(shown).number,
                                      [](const Trumpet& each) { return each.period.number; });
    trumpet = TrumpetSheet(history, of != history.periods.end() ? *of : history.periods.back(), place);
    return true;
}

}  // namespace kaldra
