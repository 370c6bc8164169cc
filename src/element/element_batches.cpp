#include "element/element_batches.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <limits>

#include "element/batch_kernels.h"
#include "element/element_geometry.h"
#include "element/element_matrices.h"
#include "functions/function_value.h"
#include "model/problem_model.h"
#include "model/time_sequence.h"
#include "platform/memory.h"
#include "platform/parallel.h"
#include "platform/processor.h"
#include "run/messages.h"
#include "run/run_state.h"

namespace kaldra {

const BatchKernels& ChosenBatchKernels() {
#if defined(__x86_64__)
    if (UsedProcessorLevel() == ProcessorLevel::Avx512) return batchKernelsAvx512;
    if (UsedProcessorLevel() == ProcessorLevel::Avx2) return batchKernelsAvx2;
#endif
    return batchKernelsPlain;
}

namespace {

std::size_t Elements() { return static_cast<std::size_t>(model.elementCount); }

// An element that brings something to the matrix uses its node slots, any other none.
bool UsesSlot(const ElementRec& element, std::size_t slot) {
    return element.nodes[slot] > 0 && !IsNullElement(element);
}

// ---------------------------------------------------------------------------------------------------------------------
// Kinds and batches

bool IsOfKind(const ElementKind& kind, std::size_t e) {
    const ElementRec& element = model.elements[e];
    if (kind.material != IndexOf(element.material) || kind.points != PointCount(e)) return false;
    if (kind.infinite != IsInfinite(element)) return false;
    std::size_t used = 0;
    for (std::size_t slot = 0; slot < slotCount; ++slot) {
        if (!UsesSlot(element, slot)) continue;
        if (used == kind.slots || kind.slot[used] != slot) return false;
        ++used;
    }
    return used == kind.slots;
}

ElementKind KindOf(std::size_t e) {
    const ElementRec& element = model.elements[e];
    ElementKind kind;
    kind.material = IndexOf(element.material);
    kind.points = PointCount(e);
    kind.infinite = IsInfinite(element);
    for (std::size_t slot = 0; slot < slotCount; ++slot) {
        if (UsesSlot(element, slot)) kind.slot[kind.slots++] = static_cast<std::uint8_t>(slot);
    }
    if (kind.slots == 0) return kind;
    RuleTable rule;
    GetIntegrationRule(rule, kind.points);
    for (std::size_t i = 0; i < kind.points; ++i) {
        SlotValues N;
        ShapeFunctions(N, rule[i].r, rule[i].s, element.nodes);
        for (std::size_t j = 0; j < kind.slots; ++j) kind.N[i][j] = N[kind.slot[j]];
    }
    return kind;
}

// Finds the kind of every element with points; -1 for the others.
[[nodiscard]] int SortIntoKinds(ElementBatches& b, std::vector<std::int32_t>& kindOfElement) {
    if (!MakeTable(kindOfElement, Elements())) return 0;
    std::size_t last = 0;
    for (std::size_t e = 0; e < Elements(); ++e) {
        kindOfElement[e] = -1;
        if (PointCount(e) == 0) continue;
        const auto isKind = [e](const ElementKind& kind) { return IsOfKind(kind, e); };
        if (last >= b.kinds.size() || !isKind(b.kinds[last])) {
            last = static_cast<std::size_t>(std::ranges::find_if(b.kinds, isKind) - b.kinds.begin());
            if (last == b.kinds.size() && !AppendRecord(b.kinds, KindOf(e))) return 0;
        }
        kindOfElement[e] = static_cast<std::int32_t>(last);
        ++b.kinds[last].batchCount;  // elements, for now
    }
    return 1;
}

// Gives every kind its place in the tables, and makes them.
[[nodiscard]] int MakeBatchTables(ElementBatches& b) {
    std::size_t batches = 0;
    std::size_t shapes = 0;
    std::size_t entries = 0;
    std::size_t loads = 0;
    std::size_t points = 0;
    for (ElementKind& kind : b.kinds) {
        kind.batchCount = (kind.batchCount + laneCount - 1) / laneCount;
        kind.firstBatch = batches;
        kind.firstShape = shapes;
        kind.firstEntry = entries;
        kind.firstLoad = loads;
        kind.firstPoint = points;
        batches += kind.batchCount;
        shapes += kind.batchCount * kind.ShapesPerBatch();
        entries += kind.batchCount * kind.EntriesPerBatch();
        loads += kind.batchCount * kind.LoadsPerBatch();
        points += kind.batchCount * kind.PointsPerBatch();
    }
    b.pointPlaces = points;
    if (entries > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) return ShowOutOfMemory();
    const bool isTransient = model.analysisType == transient;
    return MakeTable(b.element, batches * laneCount) && MakeTable(b.laneInUse, batches) &&
           MakeTable(b.kindOfBatch, batches) && MakeTable(b.nodes, loads) && MakeTable(b.shapes, shapes) &&
           MakeTable(b.entries, entries) && MakeTable(b.loads, isTransient ? loads : 0) &&
           MakeTable(b.oldWater, isTransient ? points : 0) && MakeTable(b.placeOfElement, Elements());
}

// Puts every element into the next free lane of its kind.
[[nodiscard]] int FillLanes(ElementBatches& b, const std::vector<std::int32_t>& kindOfElement) {
    std::vector<std::size_t> next;
    if (!MakeTable(next, b.kinds.size())) return 0;
    for (std::size_t k = 0; k < b.kinds.size(); ++k) next[k] = b.kinds[k].firstBatch * laneCount;
    for (std::size_t e = 0; e < Elements(); ++e) {
        b.placeOfElement[e] = -1;
        if (kindOfElement[e] < 0) continue;
        const auto k = static_cast<std::size_t>(kindOfElement[e]);
        const std::size_t place = next[k]++;
        b.placeOfElement[e] = static_cast<std::int64_t>(place);
        b.kindOfBatch[place / laneCount] = k;
        ++b.laneInUse[place / laneCount];
        b.element[place] = static_cast<std::int32_t>(e);
    }
    for (std::size_t k = 0; k < b.kinds.size(); ++k) {
        for (std::size_t place = next[k]; place % laneCount != 0; ++place) b.element[place] = b.element[place - 1];
    }
    return 1;
}

std::size_t BatchInKind(const ElementKind& kind, std::size_t batch) { return batch - kind.firstBatch; }

void FillNodes(ElementBatches& b) {
    for (std::size_t batch = 0; batch < b.kindOfBatch.size(); ++batch) {
        const ElementKind& kind = b.kinds[b.kindOfBatch[batch]];
        std::int32_t* const nodes = b.nodes.data() + kind.firstLoad + BatchInKind(kind, batch) * kind.LoadsPerBatch();
        for (std::size_t lane = 0; lane < laneCount; ++lane) {
            const ElementRec& element = model.elements[static_cast<std::size_t>(b.element[batch * laneCount + lane])];
            for (std::size_t j = 0; j < kind.slots; ++j) nodes[j * laneCount + lane] = element.nodes[kind.slot[j]] - 1;
        }
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Geometry

// What all elements of a kind share.
struct KindShapes {
    RuleTable rule;
    std::array<PointGeometry, largestRule> points;  // N and dN
    float dN[largestRule][2][slotCount];            // of the slots in use
    float weights[largestRule][2];
};

KindShapes ShapesOf(const ElementKind& kind, const ElementRec& element) {
    KindShapes shapes;
    GetIntegrationRule(shapes.rule, kind.points);
    for (std::size_t i = 0; i < kind.points; ++i) {
        const IntegrationPoint& point = shapes.rule[i];
        PointGeometry& at = shapes.points[i];
        ComputePointShape(element, point, at);
        for (std::size_t j = 0; j < kind.slots; ++j) {
            shapes.dN[i][0][j] = at.dN[kind.slot[j]];
            shapes.dN[i][1][j] = at.dN[slotCount + kind.slot[j]];
        }
        shapes.weights[i][0] = point.ws;
        shapes.weights[i][1] = point.wr;
    }
    return shapes;
}

// Geometry of one lane, for infinite elements. False where the element has no area.
[[nodiscard]] bool FillShape(const ElementKind& kind, const KindShapes& kindShapes, std::size_t e, float* shapes) {
    const ElementRec& element = model.elements[e];
    ElementCoordinates xy;
    GetElementCoordinates(e, xy);
    for (std::size_t i = 0; i < kind.points; ++i) {
        PointGeometry at = kindShapes.points[i];
        if (!ComputePointMapping(element, xy, kindShapes.rule[i], at)) return false;
        SlotGradients B;
        GlobalDerivatives(B, at.inverse, at.dN);
        float* const shape = shapes + i * (2 * kind.slots + 2) * laneCount;
        for (std::size_t j = 0; j < kind.slots; ++j) {
            shape[j * laneCount] = B[kind.slot[j]];
            shape[(kind.slots + j) * laneCount] = B[slotCount + kind.slot[j]];
        }
        shape[2 * kind.slots * laneCount] = WeightOfPoint(kindShapes.rule[i], at.determinant);
        shape[(2 * kind.slots + 1) * laneCount] = DepthAtPoint(element, xy, at);
    }
    return true;
}

bool LacksWaterContent(const ElementKind& kind) {
    return model.analysisType == transient && model.materials[kind.material].waterContentFunction == 0;
}

// Geometry of finite elements, side by side. Gives the lanes without an area.
unsigned MapLanes(const ElementKind& kind, const KindShapes& kindShapes, const std::int32_t* elements,
                  const std::int32_t* nodes, float* shapes) {
    float xy[slotCount * 2 * laneCount];
    float thickness[laneCount];
    for (std::size_t lane = 0; lane < laneCount; ++lane) {
        thickness[lane] = model.elements[static_cast<std::size_t>(elements[lane])].thickness;
        for (std::size_t j = 0; j < kind.slots; ++j) {
            const NodeRec& node = model.nodes[static_cast<std::size_t>(nodes[j * laneCount + lane])];
            xy[2 * j * laneCount + lane] = node.x;
            xy[(2 * j + 1) * laneCount + lane] = node.y;
        }
    }
    const bool axisymmetric = model.problemView == viewAxisymmetric;
    const LaneGeometry geometry{kind.slots,    kind.points,        reinterpret_cast<const float(*)[8]>(kind.N.data()),
                                kindShapes.dN, kindShapes.weights, xy,
                                thickness,     axisymmetric};
    return ChosenBatchKernels().map(geometry, shapes);
}

// Geometry of a batch. Gives the index of its first faulty element, or the number of elements.
std::size_t FillShapes(ElementBatches& b, const KindShapes& kindShapes, std::size_t batch) {
    const ElementKind& kind = b.kinds[b.kindOfBatch[batch]];
    const std::size_t inKind = BatchInKind(kind, batch);
    float* const shapes = b.shapes.data() + kind.firstShape + inKind * kind.ShapesPerBatch();
    const std::int32_t* const elements = b.element.data() + batch * laneCount;
    const auto element = [elements](std::size_t lane) { return static_cast<std::size_t>(elements[lane]); };
    unsigned faultyLanes = 0;
    if (kind.infinite) {
        for (std::size_t lane = 0; lane < laneCount; ++lane) {
            if (!FillShape(kind, kindShapes, element(lane), shapes + lane)) faultyLanes |= 1U << lane;
        }
    } else {
        const std::int32_t* const nodes = b.nodes.data() + kind.firstLoad + inKind * kind.LoadsPerBatch();
        faultyLanes = MapLanes(kind, kindShapes, elements, nodes, shapes);
    }
    if (LacksWaterContent(kind)) faultyLanes = ~0U;
    std::size_t faulty = Elements();
    for (std::size_t lane = 0; lane < laneCount; ++lane) {
        if ((faultyLanes >> lane & 1) != 0) faulty = std::min(faulty, element(lane));
    }
    return faulty;
}

constexpr std::size_t batchesPerTask = 4;

// Runs work(kind, first, end) over all batches of active elements, those of different kinds apart, and stops early when
// Stop was pressed.
template <class Work>
void OverBatches(const ElementBatches& b, const Work& work) {
    RunChunks(b.kindOfBatch.size(), batchesPerTask, [&](std::size_t first, std::size_t end) {
        while (first < end && IsRunning()) {
            const ElementKind& kind = b.kinds[b.kindOfBatch[first]];
            const std::size_t last = std::min(end, kind.firstBatch + kind.batchCount);
            if (kind.slots > 0) work(kind, first, last);
            first = last;
        }
    });
}

void FillAllBatches(ElementBatches& b) {
    std::atomic<std::size_t> faulty{Elements()};
    OverBatches(b, [&](const ElementKind& kind, std::size_t first, std::size_t end) {
        const auto representative = static_cast<std::size_t>(b.element[kind.firstBatch * laneCount]);
        const KindShapes kindShapes = ShapesOf(kind, model.elements[representative]);
        for (std::size_t batch = first; batch < end; ++batch) {
            const std::size_t found = FillShapes(b, kindShapes, batch);
            for (std::size_t known = faulty; found < known && !faulty.compare_exchange_weak(known, found);) {
            }
        }
    });
    b.faultyElement = faulty < Elements() ? static_cast<std::int64_t>(faulty.load()) : -1;
}

[[nodiscard]] int MakeFunctions(ElementBatches& b) {
    if (!MakeTable(b.functions, model.materials.size())) return 0;
    for (std::size_t m = 0; m < b.functions.size(); ++m) {
        ElementBatches::Functions& f = b.functions[m];
        const MaterialRec& material = model.materials[m];
        if (const std::int32_t k = material.conductivityFunction; k > 0) {
            if (!MakeLaneFunction(model.kFunctions[IndexOf(k)].points, f.conductivityTables, f.conductivity)) return 0;
        }
        if (const std::int32_t s = material.waterContentFunction; s > 0) {
            if (!MakeLaneFunction(model.sFunctions[IndexOf(s)].points, f.waterTables, f.water)) return 0;
        }
    }
    return 1;
}

}  // namespace

int SortElementsIntoBatches() {
    model.batches = ElementBatches();
    ElementBatches& b = model.batches;
    std::vector<std::int32_t> kindOfElement;
    if (!SortIntoKinds(b, kindOfElement) || !MakeBatchTables(b) || !FillLanes(b, kindOfElement)) return 0;
    FillNodes(b);
    return 1;
}

int FillElementBatches() {
    if (!MakeFunctions(model.batches)) return 0;
    FillAllBatches(model.batches);
    return IsRunning();
}

int CheckElementBatches() {
    if (model.batches.faultyElement < 0) return 1;
    ElementMatrix K;
    ElementMatrix Cap;
    return ComputeElementMatrices(static_cast<std::size_t>(model.batches.faultyElement), K, Cap);
}

// ---------------------------------------------------------------------------------------------------------------------
// Matrices and loads

namespace {

LaneSettings SettingsOf(const ElementBatches& b, const ElementKind& kind) {
    const MaterialRec& material = model.materials[kind.material];
    return {model.analysisType == transient,
            InitialConductivityHolds(),
            runState.PhaseChangeMode == phaseEstablished,
            runState.currentStep != b.inputs.step,
            StepIncrement(runState.currentStep),
            model.freezingPoint,
            model.latentHeat,
            material.conductivityRatio,
            material.waterContent,
            material.frozenHeatCapacity,
            material.unfrozenHeatCapacity,
            b.functions[kind.material].conductivity,
            b.functions[kind.material].water};
}

LaneTables TablesOfModel() {
    static_assert(sizeof(NodeState) % sizeof(float) == 0 && offsetof(NodeState, temperature) == 0 &&
                  offsetof(NodeState, previous) == sizeof(float));
    return {&model.nodeStates[0].temperature, sizeof(NodeState) / sizeof(float)};
}

LaneBatch BatchAt(ElementBatches& b, const ElementKind& kind, std::size_t batch) {
    const std::size_t inKind = BatchInKind(kind, batch);
    const std::size_t firstPoint = kind.firstPoint + inKind * kind.PointsPerBatch();
    return {kind.slots,
            kind.points,
            reinterpret_cast<const float(*)[8]>(kind.N.data()),
            b.nodes.data() + kind.firstLoad + inKind * kind.LoadsPerBatch(),
            b.shapes.data() + kind.firstShape + inKind * kind.ShapesPerBatch(),
            model.PointResults.data() + 5 * firstPoint,
            model.SlopeFloor.data() + firstPoint,
            model.PhaseState.data() + firstPoint,
            b.oldWater.empty() ? nullptr : b.oldWater.data() + firstPoint};
}

ElementBatches::Inputs PresentInputs() {
    return {runState.currentStep, runState.PhaseChangeMode == phaseEstablished, InitialConductivityHolds(),
            model.temperatureVersion, model.switchedVersion};
}

}  // namespace

int FormElementMatrices(bool& changed) {
    ElementBatches& b = model.batches;
    const float increment = StepIncrement(runState.currentStep);
    const ElementBatches::Inputs inputs = PresentInputs();
    const bool all = !b.entriesFormed || increment != b.increment;
    changed = false;
    if (!all && inputs == b.inputs) return IsRunning();
    const LaneTables tables = TablesOfModel();
    const BatchKernels& kernels = ChosenBatchKernels();
    const bool stepIsNew = runState.currentStep != b.inputs.step;  // and with it the old temperatures of the loads
    std::atomic<bool> anyFormed{false};
    b.entriesFormed = false;  // a stop may leave them half made
    OverBatches(b, [&](const ElementKind& kind, std::size_t first, std::size_t end) {
        const LaneSettings settings = SettingsOf(b, kind);
        LaneHints hints;
        for (std::size_t batch = first; batch < end; ++batch) {
            const LaneBatch lanes = BatchAt(b, kind, batch);
            const std::size_t inKind = BatchInKind(kind, batch);
            float* const entries = b.entries.data() + kind.firstEntry + inKind * kind.EntriesPerBatch();
            float* const loads =
                b.loads.empty() ? nullptr : b.loads.data() + kind.firstLoad + inKind * kind.LoadsPerBatch();
            if (kernels.evaluate(tables, lanes, settings, hints) || all) {
                anyFormed.store(true, std::memory_order_relaxed);
                kernels.form(tables, lanes, settings, entries, loads);
            } else if (settings.transient && stepIsNew) {
                kernels.load(tables, lanes, loads);
            }
        }
    });
    changed = anyFormed;
    if (!IsRunning()) return 0;
    b.inputs = inputs;
    b.entriesFormed = true;
    b.increment = increment;
    return 1;
}

PointShape ShapeAtPoint(std::size_t e, std::size_t point) {
    const ElementBatches& b = model.batches;
    const auto place = static_cast<std::size_t>(b.placeOfElement[e]);
    const std::size_t batch = place / laneCount;
    const ElementKind& kind = b.kinds[b.kindOfBatch[batch]];
    const float* const shape = b.shapes.data() + kind.firstShape + BatchInKind(kind, batch) * kind.ShapesPerBatch() +
                               point * (2 * kind.slots + 2) * laneCount + place % laneCount;
    PointShape at{};
    for (std::size_t j = 0; j < kind.slots; ++j) {
        at.N[kind.slot[j]] = kind.N[point][j];
        at.B[kind.slot[j]] = shape[j * laneCount];
        at.B[slotCount + kind.slot[j]] = shape[(kind.slots + j) * laneCount];
    }
    at.weight = shape[2 * kind.slots * laneCount];
    at.depth = shape[(2 * kind.slots + 1) * laneCount];
    return at;
}

void RecordedElementMatrices(std::size_t e, ElementMatrix& K, ElementMatrix& Cap) {
    K.fill(0);
    Cap.fill(0);
    for (std::size_t i = 0; i < PointCount(e); ++i) {
        const PointShape at = ShapeAtPoint(e, i);
        Conductivity D;
        StoredConductivityAtPoint(D, e, i);
        AddConduction(K, at, D);
        if (model.analysisType == transient) AddCapacity(Cap, at, PointResultsOf(e).heatCapacity[i]);
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Crossings

namespace {

// Adds the crossings of one batch, lane by lane, at points that are not switched on yet.
void CollectCrossings(const ElementBatches& b, const ElementKind& kind, std::size_t batch, const LaneBatch& lanes,
                      const float* now, const std::uint16_t* crossed, std::vector<PointCrossing>& found) {
    for (std::size_t lane = 0; lane < b.laneInUse[batch]; ++lane) {
        const auto e = static_cast<std::size_t>(b.element[batch * laneCount + lane]);
        for (std::size_t point = 0; point < kind.points; ++point) {
            const unsigned bits = static_cast<unsigned>(crossed[point]) >> lane;
            const std::size_t inBatch = point * laneCount + lane;
            if ((bits & 0x101U) == 0 || lanes.phase[inBatch] != 0) continue;
            const auto pointIndex = static_cast<std::size_t>(model.PointResultOffset[e]) + point;
            const std::size_t place = static_cast<std::size_t>(lanes.phase - model.PhaseState.data()) + inBatch;
            found.push_back({pointIndex, place, now[inBatch], (bits & 1U) != 0});
        }
    }
}

// The crossings of the batches of one task.
struct FoundCrossings {
    std::vector<PointCrossing> list;
    bool fits = true;
};

[[nodiscard]] int JoinCrossings(const std::vector<FoundCrossings>& found, std::vector<PointCrossing>& crossings) {
    std::size_t count = 0;
    for (const FoundCrossings& part : found) {
        if (!part.fits) return ShowOutOfMemory();
        count += part.list.size();
    }
    crossings.clear();
    if (!ReserveTable(crossings, count)) return 0;
    for (const FoundCrossings& part : found) crossings.insert(crossings.end(), part.list.begin(), part.list.end());
    if (!std::ranges::is_sorted(crossings, {}, &PointCrossing::pointIndex)) {
        std::ranges::sort(crossings, {}, &PointCrossing::pointIndex);
    }
    return 1;
}

}  // namespace

int FindPointCrossings(std::vector<PointCrossing>& crossings) {
    ElementBatches& b = model.batches;
    const LaneTables tables = TablesOfModel();
    const BatchKernels& kernels = ChosenBatchKernels();
    std::vector<FoundCrossings> found;
    if (!MakeTable(found, b.kindOfBatch.size() / batchesPerTask + 1)) return 0;
    OverBatches(b, [&](const ElementKind& kind, std::size_t first, std::size_t end) {
        std::array<float, largestRule * laneCount> now;
        std::array<std::uint16_t, largestRule> crossed;
        FoundCrossings& own = found[first / batchesPerTask];
        for (std::size_t batch = first; batch < end; ++batch) {
            const LaneBatch lanes = BatchAt(b, kind, batch);
            if (!kernels.cross(tables, lanes, model.freezingPoint, now.data(), crossed.data())) continue;
            const auto collect = [&] { CollectCrossings(b, kind, batch, lanes, now.data(), crossed.data(), own.list); };
            const std::size_t most = own.list.size() + laneCount * kind.points;
            const std::size_t room = most > own.list.capacity() ? 2 * most : 0;
            own.fits = TryMemory(room * sizeof(PointCrossing), collect) && own.fits;
        }
    });
    return JoinCrossings(found, crossings) && IsRunning();
}

}  // namespace kaldra
