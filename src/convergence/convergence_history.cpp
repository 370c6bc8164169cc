#include "convergence/convergence_history.h"

#include <algorithm>
#include <vector>

#include "convergence/graph_memory.h"
#include "model/file_names.h"
#include "model/line_reader.h"
#include "model/problem_model.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/number_text.h"
#include "run/messages.h"

namespace kaldra {

std::string ConvergenceFileBesideData() { return ReplaceExtension(model.dataFileName, StringText(1072)); }

// ---------------------------------------------------------------------------------------------------------------------
// Lines

namespace {

struct History {
    File file;
    LineBuffer line;  // the last one that could be read
};

int BadLine(const History& in) { return ShowErrorWithText(1153, in.line.View()); }

// Gives 1; 0 at the end of the file; -1 after the reader's message.
[[nodiscard]] int NextLine(History& in) {
    LineBuffer next;
    const int result = ReadLine(in.file, next);
    if (result == 1) in.line = next;
    return result;
}

// Everything up to the first line of equal signs, and the line behind it.
[[nodiscard]] int SkipHeader(History& in) {
    do {
        if (NextLine(in) != 1) return BadLine(in);
    } while (!in.line.View().starts_with("=============="));
    return NextLine(in) == 1 ? 1 : BadLine(in);
}

struct IterationLine {
    std::int32_t step = 0;
    std::int32_t iteration = 0;
    float norm = 0;
};

bool IsIteration(const History& in, IterationLine& found) {
    return ScanText(in.line.View(), "%*s %d %*s %d", &found.step, &found.iteration).fields == 2;
}

bool HasNorm(const History& in, IterationLine& found) {
    const ScanResult scan =
        ScanText(in.line.View(), "%*s %d %*s %d %*s %*s %f", &found.step, &found.iteration, &found.norm);
    return scan.fields == 3;
}

// Opens the file, passes its header, reads the rest and ends the reader's stream on every way out.
template <class Read>
[[nodiscard]] int ReadHistory(Read read) {
    History in;
    if (!in.file.OpenForReading(ConvergenceFileBesideData())) return ShowError(1025);
    const int result = SkipHeader(in) && read(in);
    ReadLine(in.file, clearbuf);
    return result;
}

// ---------------------------------------------------------------------------------------------------------------------
// The steps of the file

struct StepEntry {
    std::int32_t step;
    std::int32_t iterations;
};

using StepEntries = std::vector<StepEntry>;

[[nodiscard]] int ScanSteadyState(History& in, StepEntries& entries) {
    StepEntry whole{0, 0};
    IterationLine found;
    int result = 0;
    while ((result = NextLine(in)) == 1) {
        if (IsIteration(in, found)) ++whole.iterations;
    }
    if (result < 0 || whole.iterations < 2) return BadLine(in);
    return AppendRecord(entries, whole);
}

// A step begins with its iteration 1 and ends where a later step begins. Lines of an earlier step belong to no run.
[[nodiscard]] int ScanTransient(History& in, StepEntries& entries) {
    IterationLine found;
    if (NextLine(in) != 1 || !IsIteration(in, found) || found.iteration != 1) return BadLine(in);
    StepEntry current{found.step, 1};
    int result = 0;
    while ((result = NextLine(in)) == 1) {
        if (!IsIteration(in, found)) continue;
        if (found.step == current.step) ++current.iterations;
        if (found.step <= current.step) continue;
        if (!AppendRecord(entries, current)) return 0;
        current = {found.step, 1};
    }
    return result == 0 ? AppendRecord(entries, current) : BadLine(in);
}

[[nodiscard]] int StoreEntries(const StepEntries& entries) {
    GraphMemory& g = graphMemory;
    const std::size_t wanted = std::max(entries.size(), static_cast<std::size_t>(std::max(model.stepCount, 1)));
    const std::int32_t last = entries.back().iterations;
    {
        const std::scoped_lock lock(hmtxGraphMem);
        const std::size_t points = std::max(g.GraphNorms.size(), static_cast<std::size_t>(last));
        if (TryResizeTable(g.GraphStepList, wanted) && TryResizeTable(g.GraphStepIterations, wanted) &&
            TryResizeTable(g.GraphIterations, points) && TryResizeTable(g.GraphNorms, points)) {
            std::ranges::transform(entries, g.GraphStepList.begin(), &StepEntry::step);
            std::ranges::transform(entries, g.GraphStepIterations.begin(), &StepEntry::iterations);
            g.GraphStepCount = static_cast<std::int32_t>(entries.size());
            g.GraphFirstIteration = 1;
            g.GraphLastIteration = last;
            g.GraphPointCount = last;
            return 1;
        }
        g.GraphStepCount = 0;
        g.GraphPointCount = 0;
    }
    return ShowOutOfMemory();
}

}  // namespace

int ScanConvergenceFile() {
    StepEntries entries;
    const int result = ReadHistory([&](History& in) {
        if (model.analysisType == steadyState) return ScanSteadyState(in, entries);
        return model.analysisType == transient ? ScanTransient(in, entries) : 1;
    });
    return result && (entries.empty() || StoreEntries(entries));
}

// ---------------------------------------------------------------------------------------------------------------------
// The curve of one step

namespace {

// How many iterations the list gives for a step; 0 for one that it does not hold.
std::size_t ListedIterations(std::int32_t step) {
    const std::scoped_lock lock(hmtxGraphMem);
    for (std::size_t i = 0; i < static_cast<std::size_t>(graphMemory.GraphStepCount); ++i) {
        if (graphMemory.GraphStepList[i] == step) return static_cast<std::size_t>(graphMemory.GraphStepIterations[i]);
    }
    return 0;
}

// Stops at the end of the file too: it may have lost lines since it was scanned.
[[nodiscard]] int ReadNorms(History& in, std::int32_t step, std::size_t wanted, std::vector<double>& norms) {
    IterationLine found;
    while (norms.size() < wanted) {
        const int result = NextLine(in);
        if (result == 0) return 1;
        if (result < 0) return BadLine(in);
        if (!HasNorm(in, found) || found.step != step) continue;
        if (!AppendRecord(norms, static_cast<double>(found.norm))) return 0;
    }
    return 1;
}

[[nodiscard]] int StoreCurve(const std::vector<double>& norms) {
    GraphMemory& g = graphMemory;
    const std::size_t length = std::max<std::size_t>(norms.size(), 1);
    {
        const std::scoped_lock lock(hmtxGraphMem);
        if (TryResizeTable(g.GraphIterations, length) && TryResizeTable(g.GraphNorms, length)) {
            g.GraphPointCount = static_cast<std::int32_t>(norms.size());
            for (std::size_t i = 0; i < norms.size(); ++i) g.GraphIterations[i] = static_cast<double>(i + 1);
            std::ranges::copy(norms, g.GraphNorms.begin());
            return 1;
        }
        g.GraphPointCount = 0;
    }
    return ShowOutOfMemory();
}

}  // namespace

int LoadConvergenceStep(std::int32_t step) {
    const std::size_t wanted = ListedIterations(step);
    std::vector<double> norms;
    const bool listed = wanted > 0;
    if (listed && !ReadHistory([&](History& in) { return ReadNorms(in, step, wanted, norms); })) return 0;
    return StoreCurve(norms);
}

}  // namespace kaldra
