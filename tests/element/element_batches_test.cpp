// The batches against the plain procedures, bit for bit: every family, both views, every processor.

#include "element/element_batches.h"

#include <bit>
#include <cmath>

#include "element/element_matrices.h"
#include "element/phase_change.h"
#include "platform/number_text.h"
#include "platform/parallel.h"
#include "platform/processor.h"
#include "run/run_state.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

class ElementBatchesTest : public KaldraTest {
protected:
    // Points of a function from -4 to 4, rising to 1 in uneven steps.
    static std::vector<std::string> Ascent(int count) {
        std::vector<std::string> points;
        for (int i = 0; i < count; ++i) {
            const double part = i / (count - 1.0);
            points.push_back(FormatText("%9.5f %9.5f", 8 * part - 4, 0.1 + 0.9 * part * part));
        }
        return points;
    }
    // Forty cells, bent and turned in their numbering, of five kinds and four materials; NULL elements among them, and
    // one without points.
    static Problem MixedProblem(const char* analysis) {
        Problem problem;
        problem.analysis = analysis;
        problem.times = {"1 2.5 2.5 1", "2 2.5 5 1"};
        problem.pole = "POLE 1\n-9 -9";
        problem.K = {FunctionRows(1, {"-20 2.2", "-3 2.1", "-1 1.9", "0 1.6", "6 1.5", "20 1.45"}, "0 0.5"),
                     FunctionRows(2, {"-30 1.1", "30 1.1"}), FunctionRows(3, Ascent(9)), FunctionRows(4, Ascent(10))};
        problem.S = {FunctionRows(1, {"-5 0", "-2 0.1", "-0.5 0.5", "0 1", "4 1"}, "0 0.3"),
                     FunctionRows(2, {"-1 1", "1 1"}), FunctionRows(3, Ascent(17)), FunctionRows(4, Ascent(18))};
        problem.materials = {"1 1 1 1.9 2.7 0.41", "2 2 2 1.5 1.6 0.1", "3 3 3 2.2 2.3 0.33", "4 4 4 2 2.5 0.2",
                             "5 0 0 1 1 0"};
        for (int cell = 0; cell < 200; ++cell) {
            AddCell(problem, cell);
            if (cell % 9 == 8) problem.Element("1 2 3 0 0 0 0 0", cell % 2 == 0 ? 7 : 4, "1", 5);
        }
        problem.Element("1 2 3 0 0 0 0 0", 0);
        return problem;
    }
    static void AddCell(Problem& problem, int cell) {
        const double x = 2.0 * (cell % 8);
        const double y = 2.0 * (cell / 8);
        const double bend = 0.01 * ((cell * 7) % 11);
        const double corners[8][2]{{x + 2, y + 2 - bend}, {x + bend, y + 2}, {x, y},     {x + 2, y + bend},
                                   {x + 1, y + 2},        {x, y + 1},        {x + 1, y}, {x + 2 + bend, y + 1}};
        std::array<int, 8> node{};
        for (int i = 0; i < 8; ++i) {
            const int turned = (i + cell) % 8;  // so that the slots' order is not the nodes'
            node[static_cast<std::size_t>(turned)] = problem.Node(corners[turned][0], corners[turned][1]);
        }
        struct Kind {
            std::array<int, 8> used;
            int points;
            std::array<const char*, 2> rest;
        };
        static const Kind kinds[]{{{1, 1, 1, 1, 0, 0, 0, 0}, 4, {"1.5", "0.75"}},
                                  {{1, 1, 1, 1, 1, 1, 1, 1}, 9, {"2", "1.5"}},
                                  {{1, 1, 1, 0, 0, 0, 0, 0}, 3, {"1", "1"}},
                                  {{1, 1, 1, 1, 0, 0, 1, 0}, 9, {"0.5", "3"}},
                                  {{1, 1, 1, 1, 0, 1, 0, 0}, 4, {"1.25", "1 1 0"}}};
        const Kind& kind = kinds[cell % 5];
        std::string slots;
        for (std::size_t i = 0; i < 8; ++i) slots += std::to_string(kind.used[i] != 0 ? node[i] : 0) + ' ';
        problem.Element(slots, kind.points, cell / 20 % 3 == 2 ? kind.rest[1] : kind.rest[0], 1 + cell % 4);
    }

    static void SetTemperatures(double shift) {
        for (std::size_t n = 0; n < model.nodeStates.size(); ++n) {
            const double old = 3 * std::sin(0.7 * static_cast<double>(n)) + 0.1 * runState.currentStep;
            const double change = n % 4 == 0 ? 0 : shift * std::cos(0.3 * static_cast<double>(n));
            model.nodeStates[n] = {static_cast<float>(old + change), static_cast<float>(old), 0};
        }
        ++model.temperatureVersion;
    }
    static void SetPhases() {
        for (std::size_t p = 0; p < model.PhaseState.size(); ++p) {
            model.PhaseState[p] = p % 3 == 0 ? pointThawing : 0;
            model.SlopeFloor[p] = p % 5 == 0 ? 0.2F : 0;
        }
    }
    // What stands at the points of all elements; the lanes left over in a batch have values of their own.
    struct AtPoints {
        std::vector<float> record, floor;
    };
    static AtPoints PointTables() {
        AtPoints tables;
        for (std::size_t e = 0; e < static_cast<std::size_t>(model.elementCount); ++e) {
            for (std::size_t point = 0; point < PointCount(e); ++point) {
                const PointRuns runs = PointResultsOf(e);
                for (const PointRun& run :
                     {runs.conductivity, runs.temperature, runs.waterContent, runs.waterSlope, runs.heatCapacity}) {
                    tables.record.push_back(run[point]);
                }
                tables.floor.push_back(model.SlopeFloor[PointPlace(e, point)]);
            }
        }
        return tables;
    }
    static bool TakesPart(std::size_t e) { return !IsNullElement(model.elements[e]) && PointCount(e) > 0; }
    // Entry (i, j) of an element in model.batches.
    static float Entry(std::size_t e, std::size_t i, std::size_t j) {
        const ElementBatches& b = model.batches;
        const auto place = static_cast<std::size_t>(b.placeOfElement[e]);
        const ElementKind& kind = b.kinds[b.kindOfBatch[place / laneCount]];
        const std::size_t batch = place / laneCount - kind.firstBatch;
        return b.entries[kind.firstEntry + batch * kind.EntriesPerBatch() + (i * kind.slots + j) * laneCount +
                         place % laneCount];
    }
    // Entry i of Cap T old of an element.
    static float Load(std::size_t e, std::size_t i) {
        const ElementBatches& b = model.batches;
        const auto place = static_cast<std::size_t>(b.placeOfElement[e]);
        const ElementKind& kind = b.kinds[b.kindOfBatch[place / laneCount]];
        const std::size_t batch = place / laneCount - kind.firstBatch;
        return b.loads[kind.firstLoad + batch * kind.LoadsPerBatch() + i * laneCount + place % laneCount];
    }
    // What the plain procedures give for the matrices of all elements, and in the tables of the model.
    static std::vector<float> PlainEntries() {
        std::vector<float> entries;
        for (std::size_t e = 0; e < static_cast<std::size_t>(model.elementCount); ++e) {
            if (!TakesPart(e)) continue;
            ElementMatrix K, Cap, recordedK, recordedCap;
            EXPECT_EQ(ComputeElementMatrices(e, K, Cap), 1);
            RecordedElementMatrices(e, recordedK, recordedCap);
            EXPECT_TRUE(K == recordedK && Cap == recordedCap) << e;  // by the shapes of the batches
            for (std::size_t i = 0; i < K.size(); ++i) {
                const ElementRec& element = model.elements[e];
                if (element.nodes[i / slotCount] == 0 || element.nodes[i % slotCount] == 0) continue;
                entries.push_back(model.analysisType == transient ? K[i] * 2.5F + Cap[i] : K[i]);
            }
        }
        return entries;
    }
    static std::vector<float> BatchEntries() {
        std::vector<float> entries;
        for (std::size_t e = 0; e < static_cast<std::size_t>(model.elementCount); ++e) {
            if (!TakesPart(e)) continue;
            const auto place = static_cast<std::size_t>(model.batches.placeOfElement[e]);
            const std::size_t slots = model.batches.kinds[model.batches.kindOfBatch[place / laneCount]].slots;
            for (std::size_t i = 0; i < slots * slots; ++i) entries.push_back(Entry(e, i / slots, i % slots));
        }
        return entries;
    }
};

void ExpectSameBits(const std::vector<float>& a, const std::vector<float>& b, const char* what) {
    ASSERT_EQ(a.size(), b.size()) << what;
    for (std::size_t i = 0; i < a.size(); ++i) {
        ASSERT_EQ(std::bit_cast<std::uint32_t>(a[i]), std::bit_cast<std::uint32_t>(b[i])) << what << ' ' << i;
    }
}

// Once the plain procedures, then the batches on every processor; what a step keeps of its start is used again.
TEST_F(ElementBatchesTest, GiveTheBitsOfThePlainProcedures) {
    for (const char* analysis : {"1 1 0 1 0", "1 2 0 1 0", "2 1 334 1 -0.1", "2 2 334 1 -0.1"}) {
        ASSERT_TRUE(Prepare(MixedProblem(analysis)));
        for (int round = 0; round < 8; ++round) {
            runState.currentStep = model.analysisType == transient ? 1 + round / 4 : 0;
            runState.PhaseChangeMode = round % 4 < 2 ? phaseSearching : phaseEstablished;
            SetTemperatures(round % 2 == 0 ? 1.7 : 1e-3);
            SetPhases();
            std::ranges::fill(model.PointResults, -1.0F);  // seen where nothing is recorded
            const std::vector<float> entries = PlainEntries();
            const AtPoints plain = PointTables();
            for (const auto level : {ProcessorLevel::Plain, ProcessorLevel::Avx2, ProcessorLevel::Avx512}) {
                LimitProcessorLevel(level);
                SetThreadCount(level == ProcessorLevel::Plain ? 1 : 2);
                ASSERT_EQ(FillElementBatches(), 1);
                SetPhases();
                ++model.switchedVersion;
                std::ranges::fill(model.PointResults, -1.0F);
                bool changed = false;
                ASSERT_EQ(FormElementMatrices(changed), 1);
                EXPECT_TRUE(changed);
                const AtPoints batched = PointTables();
                ExpectSameBits(batched.record, plain.record, "record");
                ExpectSameBits(batched.floor, plain.floor, "floor");
                ExpectSameBits(BatchEntries(), entries, "entries");
            }
        }
    }
}

TEST_F(ElementBatchesTest, EveryPointHasItsOwnPlace) {
    ASSERT_TRUE(Prepare(MixedProblem("2 1 334 1 -0.1")));
    std::ranges::fill(model.SlopeFloor, -1.0F);
    const auto forAll = [](auto use) {
        float number = 0;
        for (std::size_t e = 0; e < static_cast<std::size_t>(model.elementCount); ++e) {
            for (std::size_t point = 0; point < PointCount(e); ++point) {
                const PointRuns runs = PointResultsOf(e);
                for (const PointRun& run :
                     {runs.conductivity, runs.temperature, runs.waterContent, runs.waterSlope, runs.heatCapacity}) {
                    use(run[point], ++number);
                }
                use(model.SlopeFloor.at(PointPlace(e, point)), ++number);
            }
        }
        return number;
    };
    EXPECT_EQ(forAll([](float& value, float number) { value = number; }), 6.0F * static_cast<float>(model.pointTotal));
    forAll([](const float& value, float number) { EXPECT_EQ(value, number); });
}

// Nothing is formed again while nothing has changed, and all of it for another increment.
TEST_F(ElementBatchesTest, FormOnlyWhatIsNew) {
    ASSERT_TRUE(Prepare(MixedProblem("2 1 334 1 -0.1")));
    runState.currentStep = 1;
    SetTemperatures(1.7);
    bool changed = false;
    ASSERT_EQ(FormElementMatrices(changed), 1);
    std::ranges::fill(model.batches.entries, 9.0F);  // seen where they are left
    ASSERT_EQ(FormElementMatrices(changed), 1);
    EXPECT_FALSE(changed);
    ++model.temperatureVersion;  // looked at again, and found to be the same
    ASSERT_EQ(FormElementMatrices(changed), 1);
    EXPECT_TRUE(!changed && Entry(0, 0, 0) == 9.0F);
    model.nodeStates[IndexOf(model.elements[0].nodes[0])].temperature += 1;
    ++model.temperatureVersion;
    ASSERT_EQ(FormElementMatrices(changed), 1);
    EXPECT_TRUE(changed && Entry(0, 0, 0) != 9.0F && Entry(1, 0, 0) == 9.0F);
    model.timeSteps[0].increment = 3;
    ASSERT_EQ(FormElementMatrices(changed), 1);
    EXPECT_TRUE(changed && Entry(1, 0, 0) != 9.0F);
}

// A new step brings new old temperatures, also where the matrices stay as they are: cells of constant properties.
TEST_F(ElementBatchesTest, LoadsAreThoseOfTheStep) {
    ASSERT_TRUE(Prepare(MixedProblem("2 1 334 1 -0.1")));
    SetTemperatures(1.7);
    for (const std::int32_t step : {1, 2}) {
        runState.currentStep = step;
        for (NodeState& state : model.nodeStates) state.previous += static_cast<float>(step);
        ++model.temperatureVersion;
        bool changed = false;
        ASSERT_EQ(FormElementMatrices(changed), 1);
        for (std::size_t e = 0; e < static_cast<std::size_t>(model.elementCount); ++e) {
            if (!TakesPart(e)) continue;
            ElementMatrix K;
            ElementMatrix Cap;
            RecordedElementMatrices(e, K, Cap);
            std::size_t used = 0;
            for (std::size_t i = 0; i < slotCount; ++i) {
                if (model.elements[e].nodes[i] == 0) continue;
                float load = 0;
                for (std::size_t j = 0; j < slotCount; ++j) {
                    const std::int32_t node = model.elements[e].nodes[j];
                    const double old = node == 0 ? 0.0 : static_cast<double>(model.nodeStates[IndexOf(node)].previous);
                    load = static_cast<float>(static_cast<double>(load) +
                                              static_cast<double>(Cap[i * slotCount + j]) * old);
                }
                EXPECT_EQ(Load(e, used++), load) << "step " << step << ", element " << e;
            }
        }
    }
}

}  // namespace
}  // namespace kaldra
