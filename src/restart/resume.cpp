#include "restart/resume.h"

#include <algorithm>
#include <string>

#include "model/line_reader.h"
#include "model/problem_model.h"
#include "model/time_sequence.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/number_text.h"
#include "restart/step_files.h"
#include "results/flux_geometry.h"
#include "run/run_state.h"
#include "run/warnings.h"

namespace kaldra {

namespace {

constexpr std::int64_t lineEndBytes = 2;  // CR LF

struct ResultScan {
    File file{};
    LineBuffer line{};
    std::int64_t bytes = 0;  // of the lines so far, if each has its end
};

bool NextLine(ResultScan& in) {
    if (ReadLine(in.file, in.line) != 1) return false;
    in.bytes += static_cast<std::int64_t>(in.line.length) + lineEndBytes;
    return true;
}

bool PassLines(ResultScan& in, std::int64_t count) {
    for (std::int64_t i = 0; i < count; ++i) {
        if (!NextLine(in)) return false;
    }
    return true;
}

// The next line holds just these numbers.
template <class... Targets>
bool NextRow(ResultScan& in, const ScanFormat& format, Targets*... targets) {
    if (!NextLine(in)) return false;
    const ScanResult scan = ScanText(in.line.View(), format, targets...);
    return scan.fields == static_cast<int>(sizeof...(targets)) && !scan.outOfRange;
}

bool HasHeader(ResultScan& in, std::int32_t step) {
    std::int32_t number = -1;
    float elapsed = 0;
    return PassLines(in, 4) && NextRow(in, "%d %f", &number, &elapsed) && number == step &&
           elapsed == ElapsedTime(step);
}

// ---------------------------------------------------------------------------------------------------------------------
// Rows, behind the header

bool HasNodeRows(ResultScan& in) {
    if (!PassLines(in, 3)) return false;
    for (std::int32_t node = 1; node <= model.nodeCount; ++node) {
        std::int32_t number = 0;
        float temperature = 0;
        float flow = 0;
        if (!NextRow(in, "%d %f %f", &number, &temperature, &flow) || number != node) return false;
    }
    return true;
}

// `readRow(element, point)` takes the next row.
template <class ReadRow>
bool HasPointRows(ResultScan& in, ReadRow readRow) {
    if (!PassLines(in, 3)) return false;
    for (std::size_t e = 0; e < static_cast<std::size_t>(model.elementCount); ++e) {
        const std::size_t points = PointCount(e);
        for (std::size_t p = 1; p <= points; ++p) {
            std::int32_t element = 0;
            std::int32_t point = 0;
            if (!readRow(element, point)) return false;
            if (IndexOf(element) != e || static_cast<std::size_t>(point) != p) return false;
        }
    }
    return true;
}

bool HasGradientRows(ResultScan& in) {
    float a = 0, b = 0, c = 0, d = 0;
    return HasPointRows(in, [&](std::int32_t& element, std::int32_t& point) {
        return NextRow(in, "%d %d %f %f %f %f", &element, &point, &a, &b, &c, &d);
    });
}

bool HasMaterialRows(ResultScan& in) {
    float a = 0, b = 0, c = 0, d = 0, e = 0;
    return HasPointRows(in, [&](std::int32_t& element, std::int32_t& point) {
        return NextRow(in, "%d %d %f %f %f %f %f", &element, &point, &a, &b, &c, &d, &e);
    });
}

bool HasFluxRows(ResultScan& in) {
    const auto sections = static_cast<std::size_t>(model.fluxSectionCount);
    if (!PassLines(in, 4 + 2 * static_cast<std::int64_t>(sections) + 2)) return false;
    for (std::size_t s = 0; s < sections; ++s) {
        for (const FluxCrossing& crossing : model.fluxResults[s].crossings) {
            std::int32_t section = 0;
            std::int32_t element = 0;
            float a = 0, b = 0, c = 0;
            if (!NextRow(in, "%d %d %f %f %f", &section, &element, &a, &b, &c)) return false;
            if (IndexOf(section) != s || element != crossing.element) return false;
        }
    }
    return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Files

bool IsWhole(char letter, std::int32_t step, bool (*hasRows)(ResultScan& in)) {
    ResultScan in;
    if (!in.file.OpenForReading(StepFileBesideData(letter, step))) {
        (void)TakeLastSystemError();
        return false;
    }
    const bool read = HasHeader(in, step) && hasRows(in);
    const bool ended = read && ReadLine(in.file, in.line) == 0 && in.bytes == in.file.Size();
    ReadLine(in.file, clearbuf);
    return ended;
}

bool HasWholeResults(std::int32_t step) {
    return IsWhole('r', step, HasMaterialRows) && IsWhole('t', step, HasNodeRows) &&
           IsWhole('g', step, HasGradientRows) && (model.fluxSectionCount == 0 || IsWhole('j', step, HasFluxRows));
}

// How many rows a flux file has comes from the mesh.
bool FindCrossings() {
    if (!MakeTable(model.fluxResults, model.fluxSections.size())) return false;
    runState.running = 1;  // or it would take a Stop for given
    const bool found = BuildFluxCrossings() == 1;
    runState.running = 0;
    return found;
}

bool DataFileIsNewer(std::int32_t step) { return IsNewerThan(model.dataFileName, StepFileBesideData('t', step)); }

std::int32_t LastSavedStep() {
    std::int32_t step = model.stepCount;
    while (step > 0 && model.timeSteps[IndexOf(step)].saveFlag != 1) --step;
    return step;
}

ResumePoint FindSteadyPoint() {
    const bool whole = HasWholeResults(0) && !DataFileIsNewer(0);
    return {whole, whole ? 0 : -1};
}

// A start has to take the files of the steps before it for those of its time sequence.
ResumePoint FindTransientPoint(std::int32_t firstStep) {
    const std::int32_t consistent = LastConsistentStep('t');
    if (consistent < model.stepCount) WarnOfLostTime(consistent + 1);
    for (std::int32_t step = std::min(consistent, LastSavedStep()); step >= firstStep; --step) {
        if (model.timeSteps[IndexOf(step)].saveFlag != 1 || !HasWholeResults(step)) continue;
        if (DataFileIsNewer(step)) {
            AddWarning(
                FormatText("%s was changed after the results of step %d, which are built on all the same: start "
                           "without --resume if they no longer hold",
                           model.dataFileName, step));
        }
        return {step == LastSavedStep(), step};
    }
    return {};
}

}  // namespace

ResumePoint FindResumePoint(std::int32_t firstStep) {
    if (!FindCrossings()) return {};
    return model.analysisType == steadyState ? FindSteadyPoint() : FindTransientPoint(std::max(firstStep, 1));
}

}  // namespace kaldra
