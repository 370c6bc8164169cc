#include "solver/elimination.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "model/problem_model.h"
#include "platform/memory.h"
#include "platform/narrow.h"
#include "run/messages.h"
#include "run/run_state.h"

namespace kaldra {

// Lists the couplings column after column, so that every free equation gets its terms in rising order of the prescribed
// ones.
[[nodiscard]] static int ListCouplings(SystemMatrix& m, std::span<const std::int32_t> code) {
    m.couplings.clear();
    m.couplingCode.clear();
    for (std::size_t j = 0; j < code.size(); ++j) {
        if (!IsRunning()) return 0;
        if (code[j] == equationInactive) continue;
        for (auto p = m.columnStart[j]; p + 1 < m.columnStart[j + 1]; ++p) {
            const std::int32_t i = m.row[static_cast<std::size_t>(p)];
            const auto column = static_cast<std::int32_t>(j);
            const bool downwards = code[j] == equationFree && code[static_cast<std::size_t>(i)] == equationPrescribed;
            const bool upwards = code[j] == equationPrescribed && code[static_cast<std::size_t>(i)] == equationFree;
            if (downwards && !AppendRecord(m.couplings, {column, i, p})) return 0;
            if (upwards && !AppendRecord(m.couplings, {i, column, p})) return 0;
        }
    }
    return WithMemory(code.size() * sizeof(std::int32_t), [&] { m.couplingCode.assign(code.begin(), code.end()); });
}

int EliminateFixedDouble(SystemMatrix& matrix, std::span<float> rhs, std::span<const std::int32_t> code) {
    if (!std::ranges::equal(matrix.couplingCode, code) && !ListCouplings(matrix, code)) return 0;
    // Summed in f64 by the equations that have such terms; the first term of each finds its f32 value.
    std::vector<double> w;
    if (!MakeTable(w, matrix.couplings.empty() ? 0 : rhs.size())) return 0;
    const auto at = [](std::int32_t equation) { return static_cast<std::size_t>(equation); };
    for (const auto& c : matrix.couplings) w[at(c.free)] = static_cast<double>(rhs[at(c.free)]);
    for (const auto& c : matrix.couplings) {
        const double coupling = matrix.value[static_cast<std::size_t>(c.value)];
        w[at(c.free)] -= coupling * static_cast<double>(rhs[at(c.prescribed)]);
    }
    for (const auto& c : matrix.couplings) rhs[at(c.free)] = Narrow(w[at(c.free)]);
    return IsRunning();
}

int CheckPivots(const SystemMatrix& matrix, std::span<const std::int32_t> code) {
    constexpr double smallestPivot = 1e-20;
    for (std::size_t j = 0; j < code.size(); ++j) {
        if (!IsRunning()) return 0;
        if (code[j] != equationFree) continue;  // a prescribed equation has the diagonal 1
        const double diagonal = std::abs(matrix.value[static_cast<std::size_t>(matrix.columnStart[j + 1] - 1)]);
        if (j == 0 && diagonal < smallestPivot) return ShowError(1170);
        if (j > 0 && diagonal <= smallestPivot) return ShowError(1171);
    }
    return 1;
}

}  // namespace kaldra
