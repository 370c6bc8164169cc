#include "frontend/graph_options.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <mutex>
#include <optional>

#include "convergence/convergence_history.h"
#include "convergence/graph_memory.h"
#include "frontend/graph.h"
#include "model/data_file.h"
#include "model/problem_model.h"
#include "model/time_sequence.h"
#include "platform/number_text.h"
#include "run/analysis.h"
#include "run/messages.h"

namespace kaldra {

// ---------------------------------------------------------------------------------------------------------------------
// The dialog as it opens

namespace {

void AddStep(GraphOptions& options, std::int32_t step) {
    options.steps.push_back(FormatText("%5d %18.4E", step, ElapsedTime(step)));
    options.stepNumbers.push_back(step);
}

// The steps of the convergence file, with the one that is drawn selected.
void ListFileSteps(GraphOptions& options) {
    if (ReadTimeSequence()) (void)ScanConvergenceFile();
    const std::scoped_lock lock(hmtxGraphMem);
    GraphMemory& g = graphMemory;
    const auto count = static_cast<std::size_t>(g.GraphStepCount);
    for (std::size_t i = 0; i < count; ++i) AddStep(options, g.GraphStepList[i]);
    options.stepsEnabled = true;
    if (count == 0) return;
    if (g.GraphStep == 0) g.GraphStep = g.GraphStepList[count - 1];
    const auto found = std::ranges::find(options.stepNumbers, g.GraphStep);
    const bool listed = found != options.stepNumbers.end();
    options.selectedStep = listed ? static_cast<std::size_t>(found - options.stepNumbers.begin()) : count - 1;
}

void ListSteps(GraphOptions& options, bool busy) {
    if (model.analysisType == steadyState) {
        options.steps.emplace_back(StringText(1114));
        options.stepNumbers.push_back(0);
    } else if (busy) {
        const std::scoped_lock lock(hmtxGraphMem);
        AddStep(options, graphMemory.GraphStep);  // the step under way, in a word that the calculation thread guards
    } else {
        ListFileSteps(options);
    }
}

}  // namespace

GraphOptions BeginGraphOptions() {
    GraphOptions options;
    const bool busy = RunUnderWay();
    ListSteps(options, busy);
    options.updateEnabled = busy;

    const std::scoped_lock lock(hmtxGraphMem);
    const GraphMemory& g = graphMemory;
    options.startText = FormatText("%d", g.GraphFirstIteration);
    options.endText = FormatText("%d", g.GraphLastIteration);
    options.updateMode = g.GraphUpdateMode;
    options.intervalText = FormatText("%d", g.GraphUpdateInterval);
    options.fontName = g.GraphFontName;
    options.fontSize = g.GraphFontSize;
    options.fontStyle = g.GraphFontStyle;
    options.symbols = (g.GraphDisplayFlags & graphSymbols) != 0;
    options.colour = (g.GraphDisplayFlags & graphColour) != 0;
    options.thickLines = (g.GraphDisplayFlags & graphThickLines) != 0;
    return options;
}

bool IntervalEnabled(const GraphOptions& options) {
    return options.updateEnabled && options.updateMode != graphManually;
}

void SelectGraphStep(GraphOptions& options, std::size_t entry) {
    options.selectedStep = entry;
    const std::scoped_lock lock(hmtxGraphMem);
    const GraphMemory& g = graphMemory;
    if (entry >= static_cast<std::size_t>(g.GraphStepCount)) return;
    options.endText = FormatText("%d", g.GraphStepIterations[entry]);
    options.startText = FormatText("%d", g.GraphFirstIteration);
}

// ---------------------------------------------------------------------------------------------------------------------
// OK

namespace {

// The value of a number field: digits between blanks.
std::optional<std::int32_t> UnsignedNumber(std::string_view text) {
    const std::size_t first = std::min(text.find_first_not_of(' '), text.size());
    text.remove_prefix(first);
    text = text.substr(0, text.find_last_not_of(' ') + 1);
    std::int32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool whole = error == std::errc() && end == text.data() + text.size();
    return whole && text.front() != '-' ? std::optional(value) : std::nullopt;
}

int Refuse(int message, int field) {
    ShowError(message);
    return field;
}

struct OptionNumbers {
    std::int32_t start = 0;
    std::int32_t end = 0;
    std::int32_t interval = 0;
};

// Gives 0, or the field of the first check that fails.
[[nodiscard]] int CheckNumbers(const GraphOptions& options, OptionNumbers& numbers) {
    const auto start = UnsignedNumber(options.startText);
    if (!start) return Refuse(1115, optionsStart);
    const auto end = UnsignedNumber(options.endText);
    if (!end) return Refuse(1115, optionsEnd);
    if (*start <= 0) return Refuse(1176, optionsStart);
    if (*end <= *start) return Refuse(1175, optionsEnd);
    const auto interval = UnsignedNumber(options.intervalText);
    if (!interval) return Refuse(1115, optionsInterval);
    numbers = {*start, *end, *interval};
    return 0;
}

// The step and the update rule; during a run the step belongs to the calculation thread. Gives false for an interval
// below 1, with the mode changed all the same.
[[nodiscard]] bool TakeStepAndRule(const GraphOptions& options, std::int32_t interval, bool busy) {
    const std::scoped_lock lock(hmtxGraphMem);
    GraphMemory& g = graphMemory;
    if (!busy && options.selectedStep < options.stepNumbers.size()) {
        g.GraphStep = options.stepNumbers[options.selectedStep];
    }
    g.GraphUpdateMode = options.updateMode == graphManually ? graphManually : graphAutomatically;
    if (g.GraphUpdateMode == graphManually) return true;
    if (interval < 1) return false;
    g.GraphUpdateInterval = interval;
    return true;
}

void ReadChosenStep() {
    std::int32_t step = 0;
    if (model.analysisType != steadyState) {
        const std::scoped_lock lock(hmtxGraphMem);
        step = graphMemory.GraphStep;
    }
    (void)(ReadTimeSequence() && ScanConvergenceFile() && LoadConvergenceStep(step));
}

void TakeRangeAndLook(const GraphOptions& options, const OptionNumbers& numbers) {
    const std::scoped_lock lock(hmtxGraphMem);
    GraphMemory& g = graphMemory;
    g.GraphFirstIteration = numbers.start;
    g.GraphLastIteration = numbers.end;
    g.GraphFontName = options.fontName.substr(0, longestFontName);
    g.GraphFontSize = options.fontSize;
    g.GraphFontStyle = options.fontStyle;
    g.GraphDisplayFlags = (options.symbols ? graphSymbols : 0) | (options.colour ? graphColour : 0) |
                          (options.thickLines ? graphThickLines : 0);
}

}  // namespace

int AcceptGraphOptions(const GraphOptions& options) {
    OptionNumbers numbers;
    if (const int field = CheckNumbers(options, numbers)) return field;
    const bool busy = RunUnderWay();
    if (!TakeStepAndRule(options, numbers.interval, busy)) return Refuse(1115, optionsInterval);
    if (!busy) ReadChosenStep();         // sets the display range to the whole last step,
    TakeRangeAndLook(options, numbers);  // which the user's range replaces
    ShowDrawing();
    return 0;
}

// ---------------------------------------------------------------------------------------------------------------------
// Fonts

namespace {

constexpr int boldAbove = 400;
constexpr int boldFixedFrom = 700;  // of a font that does not scale

std::string JoinStyles(bool bold, bool italic) {
    std::string style;
    if (bold) style = StringText(1211);
    if (italic) style.append(style.empty() ? "" : " ").append(StringText(1212));
    return style;
}

}  // namespace

std::string FontStyleName(const FontFacts& font) {
    const bool bold = font.scalable ? font.weight > boldAbove && !font.faceIsBold : font.weight >= boldFixedFrom;
    const bool italic = font.italic && !(font.scalable && font.faceIsItalic);
    std::string style = JoinStyles(bold, italic);
    if (style.empty()) style = font.scalable ? font.ownStyleName : std::string_view();
    return style.empty() ? std::string(StringText(1210)) : style;
}

std::string FontLabel(const GraphOptions& options) {
    FontFacts font;
    font.weight = (options.fontStyle & graphBold) != 0 ? boldFixedFrom : boldAbove;
    font.italic = (options.fontStyle & graphItalic) != 0;
    return options.fontName + ' ' + FontStyleName(font);
}

void ChooseGraphFont(GraphOptions& options, std::string_view name, const FontFacts& font, double height, double base) {
    options.fontName = name.substr(0, longestFontName);
    options.fontStyle = (font.weight > boldAbove ? graphBold : 0) | (font.italic ? graphItalic : 0);
    options.fontSize = FontPercent(height, base);
}

float FontPercent(double height, double base) { return static_cast<float>(std::abs(height * 100 / base)); }

int FontPixels(float percent, double base) {
    return static_cast<int>(std::lround(static_cast<double>(percent) * base * 0.01));
}

}  // namespace kaldra
