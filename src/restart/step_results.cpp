#include "restart/step_results.h"

#include <array>

#include "model/line_reader.h"
#include "model/problem_model.h"
#include "model/time_sequence.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/number_text.h"
#include "restart/step_files.h"
#include "run/front_end.h"
#include "run/messages.h"

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

// An elapsed time as a header holds it, with five digits.
float HeaderTime(std::int32_t step) {
    float held = 0;
    (void)ScanText(FormatText("%+12.4E", ElapsedTime(step)), "%f", &held);
    return held;
}

bool HasHeader(ResultScan& in, std::int32_t step) {
    std::int32_t number = -1;
    float elapsed = 0;
    return PassLines(in, 4) && NextRow(in, "%d %f", &number, &elapsed) && number == step && elapsed == HeaderTime(step);
}

// ---------------------------------------------------------------------------------------------------------------------
// Rows, behind the header. `into` may be null.

bool ReadNodeRows(ResultScan& in, StepResults* into) {
    if (!PassLines(in, 3)) return false;
    for (std::int32_t node = 1; node <= model.nodeCount; ++node) {
        std::int32_t number = 0;
        NodeResult row;
        if (!NextRow(in, "%d %f %f", &number, &row.temperature, &row.flow) || number != node) return false;
        if (into != nullptr) into->nodes[IndexOf(node)] = row;
    }
    return true;
}

// `readRow(element, number, point)` takes the next row of a point.
template <class ReadRow>
bool ReadPointRows(ResultScan& in, StepResults* into, ReadRow readRow) {
    if (!PassLines(in, 3)) return false;
    PointResult unused;
    std::size_t place = 0;
    for (std::size_t e = 0; e < static_cast<std::size_t>(model.elementCount); ++e) {
        const std::size_t points = PointCount(e);
        for (std::size_t p = 0; p < points; ++p) {
            std::int32_t element = 0;
            std::int32_t number = 0;
            if (!readRow(element, number, into != nullptr ? into->points[place++] : unused)) return false;
            if (IndexOf(element) != e || IndexOf(number) != p) return false;
        }
    }
    return true;
}

bool ReadGradientRows(ResultScan& in, StepResults* into) {
    return ReadPointRows(in, into, [&](std::int32_t& element, std::int32_t& number, PointResult& p) {
        return NextRow(in, "%d %d %f %f %f %f", &element, &number, &p.fluxX, &p.fluxY, &p.gradientX, &p.gradientY);
    });
}

bool ReadMaterialRows(ResultScan& in, StepResults* into) {
    return ReadPointRows(in, into, [&](std::int32_t& element, std::int32_t& number, PointResult& p) {
        return NextRow(in, "%d %d %f %f %f %f %f", &element, &number, &p.temperature, &p.conductivity, &p.waterSlope,
                       &p.unfrozenWater, &p.heatCapacity);
    });
}

// Below each line of a section stands an empty one.
bool ReadSectionLines(ResultScan& in, StepResults* into) {
    for (std::int32_t section = 1; section <= model.fluxSectionCount; ++section) {
        std::string word;
        std::int32_t number = 0;
        SectionResult row;
        if (!NextRow(in, "%s %d %s %f %f %f", &word, &number, &word, &row.total, &row.heatFlux, &row.storage) ||
            number != section || !NextLine(in)) {
            return false;
        }
        if (into != nullptr) into->sections[IndexOf(section)] = row;
    }
    return true;
}

bool ReadCrossingRows(ResultScan& in, StepResults* into) {
    std::size_t place = 0;
    for (std::size_t s = 0; s < static_cast<std::size_t>(model.fluxSectionCount); ++s) {
        for (const FluxCrossing& crossing : model.fluxResults[s].crossings) {
            CrossingResult row;
            if (!NextRow(in, "%d %d %f %f %f", &row.section, &row.element, &row.total, &row.heatFlux, &row.storage)) {
                return false;
            }
            if (IndexOf(row.section) != s || row.element != crossing.element) return false;
            if (into != nullptr) into->crossings[place++] = row;
        }
    }
    return true;
}

bool ReadFluxRows(ResultScan& in, StepResults* into) {
    return PassLines(in, 4) && ReadSectionLines(in, into) && PassLines(in, 2) && ReadCrossingRows(in, into);
}

// ---------------------------------------------------------------------------------------------------------------------
// Files

struct ResultFileKind {
    char letter;
    bool (*readRows)(ResultScan& in, StepResults* into);
};

// The file that a run writes last comes first: where a step is not whole, that one most often tells it.
constexpr std::array<ResultFileKind, 4> kinds{
    {{'r', ReadMaterialRows}, {'t', ReadNodeRows}, {'g', ReadGradientRows}, {'j', ReadFluxRows}}};

bool IsLeft(const ResultFileKind& kind) { return kind.letter != 'j' || model.fluxSectionCount > 0; }

bool ReadWhole(const ResultFileKind& kind, std::int32_t step, StepResults* into) {
    ResultScan in;
    if (!in.file.OpenForReading(StepFileBesideData(kind.letter, step))) {
        (void)TakeLastSystemError();
        return false;
    }
    const bool read = HasHeader(in, step) && kind.readRows(in, into);
    const bool ended = read && ReadLine(in.file, in.line) == 0 && in.bytes == in.file.Size();
    ReadLine(in.file, clearbuf);
    return ended;
}

std::size_t CountCrossings() {
    std::size_t count = 0;
    for (const FluxResult& result : model.fluxResults) count += result.crossings.size();
    return count;
}

[[nodiscard]] int MakeTables(StepResults& results) {
    return MakeTable(results.nodes, static_cast<std::size_t>(model.nodeCount)) &&
           MakeTable(results.points, static_cast<std::size_t>(model.pointTotal)) &&
           MakeTable(results.sections, static_cast<std::size_t>(model.fluxSectionCount)) &&
           MakeTable(results.crossings, model.fluxSectionCount > 0 ? CountCrossings() : 0);
}

}  // namespace

bool HasWholeResults(std::int32_t step) {
    for (const ResultFileKind& kind : kinds) {
        if (IsLeft(kind) && !ReadWhole(kind, step, nullptr)) return false;
    }
    return true;
}

int ReadStepResults(std::int32_t step, StepResults& results) {
    results.step = step;
    results.elapsed = ElapsedTime(step);
    if (!MakeTables(results)) return 0;
    for (const ResultFileKind& kind : kinds) {
        if (IsLeft(kind) && !ReadWhole(kind, step, &results)) {
            const std::string text = std::string(StringText(5002)) + StepFileBesideData(kind.letter, step);
            ShowErrorBox(boxExclamation, 5002, text);
            return 0;
        }
    }
    return 1;
}

}  // namespace kaldra
