#include "post/cells.h"

#include <algorithm>
#include <array>
#include <span>

#include "element/shape_functions.h"
#include "model/problem_model.h"
#include "platform/memory.h"
#include "platform/narrow.h"

namespace kaldra {

namespace {

// The nodes around an element, corner and side node in turn; 0 where a side has none.
struct Ring {
    std::array<std::int32_t, slotCount> nodes{};  // numbers
    std::size_t corners = 0;
    std::size_t sideNodes = 0;
    bool whole = true;  // no corner is missing
};

Ring RingOf(const ElementRec& element) {
    Ring ring;
    ring.corners = element.nodes[3] > 0 ? 4 : element.nodes[2] > 0 ? 3 : 2;
    const std::size_t sides = ring.corners == 2 ? 1 : ring.corners;
    for (std::size_t k = 0; k < ring.corners; ++k) {
        ring.nodes[2 * k] = element.nodes[k];
        ring.whole = ring.whole && element.nodes[k] > 0;
        if (k >= sides || element.nodes[4 + k] <= 0) continue;
        ring.nodes[2 * k + 1] = element.nodes[4 + k];
        ++ring.sideNodes;
    }
    return ring;
}

class Builder {
public:
    explicit Builder(MeshCells& cells) : cells_(cells) {}

    void AddElement(std::size_t e) {
        element_ = static_cast<std::int32_t>(e);
        const Ring ring = RingOf(model.elements[e]);
        if (!ring.whole) return AddPolygon(ring);
        if (ring.corners == 2) return AddPlain(ring, CellKind::Line, CellKind::QuadraticLine);
        if (ring.sideNodes != 0 && ring.sideNodes != ring.corners) return AddSplit(ring);
        if (ring.corners == 3) return AddPlain(ring, CellKind::Triangle, CellKind::QuadraticTriangle);
        AddPlain(ring, CellKind::Quadrilateral, CellKind::QuadraticQuadrilateral);
    }

private:
    void Add(CellKind kind, std::span<const std::int32_t> numbers) {
        for (const std::int32_t number : numbers) cells_.nodes.push_back(number - 1);
        cells_.ends.push_back(static_cast<std::int64_t>(cells_.nodes.size()));
        cells_.kinds.push_back(kind);
        cells_.element.push_back(element_);
    }
    static std::vector<std::int32_t> NodesInOrder(const Ring& ring) {
        std::vector<std::int32_t> numbers;
        for (std::size_t i = 0; i < 2 * ring.corners; ++i) {
            if (ring.nodes[i] > 0) numbers.push_back(ring.nodes[i]);
        }
        return numbers;
    }
    void AddPolygon(const Ring& ring) {
        const std::vector<std::int32_t> numbers = NodesInOrder(ring);
        if (numbers.size() > 1) Add(numbers.size() == 2 ? CellKind::Line : CellKind::Polygon, numbers);
    }
    void AddPlain(const Ring& ring, CellKind linear, CellKind quadratic) {
        std::vector<std::int32_t> numbers;
        for (std::size_t k = 0; k < ring.corners; ++k) numbers.push_back(ring.nodes[2 * k]);
        for (std::size_t k = 0; k < ring.corners; ++k) {
            if (ring.nodes[2 * k + 1] > 0) numbers.push_back(ring.nodes[2 * k + 1]);
        }
        Add(ring.sideNodes > 0 ? quadratic : linear, numbers);
    }
    // A side node lies on a line with the corners beside it and with no others, so it can be the centre.
    void AddSplit(const Ring& ring) {
        std::vector<std::int32_t> around = NodesInOrder(ring);
        std::size_t first = 1;
        while (ring.nodes[first] == 0) first += 2;
        std::rotate(around.begin(), std::ranges::find(around, ring.nodes[first]), around.end());
        for (std::size_t i = 1; i + 1 < around.size(); ++i) {
            Add(CellKind::Triangle, std::array{around[0], around[i], around[i + 1]});
        }
    }

    MeshCells& cells_;
    std::int32_t element_ = 0;
};

}  // namespace

int BuildCells(MeshCells& cells) {
    cells = {};
    const auto elements = static_cast<std::size_t>(model.elementCount);
    constexpr std::size_t mostBytes = 200;  // of an element in six triangles
    return WithMemory(elements * mostBytes, [&] {
        Builder builder(cells);
        for (std::size_t e = 0; e < elements; ++e) builder.AddElement(e);
    });
}

ElementMeans MeansOf(const StepResults& results, std::size_t e) {
    const std::size_t points = PointCount(e);
    if (points == 0) return {};
    RuleTable rule;
    rule.fill({0, 0, 1, 1});  // a NULL element may have any number of points
    GetIntegrationRule(rule, points);
    std::array<double, 5> sum{};
    double weights = 0;
    for (std::size_t i = 0; i < points; ++i) {
        const PointResult& p = results.points[static_cast<std::size_t>(model.PointResultOffset[e]) + i];
        const double weight = static_cast<double>(rule[i].wr) * static_cast<double>(rule[i].ws);
        const std::array<float, 5> values{p.fluxX, p.fluxY, p.conductivity, p.unfrozenWater, p.heatCapacity};
        for (std::size_t k = 0; k < sum.size(); ++k) sum[k] += weight * static_cast<double>(values[k]);
        weights += weight;
    }
    return {Narrow(sum[0] / weights), Narrow(sum[1] / weights), Narrow(sum[2] / weights), Narrow(sum[3] / weights),
            Narrow(sum[4] / weights)};
}

}  // namespace kaldra
