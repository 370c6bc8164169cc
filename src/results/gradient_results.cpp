#include "results/gradient_results.h"

#include <array>

#include "element/element_batches.h"
#include "element/small_matrix.h"
#include "model/problem_model.h"
#include "platform/number_text.h"
#include "results/result_file.h"

namespace kaldra {

namespace {

// Values of one integration point.
struct PointGradient {
    float fluxX, fluxY;
    float gradientX, gradientY;
};

using ElementGradients = std::array<PointGradient, largestRule>;

void ComputeElement(std::size_t e, ElementGradients& values) {
    const ElementRec& element = model.elements[e];
    const std::size_t points = PointCount(e);
    const SlotValues temperature = SlotTemperatures(element, &NodeState::temperature);
    for (std::size_t i = 0; i < points; ++i) {
        const PointShape at = ShapeAtPoint(e, i);
        SlotGradients conducted;
        Conductivity D;
        StoredConductivityAtPoint(D, e, i);
        MatMul(conducted.data(), D.data(), at.B.data(), 2, 2, slotCount);
        std::array<float, 2> gradient;
        std::array<float, 2> flux;
        MatVec(gradient.data(), at.B.data(), temperature.data(), 2, slotCount);
        MatVec(flux.data(), conducted.data(), temperature.data(), 2, slotCount);
        values[i] = {-flux[0], -flux[1], -gradient[0], -gradient[1]};
    }
}

constexpr RowFormat rowFormat("%5d%5d%+15.6E%+15.6E%+15.6E%+15.6E");

// A NULL element has rows of zeros.
char* PutElement(char* out, std::size_t e) {
    ElementGradients values{};
    if (!IsNullElement(model.elements[e])) ComputeElement(e, values);
    for (std::size_t i = 0; i < PointCount(e); ++i) {
        const PointGradient& v = values[i];
        out =
            PutLineEnd(PutRow(out, rowFormat, RowNumber(e), RowNumber(i), v.fluxX, v.fluxY, v.gradientX, v.gradientY));
    }
    return out;
}

}  // namespace

int WriteGradientResults() {
    return WriteResultFile({StepFileName('g'), 1022, 1036},
                           "Elem# Pnt#  Unit Flux X    Unit Flux Y    Gradient X     Gradient Y ", 70,
                           [](File& file) { return WritePointRows(file, rowFormat, PutElement); });
}

}  // namespace kaldra
