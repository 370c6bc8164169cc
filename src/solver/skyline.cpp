#include "solver/skyline.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <vector>

#include "model/problem_model.h"
#include "platform/memory.h"
#include "platform/narrow.h"
#include "platform/parallel.h"
#include "run/messages.h"
#include "run/run_state.h"
#include "solver/dense_kernels.h"
#include "solver/strips.h"

namespace kaldra {

namespace {

std::size_t Equations() { return model.EquationCode.size(); }
std::size_t StripCount() { return (Equations() + stripWidth - 1) / stripWidth; }
std::size_t GroupCount() { return StripCount() * groupsPerStrip; }

std::int64_t FirstRow(std::size_t j) {
    const SystemMatrix& m = model.system;
    const std::int64_t start = m.columnStart[j];
    return start < m.columnStart[j + 1] ? m.row[static_cast<std::size_t>(start)] : static_cast<std::int64_t>(j);
}

// First row that the columns of a strip hold, as a multiple of eight.
std::int64_t TopOfStrip(std::size_t strip) {
    const std::size_t first = strip * stripWidth;
    auto top = static_cast<std::int64_t>(first);
    for (std::size_t j = first; j < std::min(first + stripWidth, Equations()); ++j) top = std::min(top, FirstRow(j));
    return top / 8 * 8;
}

std::int64_t RowsOfGroup(std::size_t group, std::int64_t top) {
    return static_cast<std::int64_t>((group + 1) * groupWidth) - top;
}

}  // namespace

int BuildSkylineProfile() {
    SkylineProfile& profile = model.skyline;
    if (!MakeTable(profile.top, GroupCount()) || !MakeTable(profile.start, GroupCount() + 1)) return 0;
    if (!MakeTable(model.SkylineColumnPtr, Equations())) return 0;
    for (std::size_t group = 0; group < GroupCount(); ++group) {
        const bool first = group % groupsPerStrip == 0;
        profile.top[group] = first ? TopOfStrip(group / groupsPerStrip) : profile.top[group - 1];
        const std::int64_t rows = RowsOfGroup(group, profile.top[group]);
        profile.start[group + 1] = profile.start[group] + rows * static_cast<std::int64_t>(groupWidth);
    }
    for (std::size_t j = 0; j < Equations(); ++j) {
        const std::size_t group = j / groupWidth;
        const std::int64_t above = static_cast<std::int64_t>(j) - profile.top[group];
        model.SkylineColumnPtr[j] = profile.start[group] + above * 8 + static_cast<std::int64_t>(j % groupWidth);
    }
    return 1;
}

SkylineCost CostOfSkyline() {
    SkylineCost cost;
    for (std::size_t group = 0; group < GroupCount(); ++group) {
        const auto rows = static_cast<double>(RowsOfGroup(group, model.skyline.top[group]));
        cost.entries += rows * static_cast<double>(groupWidth);
        cost.operations += rows * rows * static_cast<double>(groupWidth);
    }
    return cost;
}

bool TryMakeSkylineStore() {
    return TryMakeTable(model.SkylineStore, static_cast<std::size_t>(model.skyline.start.back())) &&
           TryMakeTable(model.skyline.reciprocal, GroupCount() * groupWidth);
}

// ---------------------------------------------------------------------------------------------------------------------
// Factorisation

namespace {

// Copies the columns of a strip. A prescribed or inactive equation keeps nothing but 1 on its diagonal.
void LoadStrip(std::size_t strip) {
    const SystemMatrix& m = model.system;
    const SkylineProfile& profile = model.skyline;
    double* const store = model.SkylineStore.data();
    const std::size_t group = strip * groupsPerStrip;
    std::fill(store + profile.start[group], store + profile.start[group + groupsPerStrip], 0.0);
    for (std::size_t j = strip * stripWidth; j < (strip + 1) * stripWidth; ++j) {
        const std::size_t own = j / groupWidth;
        double* const column = store + profile.start[own] + j % groupWidth;
        const auto at = [&](std::int64_t row) -> double& { return column[(row - profile.top[own]) * 8]; };
        const bool isFree = j < Equations() && model.EquationCode[j] == equationFree;
        if (!isFree) {
            at(static_cast<std::int64_t>(j)) = 1.0;
            continue;
        }
        for (auto p = m.columnStart[j]; p < m.columnStart[j + 1]; ++p) {
            const std::int32_t i = m.row[static_cast<std::size_t>(p)];
            if (model.EquationCode[static_cast<std::size_t>(i)] == equationFree) {
                at(i) = m.value[static_cast<std::size_t>(p)];
            }
        }
    }
}

std::int64_t HighestGroup() {
    std::int64_t rows = 0;
    for (std::size_t g = 0; g < GroupCount(); ++g) rows = std::max(rows, RowsOfGroup(g, model.skyline.top[g]));
    return rows;
}

}  // namespace

int FactorSkyline() {
    const SkylineProfile& profile = model.skyline;
    std::vector<ColumnGroup> groups;
    LargeTable<double> scratch;
    const std::size_t scratchOfStrip = static_cast<std::size_t>(HighestGroup()) * groupWidth;
    const auto threads = static_cast<std::size_t>(ThreadCount());
    if (!MakeTable(groups, GroupCount()) || !MakeTable(scratch, scratchOfStrip * threads)) return 0;
    for (std::size_t g = 0; g < GroupCount(); ++g) {
        groups[g] = {model.SkylineStore.data() + profile.start[g], profile.top[g], nullptr};
    }
    const DenseSystem system{groups.data(),
                             GroupCount(),
                             static_cast<std::int64_t>(GroupCount() * groupWidth),
                             model.skyline.reciprocal.data(),
                             nullptr,
                             nullptr};
    constexpr double worthThreads = 2e7;  // operations; fewer are done before another thread is awake
    if (CostOfSkyline().operations < worthThreads) {
        FactorStripsHere(system, LoadStrip, scratch.data());
    } else {
        FactorStrips(system, LoadStrip, [&] { return scratch.data() + ThreadNumber() * scratchOfStrip; });
    }
    return IsRunning();
}

// ---------------------------------------------------------------------------------------------------------------------
// Solution

int SolveSkylineDouble(std::span<float> rhs) {
    const SkylineProfile& profile = model.skyline;
    const double* const store = model.SkylineStore.data();
    const DenseKernels& kernels = ChosenDenseKernels();
    LargeTable<double> table;
    if (!MakeTable(table, GroupCount() * groupWidth)) return 0;
    double* const w = table.data();
    std::fill(table.begin(), table.end(), 0.0);
    for (std::size_t i = 0; i < rhs.size(); ++i) {
        w[i] = model.EquationCode[i] == equationInactive ? 0.0 : static_cast<double>(rhs[i]);
    }
    const auto square = [&](std::size_t g) { return store + profile.start[g + 1] - groupWidth * groupWidth; };
    for (std::size_t g = 0; g < GroupCount(); g += groupsPerStrip) {
        if (!IsRunning()) return 0;
        std::array<const double*, groupsPerStrip> rows;
        for (std::size_t i = 0; i < groupsPerStrip; ++i) rows[i] = store + profile.start[g + i];
        const auto above = static_cast<std::size_t>(RowsOfGroup(g, profile.top[g])) - groupWidth;
        SolveForwardInGroups(rows.data(), groupsPerStrip, above, w + profile.top[g], w + g * groupWidth);
    }
    for (std::size_t j = 0; j < GroupCount() * groupWidth; ++j) w[j] *= profile.reciprocal[j];
    for (std::size_t g = GroupCount(); g-- > 0;) {
        if (!IsRunning()) return 0;
        double* const own = w + g * groupWidth;
        const auto above = static_cast<std::size_t>(RowsOfGroup(g, profile.top[g])) - groupWidth;
        SolveBackwardInSquare(square(g), own);
        kernels.backward(store + profile.start[g], above, 1, 0, own, w + profile.top[g]);
    }
    for (std::size_t i = 0; i < rhs.size(); ++i) {
        if (model.EquationCode[i] != equationInactive) rhs[i] = Narrow(w[i]);
    }
    return 1;
}

}  // namespace kaldra
