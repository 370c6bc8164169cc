#include "solver/solution.h"

#include <cstring>

#include "model/problem_model.h"
#include "platform/memory.h"
#include "run/run_state.h"
#include "solver/elimination.h"
#include "solver/skyline.h"

namespace kaldra {

int PrepareSolution() {
    model.lastSolution = LastSolution();
    return BuildSkylineProfile() && MakeSkylineStore() && IsRunning();
}

template <class Record>
static bool SameBytes(const std::vector<Record>& a, const std::vector<Record>& b) {
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(Record)) == 0);
}

// Factorises the matrix, unless it is the last one with the same codes.
[[nodiscard]] static int Factor(bool& isNew) {
    LastSolution& last = model.lastSolution;
    isNew = last.version != model.system.version || !SameBytes(last.code, model.EquationCode);
    if (!isNew) return 1;
    last.version = 0;
    if (!CheckPivots(model.system, model.EquationCode) || !FactorSkyline()) return 0;
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
    if (!SolveSkylineDouble(model.SolutionVector)) return 0;
    last.solution = model.SolutionVector;
    return 1;
}

}  // namespace kaldra
