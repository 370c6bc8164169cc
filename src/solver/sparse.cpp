#include "solver/sparse.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "model/problem_model.h"
#include "platform/memory.h"
#include "platform/narrow.h"
#include "platform/parallel.h"
#include "run/run_state.h"
#include "solver/dense_kernels.h"
#include "solver/strips.h"

namespace kaldra {

namespace {

std::size_t At(std::int64_t index) { return static_cast<std::size_t>(index); }

// ---------------------------------------------------------------------------------------------------------------------
// Fronts

double* FactorOf(const Supernode& node) { return model.sparse.rows.data() + node.factor; }

double* UpdateOf(const Supernode& node, SubtreeWorkspace& w) {
    return (node.updateIsShared ? model.sparse.sharedUpdates : w.updates[At(node.depth % 2)]).data() + node.update;
}

// A front as it is gathered and eliminated.
struct Front {
    const Supernode& node;
    double* factor;
    double* update;

    // Value (row, column) with row <= column.
    [[nodiscard]] double* Value(std::int64_t row, std::int64_t column) const {
        const std::int64_t group = column / 8;
        if (row < node.padded) return factor + node.FactorOffset(group) + row * 8 + column % 8;
        return update + Supernode::UpdateOffset(group - node.PivotGroups()) + (row - node.padded) * 8 + column % 8;
    }
};

void ClearGroups(const Front& front, std::int64_t first, std::int64_t end) {
    const Supernode& node = front.node;
    std::fill(front.factor + node.FactorOffset(first), front.factor + node.FactorOffset(end), 0.0);
    const std::int64_t pivotGroups = node.PivotGroups();
    if (end <= pivotGroups) return;
    const std::int64_t from = std::max(first - pivotGroups, std::int64_t{0});
    std::fill(front.update + Supernode::UpdateOffset(from), front.update + Supernode::UpdateOffset(end - pivotGroups),
              0.0);
}

// Sets the entries of the matrix, and 1 on the diagonal of the padding.
void SetEntries(const Front& front, std::int64_t entriesEnd) {
    const EliminationTree& t = model.tree;
    const double* const value = model.system.value.data();
    for (std::int64_t e = front.node.firstEntry; e < entriesEnd; ++e) {
        front.factor[t.entryPlace[At(e)]] = value[t.entryValue[At(e)]];
    }
    for (std::int64_t i = front.node.pivots; i < front.node.padded; ++i) *front.Value(i, i) = 1.0;
}

// Lanes of a group of a child that go into one group of the front, side by side.
struct LaneRun {
    unsigned mask;
    double* pivot;      // where lane 0 would go in row 0 of the pivots,
    double* remainder;  // and of the remainder; null where the group has none
};

using LaneRuns = std::array<LaneRun, 8>;

// Finds the runs of one group; `place` tells the columns of the front. Gives their number.
std::size_t FindLaneRuns(const Front& front, const std::int32_t* place, std::int64_t width, LaneRuns& runs) {
    std::size_t count = 0;
    for (std::int64_t lane = 0; lane < width;) {
        const std::int64_t column = place[lane];
        const std::int64_t group = column / 8;
        unsigned mask = 0;
        for (std::int64_t next = column; lane < width && place[lane] == next && next / 8 == group; ++lane, ++next) {
            mask |= 1U << static_cast<unsigned>(lane);
        }
        const std::int64_t shift = column - group * 8 - std::countr_zero(mask);
        const std::int64_t behind = group - front.node.PivotGroups();
        runs[count++] = {mask, front.factor + front.node.FactorOffset(group) + shift,
                         behind < 0 ? nullptr : front.update + Supernode::UpdateOffset(behind) + shift};
    }
    return count;
}

// Adds one group of columns of a child's remainder to the front.
void AddGroup(const Front& front, const Supernode& child, const double* update, std::int64_t group) {
    const DenseKernels& kernels = ChosenDenseKernels();
    const std::int32_t* const place = model.tree.place.data() + child.firstRow;
    const auto width = std::min<std::int64_t>(8, child.remainder - group * 8);
    const double* const values = update + Supernode::UpdateOffset(group);
    LaneRuns runs;
    const std::size_t runCount = FindLaneRuns(front, place + group * 8, width, runs);
    const auto addRows = [&](std::int64_t row, std::int64_t count, unsigned lanes) {
        const std::int64_t target = place[row];
        const bool isPivot = target < front.node.padded;
        const std::int64_t at = (isPivot ? target : target - front.node.padded) * 8;
        for (std::size_t i = 0; i < runCount; ++i) {
            double* const to = (isPivot ? runs[i].pivot : runs[i].remainder) + at;
            if ((runs[i].mask & lanes) != 0) kernels.add(values + row * 8, At(count), runs[i].mask & lanes, to);
        }
    };
    // Rows that stand side by side in the front, too: places rise, so that a run ends where they rise by more than one.
    const std::int64_t full = group * 8;
    for (std::int64_t row = 0; row < full;) {
        const std::int64_t target = place[row];
        const std::int64_t most = target < front.node.padded ? front.node.padded - target : full;
        std::int64_t count = std::min(full - row, most);
        while (place[row + count - 1] - target != count - 1) count = (count + 1) / 2;
        addRows(row, count, 0xffU);
        row += count;
    }
    for (std::int64_t lane = 0; lane < width; ++lane) addRows(full + lane, 1, 0xffU << static_cast<unsigned>(lane));
}

std::int64_t EntriesEnd(std::int64_t s) {
    const EliminationTree& t = model.tree;
    return At(s) + 1 < t.nodes.size() ? t.nodes[At(s) + 1].firstEntry : static_cast<std::int64_t>(t.entryPlace.size());
}

DenseSystem SystemOf(const Front& front, std::vector<ColumnGroup>& groups) {
    const Supernode& node = front.node;
    for (std::int64_t g = 0; g < node.Groups(); ++g) {
        const std::int64_t behind = g - node.PivotGroups();
        groups[At(g)] = {front.factor + node.FactorOffset(g), 0,
                         behind < 0 ? nullptr : front.update + Supernode::UpdateOffset(behind)};
    }
    return {groups.data(), At(node.Groups()), node.padded, model.sparse.reciprocal.data() + node.first, nullptr,
            nullptr};
}

// A factor that no cache holds is written past them: fronts of up to this many values are made in one place again and
// again, and only then brought to theirs. Filling memory that is not in the cache would first read it.
constexpr std::int64_t mostStreamed = 1 << 17;
constexpr std::int64_t cachedFactor = 1 << 22;

bool IsStreamed(const Supernode& node) {
    return model.tree.factorEntries > cachedFactor && node.FactorEntries() <= mostStreamed;
}

// Gathers and eliminates one supernode of a subtree.
void EliminateFront(std::int32_t s, SubtreeWorkspace& w) {
    const EliminationTree& t = model.tree;
    const Supernode& node = t.nodes[At(s)];
    const bool streamed = IsStreamed(node);
    const Front front{node, streamed ? w.pivots.data() : FactorOf(node), UpdateOf(node, w)};
    ClearGroups(front, 0, node.Groups());
    SetEntries(front, EntriesEnd(s));
    for (auto c = node.firstChild; c >= 0; c = t.nodes[At(c)].nextSibling) {
        const Supernode& child = t.nodes[At(c)];
        const double* const update = UpdateOf(child, w);
        for (std::int64_t group = 0; group < child.RemainderGroups(); ++group) AddGroup(front, child, update, group);
    }
    FactorStripsHere(
        SystemOf(front, w.groups), [](std::size_t) {}, w.scratch.data());
    if (streamed) ChosenDenseKernels().stream(front.factor, At(node.FactorEntries()), FactorOf(node));
}

// The same by all threads, strip by strip.
void EliminateTopFront(std::int32_t s) {
    const EliminationTree& t = model.tree;
    SparseFactor& f = model.sparse;
    const Supernode& node = t.nodes[At(s)];
    const Front front{node, FactorOf(node), f.sharedUpdates.data() + node.update};
    constexpr std::size_t groupsPerTask = 4;
    RunChunks(At(node.Groups()), groupsPerTask, [&](std::size_t first, std::size_t end) {
        ClearGroups(front, static_cast<std::int64_t>(first), static_cast<std::int64_t>(end));
    });
    SetEntries(front, EntriesEnd(s));
    for (auto c = node.firstChild; c >= 0; c = t.nodes[At(c)].nextSibling) {
        const Supernode& child = t.nodes[At(c)];
        const double* const update = f.sharedUpdates.data() + child.update;
        RunChunks(At(child.RemainderGroups()), groupsPerTask, [&](std::size_t first, std::size_t end) {
            for (std::size_t group = first; group < end; ++group) {
                AddGroup(front, child, update, static_cast<std::int64_t>(group));
            }
        });
    }
    FactorStrips(
        SystemOf(front, f.workspaces[0].groups), [](std::size_t) {},
        [] { return model.sparse.workspaces[ThreadNumber()].scratch.data(); });
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------------------
// Tables

namespace {

[[nodiscard]] bool TryMakeWorkspaces() {
    const EliminationTree& t = model.tree;
    std::int64_t mostPivots = 0;
    std::int64_t mostGroups = 0;
    for (const Supernode& node : t.nodes) {
        mostPivots = std::max<std::int64_t>(mostPivots, node.padded);
        mostGroups = std::max(mostGroups, node.Groups());
    }
    if (!TryMakeTable(model.sparse.workspaces, At(ThreadCount()))) return false;
    for (SubtreeWorkspace& w : model.sparse.workspaces) {
        if (!TryMakeTable(w.updates[0], At(t.workspace[0])) || !TryMakeTable(w.updates[1], At(t.workspace[1])))
            return false;
        if (!TryMakeTable(w.pivots, At(t.factorEntries > cachedFactor ? mostStreamed : 0))) return false;
        if (!TryMakeTable(w.scratch, At(mostPivots) * groupWidth) || !TryMakeTable(w.groups, At(mostGroups)))
            return false;
    }
    return true;
}

[[nodiscard]] bool TryMakeVectors() {
    const EliminationTree& t = model.tree;
    SparseFactor& f = model.sparse;
    if (!TryMakeTable(f.own, t.equation.size()) || !TryMakeTable(f.firstLeft, t.nodes.size() + 1)) return false;
    for (std::size_t s = 0; s < t.nodes.size(); ++s) {
        f.firstLeft[s + 1] = f.firstLeft[s] + 8 * t.nodes[s].RemainderGroups();
    }
    return TryMakeTable(f.left, At(f.firstLeft.back()));
}

}  // namespace

bool TryMakeSparseFactor() {
    const EliminationTree& t = model.tree;
    SparseFactor& f = model.sparse;
    return TryMakeTable(f.rows, At(t.factorEntries)) && TryMakeTable(f.reciprocal, t.equation.size()) &&
           TryMakeTable(f.sharedUpdates, At(t.sharedUpdates)) && TryMakeWorkspaces() && TryMakeVectors();
}

double BytesOfSparse() {
    const EliminationTree& t = model.tree;
    const std::int64_t perThread = t.workspace[0] + t.workspace[1];
    return 8.0 * static_cast<double>(t.factorEntries + t.sharedUpdates + perThread * ThreadCount());
}

int FactorSparse() {
    const EliminationTree& t = model.tree;
    RunTasks(t.subtrees.size(), [&](std::size_t task) {
        SubtreeWorkspace& w = model.sparse.workspaces[ThreadNumber()];
        const Subtree& subtree = t.subtrees[task];
        for (std::int32_t s = subtree.begin; s < subtree.end && IsRunning(); ++s) EliminateFront(s, w);
    });
    for (const std::int32_t s : t.top) {
        if (!IsRunning()) return 0;
        EliminateTopFront(s);
    }
    return IsRunning();
}

// ---------------------------------------------------------------------------------------------------------------------
// Solution

namespace {

double* LeftOf(std::int32_t s) { return model.sparse.left.data() + model.sparse.firstLeft[At(s)]; }

double* OwnOf(const Supernode& node) { return model.sparse.own.data() + node.first; }

// Adds what a child leaves to the vectors of its parent.
void AddChild(const Supernode& node, std::int32_t c, double* left) {
    const EliminationTree& t = model.tree;
    const Supernode& child = t.nodes[At(c)];
    const double* const from = LeftOf(c);
    double* const own = OwnOf(node);
    for (std::int32_t i = 0; i < child.remainder; ++i) {
        const std::int32_t place = t.place[At(child.firstRow + i)];
        (place < node.padded ? own[place] : left[place - node.padded]) += from[i];
    }
}

void SolveForward(std::int32_t s) {
    const EliminationTree& t = model.tree;
    const Supernode& node = t.nodes[At(s)];
    const DenseKernels& kernels = ChosenDenseKernels();
    double* const own = OwnOf(node);
    double* const left = LeftOf(s);
    std::fill_n(left, 8 * node.RemainderGroups(), 0.0);
    for (auto c = node.firstChild; c >= 0; c = t.nodes[At(c)].nextSibling) AddChild(node, c, left);
    const double* const factor = FactorOf(node);
    for (std::int64_t g = 0; g < node.Groups(); ++g) {
        const double* const rows = factor + node.FactorOffset(g);
        if (g >= node.PivotGroups()) {
            kernels.forward(rows, At(node.padded), own, left + (g - node.PivotGroups()) * 8);
            continue;
        }
        kernels.forward(rows, At(g * 8), own, own + g * 8);
        SolveForwardInSquare(rows + g * 64, own + g * 8);
    }
}

void SolveBackward(std::int32_t s) {
    const EliminationTree& t = model.tree;
    const Supernode& node = t.nodes[At(s)];
    const DenseKernels& kernels = ChosenDenseKernels();
    double* const own = OwnOf(node);
    double* const left = LeftOf(s);
    const double* const reciprocal = model.sparse.reciprocal.data() + node.first;
    for (std::int32_t i = 0; i < node.padded; ++i) own[i] *= reciprocal[i];
    std::fill_n(left, 8 * node.RemainderGroups(), 0.0);
    for (std::int32_t i = 0; i < node.remainder; ++i) left[i] = model.sparse.own[At(t.row[At(node.firstRow + i)])];
    const double* const factor = FactorOf(node);
    const std::int64_t pivotGroups = node.PivotGroups();
    kernels.backward(factor + node.FactorOffset(pivotGroups), At(node.padded), At(node.RemainderGroups()),
                     At(node.padded) * 8, left, own);
    for (std::int64_t g = pivotGroups; g-- > 0;) {
        const double* const rows = factor + node.FactorOffset(g);
        SolveBackwardInSquare(rows + g * 64, own + g * 8);
        kernels.backward(rows, At(g * 8), 1, 0, own + g * 8, own);
    }
}

}  // namespace

int SolveSparse(std::span<float> rhs) {
    const EliminationTree& t = model.tree;
    LargeTable<double>& own = model.sparse.own;
    constexpr std::size_t positionsPerTask = 16384;
    RunChunks(own.size(), positionsPerTask, [&](std::size_t first, std::size_t end) {
        for (std::size_t i = first; i < end; ++i) {
            own[i] = t.equation[i] < 0 ? 0.0 : static_cast<double>(rhs[At(t.equation[i])]);
        }
    });
    RunTasks(t.subtrees.size(), [&](std::size_t task) {
        const Subtree& subtree = t.subtrees[task];
        for (std::int32_t s = subtree.begin; s < subtree.end && IsRunning(); ++s) SolveForward(s);
    });
    for (const std::int32_t s : t.top) {
        if (!IsRunning()) return 0;
        SolveForward(s);
    }
    for (std::size_t i = t.top.size(); i-- > 0;) SolveBackward(t.top[i]);
    RunTasks(t.subtrees.size(), [&](std::size_t task) {
        const Subtree& subtree = t.subtrees[task];
        for (std::int32_t s = subtree.end; s-- > subtree.begin && IsRunning();) SolveBackward(s);
    });
    if (!IsRunning()) return 0;
    RunChunks(own.size(), positionsPerTask, [&](std::size_t first, std::size_t end) {
        for (std::size_t i = first; i < end; ++i) {
            if (t.equation[i] >= 0) rhs[At(t.equation[i])] = Narrow(own[i]);
        }
    });
    return 1;
}

}  // namespace kaldra
