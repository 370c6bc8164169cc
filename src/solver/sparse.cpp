#include "solver/sparse.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "model/problem_model.h"
#include "platform/memory.h"
#include "platform/narrow.h"
#include "platform/parallel.h"
#include "run/messages.h"
#include "run/run_state.h"
#include "solver/dense_kernels.h"

namespace kaldra {

namespace {

std::size_t At(std::int64_t index) { return static_cast<std::size_t>(index); }

// What one thread needs to work on a subtree.
struct Arena {
    std::array<LargeTable<double>, 2> updates;  // by even and odd depth
    LargeTable<double> scratch;                 // of a strip
    std::vector<ColumnGroup> groups;
};

// Everything besides the factor that a factorisation holds.
struct Workspace {
    std::vector<Arena> arenas;
    std::vector<std::atomic_flag> taken;  // per arena
    LargeTable<double> sharedUpdates;
    std::int64_t mostPivots = 0;
    std::int64_t mostGroups = 0;
};

// An arena for the life of a task.
class ArenaLease {
public:
    explicit ArenaLease(Workspace& w) : workspace_(w) {
        while (w.taken[number_].test_and_set(std::memory_order_acquire)) number_ = (number_ + 1) % w.arenas.size();
    }
    ~ArenaLease() { workspace_.taken[number_].clear(std::memory_order_release); }
    ArenaLease(const ArenaLease&) = delete;
    ArenaLease& operator=(const ArenaLease&) = delete;
    [[nodiscard]] Arena& Get() const { return workspace_.arenas[number_]; }

private:
    Workspace& workspace_;
    std::size_t number_ = 0;
};

std::size_t ArenaCount() { return static_cast<std::size_t>(ThreadCount()); }

void FindLargest(Workspace& w) {
    for (const Supernode& node : model.tree.nodes) {
        w.mostPivots = std::max<std::int64_t>(w.mostPivots, node.padded);
        w.mostGroups = std::max(w.mostGroups, node.Groups());
    }
}

[[nodiscard]] int MakeWorkspace(Workspace& w) {
    const EliminationTree& t = model.tree;
    FindLargest(w);
    if (!MakeTable(w.arenas, ArenaCount()) || !MakeTable(w.sharedUpdates, At(t.sharedUpdates))) return 0;
    for (Arena& arena : w.arenas) {
        for (std::size_t parity = 0; parity < 2; ++parity) {
            if (!MakeTable(arena.updates[parity], At(t.workspace[parity]))) return 0;
        }
        if (!MakeTable(arena.scratch, At(w.mostPivots) * groupWidth)) return 0;
        if (!MakeTable(arena.groups, At(w.mostGroups))) return 0;
    }
    return WithMemory(ArenaCount(), [&] { std::vector<std::atomic_flag>(ArenaCount()).swap(w.taken); });
}

// ---------------------------------------------------------------------------------------------------------------------
// Fronts

double* FactorOf(const Supernode& node) { return model.sparse.rows.data() + node.factor; }

double* UpdateOf(const Supernode& node, Workspace& w, Arena& arena) {
    double* const base = node.updateIsShared ? w.sharedUpdates.data() : arena.updates[At(node.depth % 2)].data();
    return base + node.update;
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

// Adds one group of columns of a child's remainder to the front. `place` tells the columns of the front.
void AddGroup(const Front& front, const Supernode& child, const double* update, std::int64_t group) {
    const std::int32_t* const place = model.tree.place.data() + child.firstRow;
    const auto width = std::min<std::int64_t>(8, child.remainder - group * 8);
    const double* const values = update + Supernode::UpdateOffset(group);
    // Where row 0 of each column stands, among the pivots and in the remainder.
    std::array<double*, 8> pivot{};
    std::array<double*, 8> remainder{};
    for (std::int64_t lane = 0; lane < width; ++lane) {
        const std::int64_t column = place[group * 8 + lane];
        pivot[At(lane)] = front.factor + front.node.FactorOffset(column / 8) + column % 8;
        const std::int64_t behind = column / 8 - front.node.PivotGroups();
        if (behind >= 0) remainder[At(lane)] = front.update + Supernode::UpdateOffset(behind) + column % 8;
    }
    const std::int64_t padded = front.node.padded;
    const auto add = [&](std::int64_t row, std::int64_t firstLane) {
        const double* const from = values + row * 8;
        const std::int64_t target = place[row];
        const bool isPivot = target < padded;
        const std::array<double*, 8>& to = isPivot ? pivot : remainder;
        const std::int64_t at = (isPivot ? target : target - padded) * 8;
        for (std::int64_t lane = firstLane; lane < width; ++lane) to[At(lane)][at] += from[lane];
    };
    for (std::int64_t row = 0; row < group * 8; ++row) add(row, 0);
    for (std::int64_t lane = 0; lane < width; ++lane) add(group * 8 + lane, lane);
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

std::size_t GroupsInStrip(const DenseSystem& system, std::size_t group) {
    return std::min(groupsPerStrip, system.groupCount - group);
}

// Gathers and eliminates one supernode of a subtree.
void EliminateFront(std::int32_t s, Workspace& w, Arena& arena) {
    const EliminationTree& t = model.tree;
    const Supernode& node = t.nodes[At(s)];
    const Front front{node, FactorOf(node), UpdateOf(node, w, arena)};
    ClearGroups(front, 0, node.Groups());
    SetEntries(front, EntriesEnd(s));
    for (auto c = node.firstChild; c >= 0; c = t.nodes[At(c)].nextSibling) {
        const Supernode& child = t.nodes[At(c)];
        const double* const update = UpdateOf(child, w, arena);
        for (std::int64_t group = 0; group < child.RemainderGroups(); ++group) AddGroup(front, child, update, group);
    }
    const DenseSystem system = SystemOf(front, arena.groups);
    const DenseKernels& kernels = ChosenDenseKernels();
    for (std::size_t group = 0; group < system.groupCount; group += groupsPerStrip) {
        kernels.factorStrip(system, group, GroupsInStrip(system, group), arena.scratch.data());
    }
}

void AwaitGroup(const std::uint32_t* ready, std::uint32_t wanted) {
    for (Patience patience; __atomic_load_n(ready, __ATOMIC_ACQUIRE) < wanted;) patience.Wait();
}

// The same by all threads, strip by strip.
void EliminateTopFront(std::int32_t s, Workspace& w) {
    const EliminationTree& t = model.tree;
    const Supernode& node = t.nodes[At(s)];
    const Front front{node, FactorOf(node), w.sharedUpdates.data() + node.update};
    constexpr std::size_t groupsPerTask = 4;
    RunChunks(At(node.Groups()), groupsPerTask, [&](std::size_t first, std::size_t end) {
        ClearGroups(front, static_cast<std::int64_t>(first), static_cast<std::int64_t>(end));
    });
    SetEntries(front, EntriesEnd(s));
    for (auto c = node.firstChild; c >= 0; c = t.nodes[At(c)].nextSibling) {
        const Supernode& child = t.nodes[At(c)];
        const double* const update = w.sharedUpdates.data() + child.update;
        RunChunks(At(child.RemainderGroups()), groupsPerTask, [&](std::size_t first, std::size_t end) {
            for (std::size_t group = first; group < end; ++group) {
                AddGroup(front, child, update, static_cast<std::int64_t>(group));
            }
        });
    }
    std::uint32_t ready = 0;
    DenseSystem system = SystemOf(front, w.arenas[0].groups);
    system.ready = &ready;
    system.wait = AwaitGroup;
    const DenseKernels& kernels = ChosenDenseKernels();
    // After a Stop the strips that are left are only counted as ready, so that nobody waits for them.
    RunTasks((system.groupCount + groupsPerStrip - 1) / groupsPerStrip, [&](std::size_t strip) {
        const std::size_t group = strip * groupsPerStrip;
        const std::size_t count = GroupsInStrip(system, group);
        if (IsRunning()) {
            const ArenaLease arena(w);
            kernels.factorStrip(system, group, count, arena.Get().scratch.data());
        } else {
            AwaitGroup(&ready, static_cast<std::uint32_t>(group));
            __atomic_store_n(&ready, static_cast<std::uint32_t>(group + count), __ATOMIC_RELEASE);
        }
    });
}

}  // namespace

bool TryMakeSparseFactor() {
    SparseFactor& f = model.sparse;
    const EliminationTree& t = model.tree;
    return TryMakeTable(f.rows, At(t.factorEntries)) && TryMakeTable(f.reciprocal, t.equation.size());
}

double BytesOfSparse() {
    const EliminationTree& t = model.tree;
    const std::int64_t perThread = t.workspace[0] + t.workspace[1];
    return 8.0 * static_cast<double>(t.factorEntries + t.sharedUpdates + perThread * ThreadCount());
}

int FactorSparse() {
    const EliminationTree& t = model.tree;
    Workspace w;
    if (!MakeWorkspace(w)) return 0;
    RunTasks(t.subtrees.size(), [&](std::size_t task) {
        const ArenaLease arena(w);
        const Subtree& subtree = t.subtrees[task];
        for (std::int32_t s = subtree.begin; s < subtree.end && IsRunning(); ++s) EliminateFront(s, w, arena.Get());
    });
    for (const std::int32_t s : t.top) {
        if (!IsRunning()) return 0;
        EliminateTopFront(s, w);
    }
    return IsRunning();
}

// ---------------------------------------------------------------------------------------------------------------------
// Solution

namespace {

// The vectors of a solution. In `own` stand the values of the pivots by position; in `left` what the supernodes leave
// to their parents, per row of a remainder, each remainder beginning at a multiple of eight.
struct Vectors {
    LargeTable<double> own;
    LargeTable<double> left;
    std::vector<std::int64_t> firstLeft;  // per supernode
};

[[nodiscard]] int MakeVectors(Vectors& v) {
    const EliminationTree& t = model.tree;
    if (!MakeTable(v.own, t.equation.size()) || !MakeTable(v.firstLeft, t.nodes.size() + 1)) return 0;
    for (std::size_t s = 0; s < t.nodes.size(); ++s) {
        v.firstLeft[s + 1] = v.firstLeft[s] + 8 * t.nodes[s].RemainderGroups();
    }
    return MakeTable(v.left, At(v.firstLeft.back()));
}

double* LeftOf(Vectors& v, std::int32_t s) { return v.left.data() + v.firstLeft[At(s)]; }

// Adds what a child leaves to the vectors of its parent.
void AddChild(Vectors& v, const Supernode& node, std::int32_t c, double* left) {
    const EliminationTree& t = model.tree;
    const Supernode& child = t.nodes[At(c)];
    const double* const from = LeftOf(v, c);
    double* const own = v.own.data() + node.first;
    for (std::int32_t i = 0; i < child.remainder; ++i) {
        const std::int32_t place = t.place[At(child.firstRow + i)];
        (place < node.padded ? own[place] : left[place - node.padded]) += from[i];
    }
}

void SolveForward(Vectors& v, std::int32_t s) {
    const EliminationTree& t = model.tree;
    const Supernode& node = t.nodes[At(s)];
    const DenseKernels& kernels = ChosenDenseKernels();
    double* const own = v.own.data() + node.first;
    double* const left = LeftOf(v, s);
    std::fill_n(left, 8 * node.RemainderGroups(), 0.0);
    for (auto c = node.firstChild; c >= 0; c = t.nodes[At(c)].nextSibling) AddChild(v, node, c, left);
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

void SolveBackward(Vectors& v, std::int32_t s) {
    const EliminationTree& t = model.tree;
    const Supernode& node = t.nodes[At(s)];
    const DenseKernels& kernels = ChosenDenseKernels();
    double* const own = v.own.data() + node.first;
    double* const left = LeftOf(v, s);
    const double* const reciprocal = model.sparse.reciprocal.data() + node.first;
    for (std::int32_t i = 0; i < node.padded; ++i) own[i] *= reciprocal[i];
    std::fill_n(left, 8 * node.RemainderGroups(), 0.0);
    for (std::int32_t i = 0; i < node.remainder; ++i) left[i] = v.own[At(t.row[At(node.firstRow + i)])];
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
    Vectors v;
    if (!MakeVectors(v)) return 0;
    for (std::size_t i = 0; i < t.equation.size(); ++i) {
        v.own[i] = t.equation[i] < 0 ? 0.0 : static_cast<double>(rhs[At(t.equation[i])]);
    }
    RunTasks(t.subtrees.size(), [&](std::size_t task) {
        const Subtree& subtree = t.subtrees[task];
        for (std::int32_t s = subtree.begin; s < subtree.end && IsRunning(); ++s) SolveForward(v, s);
    });
    for (const std::int32_t s : t.top) {
        if (!IsRunning()) return 0;
        SolveForward(v, s);
    }
    for (std::size_t i = t.top.size(); i-- > 0;) SolveBackward(v, t.top[i]);
    RunTasks(t.subtrees.size(), [&](std::size_t task) {
        const Subtree& subtree = t.subtrees[task];
        for (std::int32_t s = subtree.end; s-- > subtree.begin && IsRunning();) SolveBackward(v, s);
    });
    if (!IsRunning()) return 0;
    for (std::size_t i = 0; i < t.equation.size(); ++i) {
        if (t.equation[i] >= 0) rhs[At(t.equation[i])] = Narrow(v.own[i]);
    }
    return 1;
}

}  // namespace kaldra
