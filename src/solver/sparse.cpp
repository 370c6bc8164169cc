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

std::int64_t EntriesEnd(std::int32_t s) {
    const EliminationTree& t = model.tree;
    return At(s) + 1 < t.nodes.size() ? t.nodes[At(s) + 1].firstEntry : static_cast<std::int64_t>(t.entryPlace.size());
}

// Sets the entries of the matrix in the groups first .. end - 1, and 1 on the diagonal of the padding.
void SetEntries(const Front& front, std::int32_t s, std::int64_t first, std::int64_t end) {
    const EliminationTree& t = model.tree;
    const double* const value = model.system.value.data();
    const std::int64_t from = front.node.FactorOffset(first);
    const std::int64_t to = front.node.FactorOffset(end);
    const std::int64_t entriesEnd = EntriesEnd(s);
    for (std::int64_t e = front.node.firstEntry; e < entriesEnd; ++e) {
        const std::int32_t place = t.entryPlace[At(e)];
        if (place >= from && place < to) front.factor[place] = value[t.entryValue[At(e)]];
    }
    const auto lastPadding = std::min<std::int64_t>(front.node.padded, end * 8);
    for (auto i = std::max<std::int64_t>(front.node.pivots, first * 8); i < lastPadding; ++i) *front.Value(i, i) = 1.0;
}

// Lanes of a group of a child that go into one group of the front, side by side.
struct LaneRun {
    unsigned mask;
    double* pivot;      // where lane 0 would go in row 0 of the pivots,
    double* remainder;  // and of the remainder; null where the group has none
};

using LaneRuns = std::array<LaneRun, 8>;

// Finds the runs among the lanes first .. end - 1 of one group; `place` tells the columns of the front. Gives their
// number.
std::size_t FindLaneRuns(const Front& front, const std::int32_t* place, std::int64_t first, std::int64_t end,
                         LaneRuns& runs) {
    std::size_t count = 0;
    for (std::int64_t lane = first; lane < end;) {
        const std::int64_t column = place[lane];
        const std::int64_t group = column / 8;
        unsigned mask = 0;
        for (std::int64_t next = column; lane < end && place[lane] == next && next / 8 == group; ++lane, ++next) {
            mask |= 1U << static_cast<unsigned>(lane);
        }
        const std::int64_t shift = column - group * 8 - std::countr_zero(mask);
        const std::int64_t behind = group - front.node.PivotGroups();
        runs[count++] = {mask, front.factor + front.node.FactorOffset(group) + shift,
                         behind < 0 ? nullptr : front.update + Supernode::UpdateOffset(behind) + shift};
    }
    return count;
}

// Adds the lanes first .. end - 1 of one group of a child's remainder to the front.
void AddGroup(const Front& front, const Supernode& child, const double* update, std::int64_t group, std::int64_t first,
              std::int64_t end) {
    const DenseKernels& kernels = ChosenDenseKernels();
    const std::int32_t* const place = model.tree.place.data() + child.firstRow;
    const double* const values = update + Supernode::UpdateOffset(group);
    LaneRuns runs;
    const std::size_t runCount = FindLaneRuns(front, place + group * 8, first, end, runs);
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
    for (std::int64_t lane = 0; lane < end; ++lane) addRows(full + lane, 1, 0xffU << static_cast<unsigned>(lane));
}

// Adds what a child leaves to the groups first .. end - 1 of the front.
void AddColumns(const Front& front, const Supernode& child, const double* update, std::int64_t first,
                std::int64_t end) {
    const auto places = std::span(model.tree.place).subspan(At(child.firstRow), At(child.remainder));
    const auto columnAt = [&](std::int64_t place) { return std::ranges::lower_bound(places, place) - places.begin(); };
    const std::int64_t from = columnAt(first * 8);
    const std::int64_t to = columnAt(end * 8);
    for (std::int64_t group = from / 8; group * 8 < to; ++group) {
        AddGroup(front, child, update, group, std::max(from - group * 8, std::int64_t{0}),
                 std::min(to - group * 8, std::int64_t{8}));
    }
}

// Fills in the groups first .. end - 1 of a front: the entries of the matrix, and what the children leave.
template <class UpdateOfChild>
void Gather(const Front& front, std::int32_t s, std::int64_t first, std::int64_t end, const UpdateOfChild& updateOf) {
    const EliminationTree& t = model.tree;
    ClearGroups(front, first, end);
    SetEntries(front, s, first, end);
    for (auto c = front.node.firstChild; c >= 0; c = t.nodes[At(c)].nextSibling) {
        AddColumns(front, t.nodes[At(c)], updateOf(t.nodes[At(c)]), first, end);
    }
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

// Calls gather(first, end) for the groups of a strip.
template <class Gather>
void OverStrip(const DenseSystem& system, std::size_t strip, const Gather& gather) {
    const std::size_t first = strip * groupsPerStrip;
    gather(static_cast<std::int64_t>(first), static_cast<std::int64_t>(first + GroupsInStrip(system, first)));
}

// ---------------------------------------------------------------------------------------------------------------------
// Right-hand sides

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

// Who works on a supernode: the thread that has its subtree, or all.
enum class By { OneThread, AllThreads };

// Runs work(first, end) over pieces of `grain` of `total` items.
template <class Work>
void OverPieces(By by, std::int64_t total, std::size_t grain, const Work& work) {
    if (by == By::AllThreads) return RunChunks(At(total), grain, work);
    for (std::size_t first = 0; first < At(total); first += grain) work(first, std::min(first + grain, At(total)));
}

// Reduces the right-hand side by the pivots of one supernode, whose factor stands at `factor`.
void ReduceByFront(std::int32_t s, const double* factor, By by) {
    const EliminationTree& t = model.tree;
    const Supernode& node = t.nodes[At(s)];
    double* const own = OwnOf(node);
    double* const left = LeftOf(s);
    std::fill_n(left, 8 * node.RemainderGroups(), 0.0);
    for (auto c = node.firstChild; c >= 0; c = t.nodes[At(c)].nextSibling) AddChild(node, c, left);
    const auto findRows = [&](std::size_t first, std::size_t end) {
        std::array<const double*, groupsAtOnce> rows{};
        for (std::size_t g = first; g < end; ++g)
            rows[g - first] = factor + node.FactorOffset(static_cast<std::int64_t>(g));
        return rows;
    };
    const auto pivotGroups = At(node.PivotGroups());
    OverPieces(By::OneThread, node.PivotGroups(), groupsAtOnce, [&](std::size_t first, std::size_t end) {
        SolveForwardInGroups(findRows(first, end).data(), end - first, first * 8, own, own + first * 8);
    });
    OverPieces(by, node.RemainderGroups(), groupsAtOnce, [&](std::size_t first, std::size_t end) {
        ChosenDenseKernels().forward(findRows(pivotGroups + first, pivotGroups + end).data(), end - first,
                                     At(node.padded), own, left + first * 8);
    });
}

// ---------------------------------------------------------------------------------------------------------------------
// Elimination

// A factor that no cache holds is written past them: fronts of up to this many values are made in one place again and
// again, and only then brought to theirs. Filling memory that is not in the cache would first read it.
constexpr std::int64_t mostStreamed = 1 << 17;
constexpr std::int64_t cachedFactor = 1 << 22;

bool IsStreamed(const Supernode& node) {
    return model.tree.factorEntries > cachedFactor && node.FactorEntries() <= mostStreamed;
}

// A front that the cache holds is gathered at once, a larger one strip by strip, just before each is worked on.
constexpr std::int64_t mostGatheredAtOnce = 1 << 17;

// Gathers and eliminates one supernode of a subtree; the right-hand side is reduced while the factor is at hand.
void EliminateFront(std::int32_t s, SubtreeWorkspace& w) {
    const Supernode& node = model.tree.nodes[At(s)];
    const bool streamed = IsStreamed(node);
    const Front front{node, streamed ? w.pivots.data() : FactorOf(node), UpdateOf(node, w)};
    const auto gather = [&](std::int64_t first, std::int64_t end) {
        Gather(front, s, first, end, [&w](const Supernode& child) { return UpdateOf(child, w); });
    };
    const bool atOnce = node.FactorEntries() + node.UpdateEntries() <= mostGatheredAtOnce;
    if (atOnce) gather(0, node.Groups());
    const DenseSystem system = SystemOf(front, w.groups);
    FactorStripsHere(
        system,
        [&](std::size_t strip) {
            if (!atOnce) OverStrip(system, strip, gather);
        },
        w.scratch.data());
    if (streamed) ChosenDenseKernels().stream(front.factor, At(node.FactorEntries()), FactorOf(node));
    ReduceByFront(s, front.factor, By::OneThread);
}

// The same by all threads.
void EliminateTopFront(std::int32_t s) {
    SparseFactor& f = model.sparse;
    const Supernode& node = model.tree.nodes[At(s)];
    const Front front{node, FactorOf(node), f.sharedUpdates.data() + node.update};
    const auto gather = [&](std::int64_t first, std::int64_t end) {
        Gather(front, s, first, end,
               [](const Supernode& child) { return model.sparse.sharedUpdates.data() + child.update; });
    };
    const DenseSystem system = SystemOf(front, f.workspaces[0].groups);
    FactorStrips(
        system, [&](std::size_t strip) { OverStrip(system, strip, gather); },
        [] { return model.sparse.workspaces[ThreadNumber()].scratch.data(); });
    ReduceByFront(s, front.factor, By::AllThreads);
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

namespace {

constexpr std::size_t positionsPerTask = 16384;

void LoadRightHandSide(std::span<const float> rhs) {
    const EliminationTree& t = model.tree;
    LargeTable<double>& own = model.sparse.own;
    RunChunks(own.size(), positionsPerTask, [&](std::size_t first, std::size_t end) {
        for (std::size_t i = first; i < end; ++i) {
            own[i] = t.equation[i] < 0 ? 0.0 : static_cast<double>(rhs[At(t.equation[i])]);
        }
    });
}

// Calls inSubtree(supernode, thread's workspace) and inTop(supernode) for all, children first.
template <class InSubtree, class InTop>
[[nodiscard]] int ChildrenFirst(const InSubtree& inSubtree, const InTop& inTop) {
    const EliminationTree& t = model.tree;
    const auto eliminate = [&](std::size_t task) {
        SubtreeWorkspace& w = model.sparse.workspaces[ThreadNumber()];
        const Subtree& subtree = t.subtrees[task];
        for (std::int32_t s = subtree.begin; s < subtree.end && IsRunning(); ++s) inSubtree(s, w);
    };
    RunTasks(t.subtrees.size(), eliminate, TaskOrder::ByThread);
    for (const std::int32_t s : t.top) {
        if (!IsRunning()) return 0;
        inTop(s);
    }
    return IsRunning();
}

}  // namespace

int FactorSparse(std::span<const float> rhs) {
    LoadRightHandSide(rhs);
    return ChildrenFirst(EliminateFront, EliminateTopFront);
}

int ReduceSparse(std::span<const float> rhs) {
    const auto reduce = [](std::int32_t s, By by) { ReduceByFront(s, FactorOf(model.tree.nodes[At(s)]), by); };
    LoadRightHandSide(rhs);
    return ChildrenFirst([&](std::int32_t s, const SubtreeWorkspace&) { reduce(s, By::OneThread); },
                         [&](std::int32_t s) { reduce(s, By::AllThreads); });
}

// ---------------------------------------------------------------------------------------------------------------------
// Solution

namespace {

void SolveBackward(std::int32_t s, By by) {
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
    constexpr std::size_t squaresAtOnce = 8;
    OverPieces(by, pivotGroups, squaresAtOnce, [&](std::size_t first, std::size_t end) {
        kernels.backward(factor + node.FactorOffset(pivotGroups) + first * 64, (end - first) * 8,
                         At(node.RemainderGroups()), At(node.padded) * 8, left, own + first * 8);
    });
    for (std::int64_t g = pivotGroups; g-- > 0;) {
        const double* const rows = factor + node.FactorOffset(g);
        SolveBackwardInSquare(rows + g * 64, own + g * 8);
        kernels.backward(rows, At(g * 8), 1, 0, own + g * 8, own);
    }
}

}  // namespace

int SolveSparse(std::span<float> rhs) {
    const EliminationTree& t = model.tree;
    const LargeTable<double>& own = model.sparse.own;
    if (!IsRunning()) return 0;
    for (std::size_t i = t.top.size(); i-- > 0;) SolveBackward(t.top[i], By::AllThreads);
    const auto solve = [&](std::size_t task) {
        const Subtree& subtree = t.subtrees[task];
        for (std::int32_t s = subtree.end; s-- > subtree.begin && IsRunning();) SolveBackward(s, By::OneThread);
    };
    RunTasks(t.subtrees.size(), solve, TaskOrder::ByThread);
    if (!IsRunning()) return 0;
    RunChunks(own.size(), positionsPerTask, [&](std::size_t first, std::size_t end) {
        for (std::size_t i = first; i < end; ++i) {
            if (t.equation[i] >= 0) rhs[At(t.equation[i])] = Narrow(own[i]);
        }
    });
    return 1;
}

}  // namespace kaldra
