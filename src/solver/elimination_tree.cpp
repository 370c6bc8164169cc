#include "solver/elimination_tree.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "model/problem_model.h"
#include "platform/memory.h"
#include "platform/parallel.h"
#include "run/messages.h"
#include "run/run_state.h"
#include "solver/dissection.h"

namespace kaldra {

namespace {

using Indices = std::vector<std::int32_t>;

std::size_t At(std::int64_t index) { return static_cast<std::size_t>(index); }

// What the building needs besides the tree.
struct Plan {
    Dissection dissection;
    Indices position;      // per equation; -1 for one that is not free
    Indices ownerOfGroup;  // per eight positions: the supernode
    Indices entryRow;      // per entry: position of the equation that is eliminated first
};

std::int32_t OwnerOf(const Plan& plan, std::int32_t position) { return plan.ownerOfGroup[At(position / 8)]; }

// ---------------------------------------------------------------------------------------------------------------------
// Supernodes

[[nodiscard]] int PlaceSupernodes(EliminationTree& t, Plan& plan) {
    const Dissection& d = plan.dissection;
    if (!MakeTable(t.nodes, d.parts.size()) || !MakeTable(plan.position, model.EquationCode.size())) return 0;
    std::ranges::fill(plan.position, -1);
    std::int64_t positions = 0;
    for (std::size_t s = 0; s < t.nodes.size(); ++s) {
        Supernode& node = t.nodes[s];
        node.first = static_cast<std::int32_t>(positions);
        node.pivots = d.parts[s].end - d.parts[s].begin;
        node.padded = (node.pivots + 7) / 8 * 8;
        node.depth = d.parts[s].depth;
        positions += node.padded;
        if (positions > std::numeric_limits<std::int32_t>::max()) return ShowOutOfMemory();
    }
    if (!MakeTable(t.equation, At(positions)) || !MakeTable(plan.ownerOfGroup, At(positions) / 8)) return 0;
    std::ranges::fill(t.equation, -1);
    for (std::size_t s = 0; s < t.nodes.size(); ++s) {
        const Supernode& node = t.nodes[s];
        for (std::int32_t i = 0; i < node.pivots; ++i) {
            const std::int32_t equation = d.order[At(d.parts[s].begin + i)];
            plan.position[At(equation)] = node.first + i;
            t.equation[At(node.first + i)] = equation;
        }
        std::fill_n(plan.ownerOfGroup.begin() + node.first / 8, node.padded / 8, static_cast<std::int32_t>(s));
    }
    return 1;
}

// The parent of a supernode is the next one that stands less deep.
[[nodiscard]] int LinkSupernodes(EliminationTree& t) {
    Indices above;
    for (auto s = static_cast<std::int32_t>(t.nodes.size()) - 1; s >= 0; --s) {
        Supernode& node = t.nodes[At(s)];
        while (!above.empty() && t.nodes[At(above.back())].depth >= node.depth) above.pop_back();
        if (!above.empty()) {
            node.parent = above.back();
            Supernode& parent = t.nodes[At(node.parent)];
            node.nextSibling = parent.firstChild;
            parent.firstChild = s;
        }
        if (!AppendRecord(above, s)) return 0;
    }
    return 1;
}

[[nodiscard]] int ListSubtrees(EliminationTree& t, const Dissection& d) {
    std::size_t s = 0;
    for (std::size_t region = 0; region <= d.regionBegin.size(); ++region) {
        const bool isLast = region == d.regionBegin.size();
        for (; s < t.nodes.size() && (isLast || d.parts[s].begin < d.regionBegin[region]); ++s) {
            if (!AppendRecord(t.top, static_cast<std::int32_t>(s))) return 0;
        }
        if (isLast) break;
        Subtree subtree{static_cast<std::int32_t>(s), 0};
        while (s < t.nodes.size() && d.parts[s].begin < d.regionEnd[region]) ++s;
        subtree.end = static_cast<std::int32_t>(s);
        if (!AppendRecord(t.subtrees, subtree)) return 0;
    }
    return 1;
}

// ---------------------------------------------------------------------------------------------------------------------
// What each elimination touches

// Calls use(earlier position, later position, place in SystemMatrix::value) for the entries of all free equations.
template <class Use>
void OverEntries(const Plan& plan, const Use& use) {
    const SystemMatrix& m = model.system;
    for (std::size_t j = 0; j < plan.position.size() && IsRunning(); ++j) {
        const std::int32_t own = plan.position[j];
        if (own < 0) continue;
        for (auto p = m.columnStart[j]; p < m.columnStart[j + 1]; ++p) {
            const std::int32_t other = plan.position[At(m.row[At(p)])];
            if (other >= 0) use(std::min(own, other), std::max(own, other), p);
        }
    }
}

// Lists the entries of every supernode; entryPlace is the later position for now.
[[nodiscard]] int ListEntries(EliminationTree& t, Plan& plan) {
    std::vector<std::int64_t> next;
    if (!MakeTable(next, t.nodes.size() + 1)) return 0;
    OverEntries(plan, [&](std::int32_t a, std::int32_t, std::int64_t) { ++next[At(OwnerOf(plan, a)) + 1]; });
    for (std::size_t s = 0; s < t.nodes.size(); ++s) {
        t.nodes[s].firstEntry = next[s];
        next[s + 1] += next[s];
    }
    const std::size_t total = At(next.back());
    if (!MakeTable(t.entryPlace, total) || !MakeTable(t.entryValue, total) || !MakeTable(plan.entryRow, total))
        return 0;
    OverEntries(plan, [&](std::int32_t a, std::int32_t b, std::int64_t p) {
        const auto at = At(next[At(OwnerOf(plan, a))]++);
        plan.entryRow[at] = a;
        t.entryPlace[at] = b;
        t.entryValue[at] = static_cast<std::int32_t>(p);
    });
    return IsRunning();
}

std::span<const std::int32_t> RowsOf(const Supernode& node, const Indices& row) {
    return std::span(row).subspan(At(node.firstRow), At(node.remainder));
}

std::int64_t EntriesEnd(const EliminationTree& t, std::size_t s) {
    return s + 1 < t.nodes.size() ? t.nodes[s + 1].firstEntry : static_cast<std::int64_t>(t.entryPlace.size());
}

// Appends the remainder of a supernode to `row`; childRow(child) gives that of a child.
template <class ChildRows>
void AppendRemainder(EliminationTree& t, std::size_t s, Indices& row, const ChildRows& childRows) {
    Supernode& node = t.nodes[s];
    const std::int32_t behind = node.first + node.padded;
    const std::size_t begin = row.size();
    const auto add = [&](std::int32_t position) {
        if (position >= behind) row.push_back(position);
    };
    for (std::int64_t e = node.firstEntry; e < EntriesEnd(t, s); ++e) add(t.entryPlace[At(e)]);
    for (std::int32_t child = node.firstChild; child >= 0; child = t.nodes[At(child)].nextSibling) {
        // Found anew for each: `row` may have moved.
        for (std::int32_t i = 0; i < t.nodes[At(child)].remainder; ++i) add(childRows(t.nodes[At(child)])[At(i)]);
    }
    std::sort(row.begin() + static_cast<std::ptrdiff_t>(begin), row.end());
    row.erase(std::unique(row.begin() + static_cast<std::ptrdiff_t>(begin), row.end()), row.end());
    node.firstRow = static_cast<std::int64_t>(begin);
    node.remainder = static_cast<std::int32_t>(row.size() - begin);
}

// Finds the remainders, subtree by subtree and then in the top.
[[nodiscard]] int FindRemainders(EliminationTree& t) {
    std::vector<Indices> rows;
    if (!MakeTable(rows, t.subtrees.size())) return 0;
    std::atomic<bool> fits{true};
    RunTasks(t.subtrees.size(), [&](std::size_t task) {
        Indices& row = rows[task];
        const Subtree& subtree = t.subtrees[task];
        const bool done = TryMemory(0, [&] {
            for (auto s = At(subtree.begin); s < At(subtree.end) && IsRunning(); ++s) {
                AppendRemainder(t, s, row, [&row](const Supernode& child) { return RowsOf(child, row); });
            }
        });
        if (!done) fits = false;
    });
    if (!fits) return ShowOutOfMemory();
    if (!IsRunning()) return 0;
    std::size_t total = 0;
    for (const Indices& row : rows) total += row.size();
    return WithMemory(2 * total * sizeof(std::int32_t), [&] {
        t.row.reserve(total);
        for (std::size_t task = 0; task < rows.size(); ++task) {
            for (auto s = At(t.subtrees[task].begin); s < At(t.subtrees[task].end); ++s) {
                t.nodes[s].firstRow += static_cast<std::int64_t>(t.row.size());
            }
            t.row.insert(t.row.end(), rows[task].begin(), rows[task].end());
        }
        for (const std::int32_t s : t.top) {
            AppendRemainder(t, At(s), t.row, [&t](const Supernode& child) { return RowsOf(child, t.row); });
        }
    });
}

// Column of a position in a front.
std::int64_t ColumnOf(const Supernode& node, const Indices& row, std::int32_t position) {
    if (position < node.first + node.padded) return position - node.first;
    const auto rows = RowsOf(node, row);
    return node.padded + (std::ranges::lower_bound(rows, position) - rows.begin());
}

// Turns the positions of the rows and entries of a supernode into places in fronts.
void PlaceInFronts(EliminationTree& t, const Plan& plan, std::size_t s) {
    const Supernode& node = t.nodes[s];
    for (std::int64_t i = node.firstRow; i < node.firstRow + node.remainder && node.parent >= 0; ++i) {
        t.place[At(i)] = static_cast<std::int32_t>(ColumnOf(t.nodes[At(node.parent)], t.row, t.row[At(i)]));
    }
    for (std::int64_t e = node.firstEntry; e < EntriesEnd(t, s); ++e) {
        const std::int64_t column = ColumnOf(node, t.row, t.entryPlace[At(e)]);
        const std::int64_t row = plan.entryRow[At(e)] - node.first;
        t.entryPlace[At(e)] = static_cast<std::int32_t>(node.FactorOffset(column / 8) + row * 8 + column % 8);
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Where everything stands, and what it takes

// The remainders of a subtree are stacked by even and odd depth: those that a supernode takes are then always on top of
// their stack, and its own goes on the other.
void StackUpdates(EliminationTree& t, const Subtree& subtree) {
    std::array<std::int64_t, 2> used{};
    for (std::int32_t s = subtree.begin; s < subtree.end; ++s) {
        Supernode& node = t.nodes[At(s)];
        const auto own = At(node.depth % 2);
        node.updateIsShared = node.parent >= subtree.end;
        if (!node.updateIsShared) {
            node.update = used[own];
            used[own] += node.UpdateEntries();
            t.workspace[own] = std::max(t.workspace[own], used[own]);
        }
        for (auto child = node.firstChild; child >= 0; child = t.nodes[At(child)].nextSibling) {
            used[1 - own] -= t.nodes[At(child)].UpdateEntries();
        }
    }
}

// Gives the rest of the remainders a place of their own, and every supernode its place in the factor.
void PlaceFactor(EliminationTree& t) {
    for (const Subtree& subtree : t.subtrees) StackUpdates(t, subtree);
    for (const std::int32_t s : t.top) t.nodes[At(s)].updateIsShared = true;
    for (Supernode& node : t.nodes) {
        if (node.updateIsShared) {
            node.update = t.sharedUpdates;
            t.sharedUpdates += node.UpdateEntries();
        }
        node.factor = t.factorEntries;
        t.factorEntries += node.FactorEntries();
        for (std::int32_t i = 0; i < node.padded; ++i) {
            const double width = static_cast<double>(node.padded + node.remainder - i);
            t.operations += width * width;
        }
    }
}

}  // namespace

int BuildEliminationTree() {
    model.tree = EliminationTree();
    EliminationTree& t = model.tree;
    Plan plan;
    if (!DissectEquations(plan.dissection)) return 0;
    if (!PlaceSupernodes(t, plan) || !LinkSupernodes(t) || !ListSubtrees(t, plan.dissection)) return 0;
    if (!ListEntries(t, plan) || !FindRemainders(t)) return 0;
    const auto tooLarge = [](const Supernode& node) {
        return node.FactorEntries() > std::numeric_limits<std::int32_t>::max();
    };
    if (std::ranges::any_of(t.nodes, tooLarge)) return ShowOutOfMemory();
    if (!MakeTable(t.place, t.row.size())) return 0;
    constexpr std::size_t nodesPerTask = 64;
    RunChunks(t.nodes.size(), nodesPerTask, [&](std::size_t first, std::size_t end) {
        for (std::size_t s = first; s < end && IsRunning(); ++s) PlaceInFronts(t, plan, s);
    });
    PlaceFactor(t);
    return IsRunning();
}

}  // namespace kaldra
