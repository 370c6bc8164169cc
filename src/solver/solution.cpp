#include "solver/solution.h"

#include <algorithm>
#include <cstring>

#include "model/problem_model.h"
#include "platform/memory.h"
#include "run/messages.h"
#include "run/run_state.h"
#include "solver/elimination.h"
#include "solver/elimination_tree.h"
#include "solver/skyline.h"
#include "solver/sparse.h"

namespace kaldra {

namespace {

Solver wishedSolver = Solver::Automatic;
Solver usedSolver = Solver::Automatic;

// Below this many operations a factorisation by skyline takes a millisecond or two: no reason to look further.
constexpr double smallFactorisation = 1e8;
constexpr double smallMemory = 256e6;
constexpr double clearFactor = 1.5;

// What the two take, in the operations of a skyline factorisation. The short columns of fronts and their gathering make
// the sparse one slower for the same number.
bool SparseIsClearlyBetter() {
    constexpr double slowness = 3;
    constexpr double gathering = 16;  // per entry of the factor
    const SkylineCost skyline = CostOfSkyline();
    const EliminationTree& tree = model.tree;
    const double sparse = slowness * tree.operations + gathering * static_cast<double>(tree.factorEntries);
    if (skyline.operations > clearFactor * sparse) return true;
    return 8 * skyline.entries > std::max(clearFactor * BytesOfSparse(), smallMemory);
}

[[nodiscard]] bool TryTables(Solver solver) {
    usedSolver = solver;
    return solver == Solver::Sparse ? TryMakeSparseFactor() : TryMakeSkylineStore();
}

}  // namespace

void WishSolver(Solver solver) { wishedSolver = solver; }

Solver UsedSolver() { return usedSolver; }

int PrepareSolution() {
    model.lastSolution = LastSolution();
    model.tree = EliminationTree();
    model.sparse = SparseFactor();
    if (!BuildSkylineProfile()) return 0;
    const bool automatic = wishedSolver == Solver::Automatic;
    if (wishedSolver == Solver::Skyline || (automatic && CostOfSkyline().operations < smallFactorisation)) {
        return TryTables(Solver::Skyline) ? IsRunning() : ShowOutOfMemory();
    }
    if (!BuildEliminationTree()) return 0;
    const bool sparse = !automatic || SparseIsClearlyBetter();
    if (TryTables(sparse ? Solver::Sparse : Solver::Skyline)) return IsRunning();
    if (automatic && TryTables(sparse ? Solver::Skyline : Solver::Sparse)) return IsRunning();
    return ShowOutOfMemory();
}

template <class Record>
static bool SameBytes(const std::vector<Record>& a, const std::vector<Record>& b) {
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(Record)) == 0);
}

// Factorises the matrix, unless it is the last one with the same codes; a sparse solver reduces the right-hand side,
// too.
[[nodiscard]] static int Factor(bool& isNew) {
    LastSolution& last = model.lastSolution;
    isNew = last.version != model.system.version || !SameBytes(last.code, model.EquationCode);
    if (!isNew) return 1;
    last.version = 0;
    if (!CheckPivots(model.system, model.EquationCode)) return 0;
    if (usedSolver == Solver::Sparse ? !FactorSparse(model.SolutionVector) : !FactorSkyline()) return 0;
    if (!ResizeTable(last.code, model.EquationCode.size())) return 0;
    last.code = model.EquationCode;
    last.version = model.system.version;
    return 1;
}

int SolveSystem() {
    if (model.SolutionVector.empty()) return 1;
    LastSolution& last = model.lastSolution;
    bool isNew = false;
    if (!IsRunning() || !Factor(isNew)) return 0;
    if (!isNew && SameBytes(last.rightHandSide, model.SolutionVector)) {
        model.SolutionVector = last.solution;
        return 1;
    }
    const std::size_t n = model.SolutionVector.size();
    if (last.solution.size() != n && (!MakeTable(last.rightHandSide, n) || !MakeTable(last.solution, n))) return 0;
    last.rightHandSide = model.SolutionVector;
    if (usedSolver == Solver::Skyline) {
        if (!SolveSkylineDouble(model.SolutionVector)) return 0;
    } else {
        if (!isNew && !ReduceSparse(model.SolutionVector)) return 0;
        if (!SolveSparse(model.SolutionVector)) return 0;
    }
    last.solution = model.SolutionVector;
    return 1;
}

}  // namespace kaldra
