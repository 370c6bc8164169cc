#include "results/gradient_results.h"

#include <array>
#include <vector>

#include "element/element_batches.h"
#include "element/small_matrix.h"
#include "model/problem_model.h"
#include "platform/memory.h"
#include "platform/number_text.h"
#include "platform/parallel.h"
#include "results/result_file.h"
#include "run/run_state.h"

namespace kaldra {

namespace {

// Values of one integration point.
struct PointGradient {
    float fluxX, fluxY;
    float gradientX, gradientY;
};

void ComputeElement(std::size_t e, PointGradient* values) {
    const ElementRec& element = model.elements[e];
    const std::size_t points = PointCount(e);
    const SlotValues temperature = SlotTemperatures(element, &NodeState::temperature);
    for (std::size_t i = 0; i < points; ++i) {
        PointShape at;
        SlotGradients conducted;
        Conductivity D;
        CopyShape(e, i, at);
        StoredConductivityAtPoint(D, e, i);
        MatMul(conducted.data(), D.data(), at.B.data(), 2, 2, slotCount);
        std::array<float, 2> gradient;
        std::array<float, 2> flux;
        MatVec(gradient.data(), at.B.data(), temperature.data(), 2, slotCount);
        MatVec(flux.data(), conducted.data(), temperature.data(), 2, slotCount);
        values[i] = {-flux[0], -flux[1], -gradient[0], -gradient[1]};
    }
}

[[nodiscard]] int ComputeGradients(std::vector<PointGradient>& values) {
    if (!MakeTable(values, static_cast<std::size_t>(model.pointTotal))) return 0;
    constexpr std::size_t elementsPerTask = 512;
    RunChunks(static_cast<std::size_t>(model.elementCount), elementsPerTask, [&](std::size_t first, std::size_t end) {
        for (std::size_t e = first; e < end && IsRunning(); ++e) {
            if (!IsNullElement(model.elements[e])) ComputeElement(e, values.data() + model.PointResultOffset[e]);
        }
    });
    return IsRunning();
}

}  // namespace

int WriteGradientResults() {
    std::vector<PointGradient> values;
    if (!ComputeGradients(values)) return 0;
    static constexpr RowFormat format("%5d%5d%+15.6E%+15.6E%+15.6E%+15.6E");
    const auto putRow = [&](char* out, std::size_t e, std::size_t point) {
        const PointGradient& v = values[static_cast<std::size_t>(model.PointResultOffset[e]) + point];
        return PutRow(out, format, RowNumber(e), RowNumber(point), v.fluxX, v.fluxY, v.gradientX, v.gradientY);
    };
    return WriteResultFile({StepFileName('g'), 1022, 1036},
                           "Elem# Pnt#  Unit Flux X    Unit Flux Y    Gradient X     Gradient Y ", 70,
                           [&](File& file) { return WritePointRows(file, format, putRow); });
}

}  // namespace kaldra
