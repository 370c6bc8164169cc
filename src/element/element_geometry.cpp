#include "element/element_geometry.h"

#include <string>

#include "element/small_matrix.h"
#include "platform/number_text.h"
#include "run/front_end.h"
#include "run/messages.h"

namespace kaldra {

namespace {

struct Position {
    float x, y;
};

void SetRow(ElementCoordinates& xy, std::size_t slot, Position p) {
    xy[2 * slot] = p.x;
    xy[2 * slot + 1] = p.y;
}

Position NodePosition(const ElementRec& element, std::size_t slot) {
    const std::int32_t node = element.nodes[slot];
    if (node <= 0) return {0, 0};
    const NodeRec& record = model.nodes[IndexOf(node)];
    return {record.x, record.y};
}

bool OneDirection(const ElementRec& element) { return (element.infiniteR != 0) != (element.infiniteS != 0); }

void SetOneDirection(const ElementRec& element, ElementCoordinates& xy) {
    const bool alongX = element.infiniteR != 0;
    const auto fromPole = [&](std::size_t slot) {
        const Position p = NodePosition(element, slot);
        return alongX ? Position{p.x - model.poleX, p.y} : Position{p.x, p.y - model.poleY};
    };
    const auto doubled = [&](Position p) { return alongX ? Position{2 * p.x, p.y} : Position{p.x, 2 * p.y}; };
    SetRow(xy, 1, fromPole(1));
    SetRow(xy, 2, fromPole(2));
    SetRow(xy, 5, fromPole(5));
    SetRow(xy, 4, doubled(fromPole(1)));
    SetRow(xy, 6, doubled(fromPole(2)));
}

// Local r and s of a counter-clockwise element lie along y and x or along x and y, according to the quadrant.
void SetTwoDirections(const ElementRec& element, ElementCoordinates& xy) {
    const Position corner = NodePosition(element, 2);
    const float a = corner.x - model.poleX;
    const float b = corner.y - model.poleY;
    SetRow(xy, 2, {a, b});
    const auto isUnit = [](std::int32_t direction) { return direction == 1 || direction == -1; };
    if (!isUnit(element.infiniteR) || !isUnit(element.infiniteS)) return;
    const bool equalSigns = element.infiniteR == element.infiniteS;
    SetRow(xy, 5, equalSigns ? Position{a, 2 * b} : Position{2 * a, b});
    SetRow(xy, 6, equalSigns ? Position{2 * a, b} : Position{a, 2 * b});
}

// False for an infinite element that lacks a near slot or is no quadrilateral: nothing maps it.
bool HasGeometry(const ElementRec& element) {
    if (!IsInfinite(element)) return true;
    const std::int32_t* const nodes = element.nodes;
    if (nodes[3] <= 0 || nodes[2] <= 0) return false;
    return !OneDirection(element) || (nodes[1] > 0 && nodes[5] > 0);
}

}  // namespace

bool IsInfinite(const ElementRec& element) { return element.infiniteR != 0 || element.infiniteS != 0; }

void GetElementCoordinates(std::size_t e, ElementCoordinates& xy) {
    const ElementRec& element = model.elements[e];
    xy.fill(0);
    if (OneDirection(element)) return SetOneDirection(element, xy);
    if (IsInfinite(element)) return SetTwoDirections(element, xy);
    for (std::size_t slot = 0; slot < slotCount; ++slot) SetRow(xy, slot, NodePosition(element, slot));
}

void ComputePointShape(const ElementRec& element, const IntegrationPoint& point, PointGeometry& at) {
    ShapeFunctions(at.N, point.r, point.s, element.nodes);
    ShapeDerivatives(at.dN, point.r, point.s, element.nodes);
}

bool ComputePointGeometry(const ElementRec& element, const ElementCoordinates& xy, const IntegrationPoint& point,
                          PointGeometry& at) {
    ComputePointShape(element, point, at);
    return ComputePointMapping(element, xy, point, at);
}

bool ComputePointMapping(const ElementRec& element, const ElementCoordinates& xy, const IntegrationPoint& point,
                         PointGeometry& at) {
    const float r = point.r;
    const float s = point.s;
    SlotGradients dM = at.dN;
    at.M = at.N;
    if (OneDirection(element)) {
        MappingFunctions1(at.M, r, s);
        MappingDerivatives1(dM, r, s);
    } else if (IsInfinite(element)) {
        MappingFunctions2(at.M, r, s);
        MappingDerivatives2(dM, r, s);
    }
    std::array<float, 4> J;
    MatMul(J.data(), dM.data(), xy.data(), 2, slotCount, 2);
    at.determinant = Narrow(Mat2Invert(at.inverse.data(), J.data()));
    return at.determinant > 0 && HasGeometry(element);
}

int ShowBadArea(std::size_t e, int before, int behind) {
    std::string text(StringText(before));
    text += FormatText("%d", static_cast<std::int64_t>(e) + 1);
    text += StringText(behind);
    ShowErrorBox(boxExclamation, before, text);
    return 0;
}

}  // namespace kaldra
