#include "model/function_setup.h"

#include <algorithm>
#include <span>

#include "functions/spline_fit.h"
#include "model/problem_model.h"
#include "platform/memory.h"
#include "run/messages.h"

namespace kaldra {

// Slopes come from a scratch copy: a smoothed function keeps the x and y of the file and takes the slopes of the
// smoothed curve.
template <class Function>
[[nodiscard]] static int FitFunction(Function& function, int message) {
    std::vector<FunctionPoint> scratch;
    if (!ReserveTable(scratch, function.points.size())) return 0;
    scratch = function.points;
    if (!FitSlopes(scratch, function.weight)) return ShowError(message);
    if (function.smoothing != 0) {
        std::vector<FunctionPoint> smoothed;
        if (!ReserveTable(smoothed, scratch.size())) return 0;
        smoothed = scratch;
        if (SmoothAndFit(smoothed, smoothed, function.smoothing, function.weight)) scratch.swap(smoothed);
    }
    for (std::size_t i = 0; i < scratch.size(); ++i) function.points[i].slope = scratch[i].slope;
    return 1;
}

template <class Function>
[[nodiscard]] static int FitTable(std::vector<Function>& table, std::int32_t count, int message) {
    for (std::int32_t number = 1; number <= count; ++number) {
        Function& function = table[IndexOf(number)];
        if (function.pointCount != 0 && !FitFunction(function, message)) return 0;
    }
    return 1;
}

[[nodiscard]] static int SetEquationCodes() {
    const auto n = static_cast<std::size_t>(model.nodeCount);
    if (!MakeTable(model.EquationCode, n)) return 0;
    std::ranges::fill(model.EquationCode, equationInactive);
    for (const ElementRec& element : std::span(model.elements).first(static_cast<std::size_t>(model.elementCount))) {
        if (IsNullElement(element)) continue;
        for (const std::int32_t node : element.nodes) {
            if (node > 0) model.EquationCode[IndexOf(node)] = equationFree;
        }
    }
    for (std::size_t i = 0; i < n; ++i) {
        std::int32_t& code = model.EquationCode[i];
        if (model.nodes[i].bcType == bcTemperature && code != equationInactive) code = equationPrescribed;
    }
    return 1;
}

int SetupFunctions() {
    return FitTable(model.kFunctions, model.kFunctionCount, 1118) &&
           FitTable(model.sFunctions, model.sFunctionCount, 1174) &&
           FitTable(model.mFunctions, model.mFunctionCount, 1131) &&
           FitTable(model.bFunctions, model.bFunctionCount, 1008) && SetEquationCodes();
}

}  // namespace kaldra
