#include "solver/skyline.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "model/problem_model.h"
#include "platform/memory.h"
#include "platform/narrow.h"
#include "run/messages.h"
#include "run/run_state.h"

namespace kaldra {

// Indices are signed: positions run from ptr - j + i, which may pass below 0 before it is compared.
using Index = std::ptrdiff_t;

// ---------------------------------------------------------------------------------------------------------------------
// Profile

// Raises the height of every column of the element's nodes to reach the lowest of them.
static void RaiseHeights(const ElementRec& element, std::vector<std::int32_t>& heights) {
    std::int32_t lowest = std::numeric_limits<std::int32_t>::max();
    for (const std::int32_t node : element.nodes) {
        if (node > 0) lowest = std::min(lowest, node);
    }
    for (const std::int32_t node : element.nodes) {
        if (node > 0) heights[IndexOf(node)] = std::max(heights[IndexOf(node)], node - lowest + 1);
    }
}

int BuildSkylineProfile() {
    std::vector<std::int32_t>& ptr = model.SkylineColumnPtr;
    std::ranges::fill(ptr, 0);
    for (std::int32_t number = 1; number <= model.elementCount; ++number) {
        RaiseHeights(model.elements[IndexOf(number)], ptr);
    }
    // A node in no element has height 0 and takes the position of the column before it; -1 where there is none.
    std::int64_t position = -1;
    for (std::int32_t& entry : ptr) {
        position += entry;
        if (position >= std::numeric_limits<std::int32_t>::max()) return ShowError(1138);
        entry = static_cast<std::int32_t>(position);
    }
    return 1;
}

std::size_t SkylineLength() {
    return model.SkylineColumnPtr.empty() ? 0 : static_cast<std::size_t>(model.SkylineColumnPtr.back() + 1);
}

// ---------------------------------------------------------------------------------------------------------------------
// Elimination and solution

namespace {

// The system of one call, with the right-hand side in f64.
struct System {
    double* store;
    const std::int32_t* code;
    const std::int32_t* ptr;
    Index n;
    std::vector<double> right;  // owns w
    double* w;

    [[nodiscard]] bool Inactive(Index i) const { return code[i] == equationInactive; }
    [[nodiscard]] Index FirstRow(Index j) const { return j == 0 ? 0 : ptr[j - 1] - ptr[j] + j + 1; }
    [[nodiscard]] double& Entry(Index i, Index j) const { return store[ptr[j] - j + i]; }
};

[[nodiscard]] int MakeSystem(System& s, std::span<double> store, std::span<const float> rhs,
                             std::span<const std::int32_t> code, std::span<const std::int32_t> ptr) {
    s.store = store.data();
    s.code = code.data();
    s.ptr = ptr.data();
    s.n = static_cast<Index>(ptr.size());
    if (!MakeTable(s.right, ptr.size())) return 0;
    std::ranges::transform(rhs, s.right.begin(), [](float value) { return static_cast<double>(value); });
    s.w = s.right.data();
    return 1;
}

void StoreResult(const System& s, std::span<float> rhs) { std::ranges::transform(s.right, rhs.begin(), Narrow); }

// Takes the prescribed value w(from) times the coupling to the right-hand side of a free equation, and cuts the
// coupling.
void MoveAcross(System& s, double& coupling, Index from, Index to) {
    if (s.code[to] != equationPrescribed) s.w[to] -= coupling * s.w[from];
    coupling = 0;
}

// Cuts the couplings of column j that touch a prescribed equation. Column after column, every free equation gets its
// terms in rising order of the prescribed ones.
void CutColumn(System& s, Index j) {
    const bool prescribed = s.code[j] == equationPrescribed;
    for (Index i = s.FirstRow(j); i < j; ++i) {
        if (s.code[i] == equationPrescribed) {
            MoveAcross(s, s.Entry(i, j), i, j);
        } else if (prescribed && !s.Inactive(i)) {
            MoveAcross(s, s.Entry(i, j), j, i);
        }
    }
    if (prescribed) s.Entry(j, j) = 1.0;
}

// Sum of a[k] b[k] in four interleaved partial sums, which the compiler keeps in vector registers.
double InnerProduct(const double* a, const double* b, Index count) {
    double s0 = 0;
    double s1 = 0;
    double s2 = 0;
    double s3 = 0;
    Index k = 0;
    for (; k + 4 <= count; k += 4) {
        s0 += a[k] * b[k];
        s1 += a[k + 1] * b[k + 1];
        s2 += a[k + 2] * b[k + 2];
        s3 += a[k + 3] * b[k + 3];
    }
    double sum = (s0 + s2) + (s1 + s3);
    for (; k < count; ++k) sum += a[k] * b[k];
    return sum;
}

// Reduces column j by the columns before it.
void ReduceColumn(System& s, Index j) {
    const Index first = s.FirstRow(j);
    for (Index i = first + 1; i < j; ++i) {
        if (s.Inactive(i)) continue;
        const Index low = std::max(s.FirstRow(i), first);
        s.Entry(i, j) -= InnerProduct(&s.Entry(low, i), &s.Entry(low, j), i - low);
    }
}

// Divides column j by the pivots above it, and reduces its diagonal and its right-hand side.
void DivideColumn(System& s, Index j) {
    for (Index i = s.FirstRow(j); i < j; ++i) {
        if (s.Inactive(i)) continue;
        const double pivot = s.Entry(i, i);
        const double factor = s.Entry(i, j) / pivot;
        s.Entry(i, j) = factor;
        s.Entry(j, j) -= factor * factor * pivot;
        s.w[j] -= factor * s.w[i];
    }
}

constexpr double smallestPivot = 1e-20;

[[nodiscard]] int Factorise(System& s) {
    if (!s.Inactive(0) && std::abs(s.store[0]) < smallestPivot) return ShowError(1170);
    for (Index j = 1; j < s.n; ++j) {
        if (!IsRunning()) return 0;
        if (s.Inactive(j)) continue;
        if (std::abs(s.Entry(j, j)) <= smallestPivot) return ShowError(1171);
        ReduceColumn(s, j);
        DivideColumn(s, j);
    }
    return IsRunning();
}

[[nodiscard]] int BackSubstitute(System& s) {
    for (Index i = 0; i < s.n; ++i) {
        if (!s.Inactive(i)) s.w[i] /= s.Entry(i, i);
    }
    for (Index j = s.n - 1; j >= 1; --j) {
        if (!IsRunning()) return 0;
        if (s.Inactive(j)) continue;
        for (Index i = s.FirstRow(j); i < j; ++i) {
            if (!s.Inactive(i)) s.w[i] -= s.Entry(i, j) * s.w[j];
        }
    }
    return 1;
}

}  // namespace

int EliminateFixedDouble(std::span<double> store, std::span<float> rhs, std::span<const std::int32_t> code,
                         std::span<const std::int32_t> ptr) {
    System s;
    if (!MakeSystem(s, store, rhs, code, ptr)) return 0;
    for (Index j = 0; j < s.n; ++j) {
        if (!IsRunning()) return 0;
        if (!s.Inactive(j)) CutColumn(s, j);
    }
    StoreResult(s, rhs);
    return 1;
}

int SolveSkylineDouble(std::span<double> store, std::span<float> rhs, std::span<const std::int32_t> code,
                       std::span<const std::int32_t> ptr) {
    System s;
    if (!MakeSystem(s, store, rhs, code, ptr)) return 0;
    if (s.n == 0) return 1;
    if (!Factorise(s) || !BackSubstitute(s)) return 0;
    StoreResult(s, rhs);
    return 1;
}

}  // namespace kaldra
