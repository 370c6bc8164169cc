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

// Column after column, every free equation gets its terms in rising order of the prescribed ones.
static void MoveColumn(const SystemMatrix& m, std::span<const std::int32_t> code, std::size_t j, double* w) {
    const bool prescribed = code[j] == equationPrescribed;
    for (auto p = m.columnStart[j]; p + 1 < m.columnStart[j + 1]; ++p) {
        const auto i = static_cast<std::size_t>(m.row[static_cast<std::size_t>(p)]);
        const double coupling = m.value[static_cast<std::size_t>(p)];
        if (code[i] == equationPrescribed) {
            if (!prescribed) w[j] -= coupling * w[i];
        } else if (prescribed && code[i] == equationFree) {
            w[i] -= coupling * w[j];
        }
    }
}

int EliminateFixedDouble(const SystemMatrix& matrix, std::span<float> rhs, std::span<const std::int32_t> code) {
    std::vector<double> w;
    if (!MakeTable(w, rhs.size())) return 0;
    std::ranges::transform(rhs, w.begin(), [](float value) { return static_cast<double>(value); });
    for (std::size_t j = 0; j < rhs.size(); ++j) {
        if (!IsRunning()) return 0;
        if (code[j] != equationInactive) MoveColumn(matrix, code, j, w.data());
    }
    std::ranges::transform(w, rhs.begin(), Narrow);
    return 1;
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
