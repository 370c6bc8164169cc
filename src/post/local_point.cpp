#include "post/local_point.h"

#include "element/element_geometry.h"
#include "model/problem_model.h"
#include "platform/narrow.h"

namespace kaldra {

LocalPoint PointAt(std::size_t e, double r, double s) {
    const ElementRec& element = model.elements[e];
    ElementCoordinates xy;
    PointGeometry at;
    GetElementCoordinates(e, xy);
    (void)ComputePointGeometry(element, xy, {Narrow(r), Narrow(s), 1, 1}, at);
    LocalPoint point;
    point.N = at.N;
    for (std::size_t slot = 0; slot < slotCount; ++slot) {
        point.x += static_cast<double>(at.M[slot]) * static_cast<double>(xy[2 * slot]);
        point.y += static_cast<double>(at.M[slot]) * static_cast<double>(xy[2 * slot + 1]);
    }
    if (element.infiniteR != 0) point.x += static_cast<double>(model.poleX);
    if (element.infiniteS != 0) point.y += static_cast<double>(model.poleY);
    return point;
}

}  // namespace kaldra
