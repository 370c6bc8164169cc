#include "element/system_matrix.h"

#include <algorithm>
#include <atomic>
#include <span>

#include "model/problem_model.h"
#include "platform/memory.h"
#include "platform/parallel.h"
#include "run/messages.h"
#include "run/run_state.h"

namespace kaldra {

namespace {

std::size_t Nodes() { return static_cast<std::size_t>(model.nodeCount); }

// An element by its batch and lane, as the matrix sees it.
struct ElementPlace {
    const ElementKind* kind;
    const std::int32_t* nodes;  // of its lane, laneCount apart
    std::size_t entries;        // of its lane
    std::size_t loads;

    [[nodiscard]] std::size_t Node(std::size_t slot) const { return static_cast<std::size_t>(nodes[slot * laneCount]); }
    [[nodiscard]] std::int32_t Entry(std::size_t i, std::size_t j) const {
        return static_cast<std::int32_t>(entries + (i * kind->slots + j) * laneCount);
    }
    [[nodiscard]] std::int32_t Load(std::size_t i) const { return static_cast<std::int32_t>(loads + i * laneCount); }
};

ElementPlace PlaceOf(std::size_t place) {
    const ElementBatches& b = model.batches;
    const ElementKind& kind = b.kinds[b.kindOfBatch[place / laneCount]];
    const std::size_t batch = place / laneCount - kind.firstBatch;
    const std::size_t lane = place % laneCount;
    const std::size_t loads = kind.firstLoad + batch * kind.LoadsPerBatch() + lane;
    return {&kind, b.nodes.data() + loads, kind.firstEntry + batch * kind.EntriesPerBatch() + lane, loads};
}

// Lists the elements of every node in rising order, once per slot that holds the node; and with them their loads.
[[nodiscard]] int ListElementsOfNodes(SystemMatrix& s, std::vector<std::int64_t>& places) {
    if (!MakeTable(s.loadStart, Nodes() + 1)) return 0;
    const auto forAll = [](auto use) {
        for (const std::int64_t place : model.batches.placeOfElement) {
            if (place < 0) continue;
            const ElementPlace at = PlaceOf(static_cast<std::size_t>(place));
            for (std::size_t slot = 0; slot < at.kind->slots; ++slot) use(place, at, slot);
        }
    };
    forAll([&](std::int64_t, const ElementPlace& at, std::size_t slot) { ++s.loadStart[at.Node(slot) + 1]; });
    for (std::size_t n = 0; n < Nodes(); ++n) s.loadStart[n + 1] += s.loadStart[n];
    const auto total = static_cast<std::size_t>(s.loadStart[Nodes()]);
    std::vector<std::int64_t> next;
    if (!MakeTable(s.load, total) || !MakeTable(places, total) || !MakeTable(next, Nodes())) return 0;
    std::copy_n(s.loadStart.begin(), Nodes(), next.begin());
    forAll([&](std::int64_t place, const ElementPlace& at, std::size_t slot) {
        const auto position = static_cast<std::size_t>(next[at.Node(slot)]++);
        places[position] = place;
        s.load[position] = at.Load(slot);
    });
    return 1;
}

// One element entry on its way into a column.
struct Term {
    std::int32_t row;
    std::int32_t source;
};

// The terms of a column, sorted by row; those of one row in the order of the elements and of their slots.
struct ColumnTerms {
    std::vector<Term> terms;

    void Collect(const SystemMatrix& s, const std::vector<std::int64_t>& places, std::size_t column) {
        terms.clear();
        std::int64_t last = -1;
        for (auto p = s.loadStart[column]; p < s.loadStart[column + 1]; ++p) {
            const std::int64_t place = places[static_cast<std::size_t>(p)];
            if (place == last) continue;  // an element that names the node twice gives all its terms at once
            last = place;
            AddElement(PlaceOf(static_cast<std::size_t>(place)), column);
        }
        SortByRow();
    }

private:
    // By insertion, which keeps the order within a row: a column has few terms, and they are nearly sorted.
    void SortByRow() {
        constexpr std::size_t few = 64;
        if (terms.size() > few) {
            std::ranges::stable_sort(terms, {}, &Term::row);
            return;
        }
        for (std::size_t i = 1; i < terms.size(); ++i) {
            const Term term = terms[i];
            std::size_t at = i;
            for (; at > 0 && terms[at - 1].row > term.row; --at) terms[at] = terms[at - 1];
            terms[at] = term;
        }
    }
    void AddElement(const ElementPlace& at, std::size_t column) {
        for (std::size_t i = 0; i < at.kind->slots; ++i) {
            if (at.Node(i) > column) continue;
            for (std::size_t j = 0; j < at.kind->slots; ++j) {
                if (at.Node(j) == column) terms.push_back({static_cast<std::int32_t>(at.Node(i)), at.Entry(i, j)});
            }
        }
    }
};

// The pattern of the columns of one task; places count from its own first ones.
struct ColumnRange {
    std::vector<std::int32_t> row;
    std::vector<std::int64_t> sourceStart;
    std::vector<std::int32_t> source;
    std::size_t firstRow = 0;  // in the whole
    std::size_t firstSource = 0;

    // A column of four-node elements has sixteen terms at the most: ten of them in five rows.
    static constexpr std::size_t termsPerRow = 2;
    static constexpr std::size_t bytesPerTerm =
        sizeof(std::int32_t) + (sizeof(std::int32_t) + sizeof(std::int64_t)) / termsPerRow;
    void Reserve(std::size_t terms) {
        source.reserve(terms);
        row.reserve(terms / termsPerRow);
        sourceStart.reserve(terms / termsPerRow);
    }
    // Gives the number of rows so far.
    std::size_t Add(std::size_t j, const ColumnTerms& column) {
        std::int32_t last = -1;
        for (const Term& term : column.terms) {
            if (term.row != last) AddRow(last = term.row);
            source.push_back(term.source);
        }
        const bool active = model.EquationCode[j] != equationInactive;
        const auto diagonal = static_cast<std::int32_t>(j);
        if (active && last != diagonal) AddRow(diagonal);  // elements without points leave an empty one
        return row.size();
    }
    void PutInto(SystemMatrix& s) const {
        std::ranges::copy(row, s.row.begin() + static_cast<std::ptrdiff_t>(firstRow));
        std::ranges::copy(source, s.source.begin() + static_cast<std::ptrdiff_t>(firstSource));
        std::ranges::transform(sourceStart, s.sourceStart.begin() + static_cast<std::ptrdiff_t>(firstRow),
                               [this](std::int64_t start) { return start + static_cast<std::int64_t>(firstSource); });
    }

private:
    void AddRow(std::int32_t number) {
        row.push_back(number);
        sourceStart.push_back(static_cast<std::int64_t>(source.size()));
    }
};

constexpr std::size_t columnsPerTask = 512;

// No column has more terms than the elements of its node have slots.
std::size_t MostTerms(const SystemMatrix& s, const std::vector<std::int64_t>& places, std::size_t first,
                      std::size_t end) {
    std::size_t most = 0;
    for (auto p = s.loadStart[first]; p < s.loadStart[end]; ++p) {
        most += PlaceOf(static_cast<std::size_t>(places[static_cast<std::size_t>(p)])).kind->slots;
    }
    return most;
}

// Columns are built in ranges by all threads; columnStart counts from the first one of a range for now.
[[nodiscard]] int BuildColumns(SystemMatrix& s, const std::vector<std::int64_t>& places,
                               std::vector<ColumnRange>& ranges) {
    std::atomic<bool> fits{true};
    RunChunks(Nodes(), columnsPerTask, [&](std::size_t first, std::size_t end) {
        ColumnRange& range = ranges[first / columnsPerTask];
        const std::size_t most = MostTerms(s, places, first, end);
        const bool done = TryMemory(most * ColumnRange::bytesPerTerm, [&] {
            range.Reserve(most);
            ColumnTerms column;
            for (std::size_t j = first; j < end && IsRunning(); ++j) {
                column.Collect(s, places, j);
                s.columnStart[j + 1] = static_cast<std::int64_t>(range.Add(j, column));
            }
        });
        if (!done) fits = false;
    });
    if (!fits) return ShowOutOfMemory();
    return IsRunning();
}

// Puts the ranges behind each other.
[[nodiscard]] int JoinColumns(SystemMatrix& s, std::vector<ColumnRange>& ranges) {
    std::size_t rows = 0;
    std::size_t sources = 0;
    for (ColumnRange& range : ranges) {
        range.firstRow = rows;
        range.firstSource = sources;
        rows += range.row.size();
        sources += range.source.size();
    }
    if (!MakeTable(s.row, rows) || !MakeTable(s.sourceStart, rows + 1) || !MakeTable(s.source, sources)) return 0;
    s.sourceStart[rows] = static_cast<std::int64_t>(sources);
    RunChunks(Nodes(), columnsPerTask, [&](std::size_t first, std::size_t end) {
        ColumnRange& range = ranges[first / columnsPerTask];
        for (std::size_t j = first; j < end; ++j) s.columnStart[j + 1] += static_cast<std::int64_t>(range.firstRow);
        range.PutInto(s);
        range = ColumnRange();
    });
    return MakeTable(s.value, rows);
}

}  // namespace

int BuildSystemMatrix() {
    model.system = SystemMatrix();
    SystemMatrix& s = model.system;
    std::vector<std::int64_t> places;
    std::vector<ColumnRange> ranges;
    if (!ListElementsOfNodes(s, places) || !MakeTable(s.columnStart, Nodes() + 1)) return 0;
    if (!MakeTable(ranges, (Nodes() + columnsPerTask - 1) / columnsPerTask)) return 0;
    return BuildColumns(s, places, ranges) && JoinColumns(s, ranges);
}

void SumMatrixEntries() {
    SystemMatrix& s = model.system;
    const float* const entries = model.batches.entries.data();
    constexpr std::size_t entriesPerTask = 1024;
    RunChunks(s.value.size(), entriesPerTask, [&](std::size_t first, std::size_t end) {
        for (std::size_t i = first; i < end; ++i) {
            double sum = 0;
            for (auto p = s.sourceStart[i]; p < s.sourceStart[i + 1]; ++p) {
                sum += static_cast<double>(entries[s.source[static_cast<std::size_t>(p)]]);
            }
            s.value[i] = sum;
        }
    });
    ++s.version;
}

void AddElementLoads() {
    const SystemMatrix& s = model.system;
    const float* const loads = model.batches.loads.data();
    constexpr std::size_t nodesPerTask = 256;
    RunChunks(Nodes(), nodesPerTask, [&](std::size_t first, std::size_t end) {
        for (std::size_t n = first; n < end; ++n) {
            if (model.EquationCode[n] != equationFree) continue;
            float sum = model.SolutionVector[n];
            for (auto p = s.loadStart[n]; p < s.loadStart[n + 1]; ++p) {
                sum += loads[s.load[static_cast<std::size_t>(p)]];
            }
            model.SolutionVector[n] = sum;
        }
    });
}

}  // namespace kaldra
