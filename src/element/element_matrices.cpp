#include "element/element_matrices.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "element/element_geometry.h"
#include "element/small_matrix.h"
#include "functions/function_value.h"
#include "platform/narrow.h"
#include "run/messages.h"
#include "run/run_state.h"

namespace kaldra {

SlotValues SlotTemperatures(const ElementRec& element, float NodeState::*field) {
    SlotValues values;
    for (std::size_t slot = 0; slot < slotCount; ++slot) {
        const std::int32_t node = element.nodes[slot];
        values[slot] = node > 0 ? model.nodeStates[IndexOf(node)].*field : 0.0F;
    }
    return values;
}

static const MaterialRec& MaterialOf(std::size_t e) { return model.materials[IndexOf(model.elements[e].material)]; }

static double DotAtPoint(const SlotValues& N, const SlotValues& values) {
    return VecDot(N.data(), values.data(), slotCount);
}

// ---------------------------------------------------------------------------------------------------------------------
// Conductivity

static void SetIsotropic(Conductivity& D, float k, const MaterialRec& material) {
    D = {k, 0, 0, material.conductivityRatio * k};
}

bool InitialConductivityHolds() {
    return runState.initialConditionMode == 2 && runState.iteration == 1 && runState.currentStep <= runState.startStep;
}

void ConductivityAtPoint(Conductivity& D, const SlotValues& N, std::size_t e, std::size_t point) {
    const ElementRec& element = model.elements[e];
    const MaterialRec& material = MaterialOf(e);
    const PointRuns record = PointResultsOf(e);
    const float present = Narrow(DotAtPoint(N, SlotTemperatures(element, &NodeState::temperature)));
    if (!InitialConductivityHolds()) {
        float at = present;
        if (model.analysisType == transient) {
            const double old = DotAtPoint(N, SlotTemperatures(element, &NodeState::previous));
            at = Narrow((old + static_cast<double>(present)) * 0.5);
        }
        const PropertyFunction& k = model.kFunctions[IndexOf(material.conductivityFunction)];
        record.conductivity[point] = Narrow(EvaluateFunction(k.points, at));
    }
    record.temperature[point] = present;
    SetIsotropic(D, record.conductivity[point], material);
}

void StoredConductivityAtPoint(Conductivity& D, std::size_t e, std::size_t point) {
    SetIsotropic(D, PointResultsOf(e).conductivity[point], MaterialOf(e));
}

// ---------------------------------------------------------------------------------------------------------------------
// Heat capacity

// Unfrozen part of the water, held to 0..1.
static float UnfrozenFraction(std::span<const FunctionPoint> f, float temperature) {
    return std::clamp(Narrow(EvaluateFunction(f, temperature)), 0.0F, 1.0F);
}

// Slope of the unfrozen water content between the step's old temperature and the present one: the secant where they
// differ by more than one per cent of their mean magnitude, else the slope of the curve at their mean.
static float WaterSlope(std::span<const FunctionPoint> f, float present, float old, float presentPart, float oldPart) {
    const double difference = static_cast<double>(present) - static_cast<double>(old);
    const double magnitude = (std::abs(static_cast<double>(old)) + std::abs(static_cast<double>(present))) * 0.5;
    if (std::abs(difference) / magnitude > 0.01) {
        return Narrow((static_cast<double>(presentPart) - static_cast<double>(oldPart)) / difference);
    }
    const float mean = Narrow((static_cast<double>(old) + static_cast<double>(present)) * 0.5);
    return Narrow(EvaluateFunctionSlope(f, mean));
}

// A point takes no latent heat until the phase-change control has switched it on or opened all points.
static bool TakesLatentHeat(std::size_t place) {
    return model.PhaseState[place] != 0 || runState.PhaseChangeMode == phaseEstablished;
}

int CapacityAtPoint(float& capacity, const SlotValues& N, std::size_t e, std::size_t point) {
    const ElementRec& element = model.elements[e];
    const MaterialRec& material = MaterialOf(e);
    if (material.waterContentFunction == 0) return ShowError(1156);
    const std::vector<FunctionPoint>& f = model.sFunctions[IndexOf(material.waterContentFunction)].points;
    const float present = Narrow(DotAtPoint(N, SlotTemperatures(element, &NodeState::temperature)));
    const float old = Narrow(DotAtPoint(N, SlotTemperatures(element, &NodeState::previous)));
    const float presentPart = UnfrozenFraction(f, present);

    const std::size_t place = PointPlace(e, point);
    float slope = 0;
    if (present != old && TakesLatentHeat(place)) {
        slope = WaterSlope(f, present, old, presentPart, UnfrozenFraction(f, old));
    }
    // Within a step the slope used at a point can only grow.
    float& floor = model.SlopeFloor[place];
    if (slope > floor) floor = slope;
    slope = floor;

    double latent = 0;
    if (slope > 1e-10F) {
        latent = static_cast<double>(model.latentHeat) * static_cast<double>(slope) *
                 static_cast<double>(material.waterContent);
    }
    const bool frozen = old <= model.freezingPoint;
    const float dry = frozen ? material.frozenHeatCapacity : material.unfrozenHeatCapacity;
    capacity = Narrow(latent + static_cast<double>(dry));

    const PointRuns record = PointResultsOf(e);
    record.waterContent[point] = presentPart * material.waterContent;
    record.waterSlope[point] = slope * material.waterContent;
    record.heatCapacity[point] = capacity;
    return 1;
}

// ---------------------------------------------------------------------------------------------------------------------
// The matrices

void GlobalDerivatives(SlotGradients& B, const std::array<float, 4>& inverse, const SlotGradients& dN) {
    MatMul(B.data(), inverse.data(), dN.data(), 2, 2, slotCount);
}

float WeightOfPoint(const IntegrationPoint& point, float determinant) {
    return Narrow(static_cast<double>(determinant) * static_cast<double>(point.ws) * static_cast<double>(point.wr));
}

float DepthAtPoint(const ElementRec& element, const ElementCoordinates& xy, const PointGeometry& at) {
    if (model.problemView != viewAxisymmetric) return element.thickness;
    double radius = 0;
    for (std::size_t slot = 0; slot < slotCount; ++slot) {
        radius += static_cast<double>(at.M[slot]) * static_cast<double>(xy[2 * slot]);
    }
    return Narrow(radius * static_cast<double>(element.thickness));
}

void AddConduction(ElementMatrix& K, const PointShape& at, const Conductivity& D) {
    SlotGradients flux;
    std::array<float, 2 * slotCount> transposed;
    ElementMatrix atPoint;
    MatMul(flux.data(), D.data(), at.B.data(), 2, 2, slotCount);
    MatTranspose(transposed.data(), at.B.data(), 2, slotCount);
    MatMul(atPoint.data(), transposed.data(), flux.data(), slotCount, 2, slotCount);
    MatScale(atPoint.data(), at.weight, slotCount, slotCount);
    MatScale(atPoint.data(), at.depth, slotCount, slotCount);
    MatAdd(K.data(), atPoint.data(), slotCount, slotCount);
}

void AddCapacity(ElementMatrix& Cap, const PointShape& at, float capacity) {
    ElementMatrix atPoint;
    VecOuter(atPoint.data(), at.N.data(), at.N.data(), slotCount);
    MatScale(atPoint.data(), at.weight, slotCount, slotCount);
    MatScale(atPoint.data(), at.depth, slotCount, slotCount);
    MatScale(atPoint.data(), capacity, slotCount, slotCount);
    MatAdd(Cap.data(), atPoint.data(), slotCount, slotCount);
}

int ComputeElementMatrices(std::size_t e, ElementMatrix& K, ElementMatrix& Cap) {
    MatZero(K.data(), slotCount, slotCount);
    MatZero(Cap.data(), slotCount, slotCount);
    const ElementRec& element = model.elements[e];
    const std::size_t points = PointCount(e);
    if (points == 0) return 1;
    ElementCoordinates xy;
    RuleTable rule;
    GetElementCoordinates(e, xy);
    GetIntegrationRule(rule, points);
    for (std::size_t i = 0; i < points; ++i) {
        PointGeometry at;
        if (!ComputePointGeometry(element, xy, rule[i], at)) {
            return IsInfinite(element) ? ShowBadArea(e, 1196, 1197) : ShowBadArea(e, 1194, 1195);
        }
        PointShape shape{at.N, {}, WeightOfPoint(rule[i], at.determinant), DepthAtPoint(element, xy, at)};
        GlobalDerivatives(shape.B, at.inverse, at.dN);
        Conductivity D;
        ConductivityAtPoint(D, at.N, e, i);
        AddConduction(K, shape, D);
        if (model.analysisType != transient) continue;
        float capacity = 0;
        if (!CapacityAtPoint(capacity, at.N, e, i)) return 0;
        AddCapacity(Cap, shape, capacity);
    }
    return 1;
}

}  // namespace kaldra
