#include "model/data_file.h"

#include "convergence/graph_memory.h"
#include "platform/number_text.h"
#include "run/messages.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

// Uses every section and column. No line stands in it twice.
// A / stands for the end of a line.
constexpr std::string_view fullProblem =
    "a remark before the file/FILEINFO/KALDRA 4.0/"
    "TITLE/   The first title line has more than fifty-four characters in all/TIME is the first word of a title that "
    "is longer than the file keeps/"
    "third line is cut/the fourth line is cut/"
    "ANALYSIS/2 3 3.5E+2 0 -0.5/CONVERGE/25 0.5 10/TIME 2/1 1.5 1.75 0/2 2.5 4.0/"
    "MATERIAL 2/1 1 1 2.0 3.0 0.25/2 0 0 1 1 0/KFUNCTION 1/1 2 0.5 1.5/conductivity/-10 2/10 1/"
    "SFUNCTION 1/1 2 0 0/unfrozen water/-8 0/0 1/MFUNCTION 1/1 2 0 0.0/modifier/-7 0.5/7 1.5/"
    "BFUNCTION 1/1 2 3 4 0 0.25 1/season/0 -6/365 6/"
    "NODE 4/1 0 0 -5 1 1 1 1 2.5/2 1 0 -4 0 1 1 0 2.5/3 1 1 -3 1 0 1 0 9/4 0 1 7 2 0 0 1 -2/"
    "ELEMENT 2/1 1 2 3 0 0 0 0 0 1 3 0.75/2 1 3 4 0 0 0 0 0 2 1 1 -1 1/POLE 1/-3 4.5/"
    "FLUX 1/1 1/1 0 0 1 2/qBOUNDARY 1/1 2 1 9 12.5 1 1/what follows is ignored/";

// The problem with one line replaced; CR LF line ends, as its writer leaves them.
std::string Changed(std::string_view line = "CONVERGE", std::string_view by = "CONVERGE") {
    std::string text = '/' + std::string(fullProblem);
    const std::string whole = '/' + std::string(line) + '/';
    const std::size_t at = text.find(whole);
    EXPECT_TRUE(at != std::string::npos && text.find(whole, at + 1) == std::string::npos) << line;
    text.replace(at, whole.size(), '/' + std::string(by) + '/');
    std::string lines;
    for (const char c : text.substr(1)) lines += c == '/' ? "\r\n" : std::string(1, c);
    return lines;
}

class DataFile : public KaldraTest {
protected:
    int Read(const std::string& text, int (*reader)() = ReadDataFile) {
        (void)FreeModel();
        InitModel(1);
        model.dataFileName = WriteFile("reader.kdr", text);
        return reader();
    }
};

TEST_F(DataFile, EveryColumnReachesItsField) {
    ASSERT_EQ(Read(Changed()), 1);
    const ProblemModel& m = model;
    EXPECT_THAT(m.titleLine, ElementsAre("The first title line has more than fifty-four characte",
                                         "TIME is the first word of a title that is longer than ", "third line is ",
                                         "the fourth lin"));
    const MaterialRec& soil = m.materials[0];
    const BoundaryFunction& season = m.bFunctions[0];
    const ElementRec &first = m.elements[0], &infinite = m.elements[1];
    const QBoundaryRec& edge = m.qBoundaries[0];
    EXPECT_THAT((std::vector{m.analysisType, m.problemView, m.useDoubleStore, m.maxIterations, m.maxPhasePoints,
                             graphMemory.GraphLastIteration}),
                ElementsAre(2, 3, 1, 25, 10, 25));
    EXPECT_THAT((std::vector{m.latentHeat, m.freezingPoint, m.tolerance, m.poleX, m.poleY}),
                ElementsAre(350.0F, -0.5F, 0.5F, -3.0F, 4.5F));
    EXPECT_THAT((std::vector{m.timeSteps[0].saveFlag, m.timeSteps[1].saveFlag, season.pointCount, season.xKind,
                             season.yKind, season.repeat}),
                ElementsAre(0, 1, 2, 3, 4, 1));
    EXPECT_THAT((std::vector{m.timeSteps[0].increment, m.timeSteps[0].elapsed, season.period, season.weight}),
                ElementsAre(1.5F, 1.75F, 365.0F, 0.25F));
    EXPECT_THAT(
        (std::vector{soil.frozenHeatCapacity, soil.unfrozenHeatCapacity, soil.waterContent, soil.conductivityRatio}),
        ElementsAre(2.0F, 3.0F, 0.25F, 1.0F));
    EXPECT_THAT((std::vector{m.kFunctions[0].smoothing, m.kFunctions[0].weight, m.kFunctions[0].points[1].x,
                             m.sFunctions[0].points[0].x, m.mFunctions[0].points[0].y}),
                ElementsAre(0.5F, 1.5F, 10.0F, -8.0F, 0.5F));
    const auto node = [&](std::size_t n) {
        const NodeRec& r = m.nodes[n];
        return FormatText("%d %d %d %.6f %.6f %.6f %.6f", r.bcType, r.bcFunction, r.modifierFunction, r.bcValue,
                          r.bcInput, m.nodeStates[n].temperature, m.nodeStates[n].previous);
    };
    EXPECT_EQ(node(0), "1 1 1 -5.000000 0.000000 2.500000 2.500000");
    EXPECT_EQ(node(1), "0 0 0 0.000000 0.000000 -0.500000 -0.500000");
    EXPECT_EQ(node(2), "1 0 1 -3.000000 -3.000000 -0.500000 -0.500000");
    EXPECT_EQ(node(3), "2 0 0 7.000000 7.000000 -2.000000 -2.000000");
    EXPECT_THAT(infinite.nodes, ElementsAre(1, 3, 4, 0, 0, 0, 0, 0));
    EXPECT_THAT((std::vector{infinite.material, infinite.integrationPoints, infinite.infiniteR, infinite.infiniteS,
                             first.infiniteR}),
                ElementsAre(2, 1, -1, 1, 0));
    EXPECT_THAT((std::vector{first.thickness, m.fluxSections[0].lines[0].y2, edge.q}), ElementsAre(0.75F, 2, 12.5F));
    EXPECT_THAT((std::vector{edge.node1, edge.node2, edge.element, edge.edgeKind, edge.bFunction, edge.modifier}),
                ElementsAre(1, 2, 1, 9, 1, 1));
}

TEST_F(DataFile, BadLinesAreShown) {
    const std::string longLine = "1 2 " + std::string(100, 'x');
    struct BadLine {
        std::string_view line;
        std::vector<std::string_view> by;
        std::string_view shown = "?";  // in message 1150; ? is the replacement itself
        int message = 1150;
    };
    const std::vector<BadLine> table{
        {"KALDRA 4.0", {"KALDRA", "KALDRA nan"}},
        {"KALDRA 4.0", {"KALDRA 3.99"}, "", 1054},
        {"FILEINFO", {"fileinfo"}, "", 1054},
        {"CONVERGE", {"CONVERG", "converge", "\tCONVERGE"}},
        {"NODE 4", {"/NODE 4"}, ""},  // a blank line where a keyword is expected
        {"2 3 3.5E+2 0 -0.5", {"2 3 3.5E+2 0", "2 3 1e39 0 -0.5", "x"}},
        {"25 0.5 10", {"25 0.5", "x 0.5 10"}},
        {"25 0.5 10", {longLine}, std::string_view(longLine).substr(0, 94)},
        {"TIME 2", {"TIME", "TIME -1", "TIME x"}},
        {"TIME 2", {"TIME 3", "TIME 2000000000"}, "MATERIAL 2"},
        {"1 1.5 1.75 0", {"1 1.5", "x 1.5 1.75 0", "1 1.5 1.75 2147483648"}},
        {"MATERIAL 2", {"MATERIAL 256", "MATERIAL", "MATERIAL -1"}},
        {"MATERIAL 2", {"MATERIAL 1"}, "2 0 0 1 1 0"},
        {"1 1 1 2.0 3.0 0.25", {"0 1 1 2 3 0.25", "3 1 1 2 3 0.25", "1 1 1 2.0 3.0", "1 2 1 2 3 0", "1 1 -1 2 3 0"}},
        {"2 0 0 1 1 0", {"2 0 2 1 1 0", "-1 0 0 1 1 0"}},
        {"KFUNCTION 1", {"KFUNCTION 256"}},
        {"1 2 0.5 1.5", {"1 2 0.5", "1 -2 0.5 1.5", "2 2 0.5 1.5", "1 2 inf 1.5"}},
        {"1 2 0.5 1.5", {"1 3 0.5 1.5", "1 2000000000 0 0"}, "SFUNCTION 1"},
        {"-10 2", {"-10", "-10 nan"}},
        {"SFUNCTION 1", {"SFUNCTION -1", "SFUNCTION 256"}},
        {"1 2 0 0.0", {"0 2 0 0.0"}},
        {"BFUNCTION 1", {"BFUNCTION 256"}},
        {"1 2 3 4 0 0.25 1", {"1 2 3 4 0", "1 2 3 4 0 0.25 99999999999", "2 2 3 4 0 0 1"}},
        {"NODE 4", {"NODE 2000000000"}, "ELEMENT 2"},
        {"3 1 1 -3 1 0 1 0 9", {"3 1 1 -3 1 0 1 0", "3 1 inf -3 1 0 1 0 9", "3 1 1 -3 1 2 1 0 9", "3 1 1 0 1 0-1 0 9"}},
        {"3 1 1 -3 1 0 1 0 9", {"4 1 1 -3 1 0 1 0 9"}, "", 1133},
        {"1 1 2 3 0 0 0 0 0 1 3 0.75",
         {"1 1 2 3 0 0 0 0 0 1 3", "1 1 2 3 0 0 0 0 0 0 3 1", "1 1 2 3 0 0 0 0 5 1 3 1", "1 1 2 3 -1 0 0 0 0 1 3 1",
          "1 1 2 3 0 0 0 0 0 1 2 1"}},
        {"1 1 2 3 0 0 0 0 0 1 3 0.75", {"2 1 2 3 0 0 0 0 0 1 3 0.75"}, "", 1051},
        {"1 1 2 3 0 0 0 0 0 1 3 0.75", {"1 1 2 3 0 0 0 0 0 2 3 0.75"}, "", 1052},
        {"2 1 3 4 0 0 0 0 0 2 1 1 -1 1", {"2 1 3 4 0 0 0 0 0 3 1 1", "2 1 3 4 0 0 0 0 0 2 10 1"}},
        {"ELEMENT 2", {"ELEMENT 0"}, "", 1052},
        {"POLE 1", {"POLE", "POLE x"}},
        {"FLUX 1", {"FLUX -1"}},
        {"FLUX 1", {"FLUX 2000000000"}, "qBOUNDARY 1"},
        {"1 1", {"1", "2 1", "1 -1"}},
        {"1 1", {"1 2"}, "qBOUNDARY 1"},
        {"1 0 0 1 2", {"1 0 0 1"}},
        {"qBOUNDARY 1", {"QBOUNDARY 1", "qBOUNDARY", "qBOUNDARY -1"}},
        {"1 2 1 9 12.5 1 1",
         {"1 2 1 9 12.5 1", "0 2 1 9 1 1 1", "1 0 1 9 1 1 1", "1 2 0 9 1 1 1", "1 5 1 9 1 1 1", "-1 2 1 9 1 1 1",
          "1 2 3 9 1 1 1", "1 2 1 9 1 2 1", "1 2 1 9 1 1 -1"}},
    };
    for (const auto& [line, replacements, shown, message] : table) {
        for (const std::string_view by : replacements) {
            EXPECT_EQ(Read(Changed(line, by)), 0) << by;
            EXPECT_EQ(TakeText(message), std::string(StringText(message)).append(shown == "?" ? by : shown)) << by;
        }
    }
}

TEST_F(DataFile, OddButLegalLinesAreRead) {
    struct OddLine {
        std::string_view line, by;
        bool (*holds)();
    };
    const std::string beyond = "1 1.5 1.75" + std::string(84, ' ') + "0";
    const std::vector<OddLine> table{
        {"TIME 2", "T\rIME\r \r2", [] { return model.stepCount == 2; }},
        {"TIME 2", "    TIMES\t0x2 steps", [] { return model.stepCount == 2; }},  // the count of TIME may carry a base
        {"1 1.5 1.75 0", beyond, [] { return model.timeSteps[0].saveFlag == 1; }},  // 0 is character 95
        {"1 1.5 1.75 0", "77\t+1.5E0 .175e1 5", [] { return model.timeSteps[0].saveFlag == 5; }},
        {"1 0 0 -5 1 1 1 1 2.5", "1 0 0 -5 1010112.5", [] { return model.nodeStates[0].temperature == 2.5F; }},
        {"1 0 0 -5 1 1 1 1 2.5", "1 0 0 -5 1 1 1 2 2.5", [] { return model.nodeStates[0].temperature == -0.5F; }},
        {"2 0 0 1 1 0", "1 1 1 2 3 0.5/2 0 0 1 1 0", [] { return model.materials[0].waterContent == 0.5F; }},
        {"MFUNCTION 1", "MFUNCTION 2/2 0 0 0/absent/MFUNCTION 1", [] { return model.mFunctions.size() == 1; }},
        {"1 2 3 4 0 0.25 1", "1 2 3 4 0 0.25", [] { return model.bFunctions[0].repeat == 0; }},
        {"2 1 3 4 0 0 0 0 0 2 1 1 -1 1", "2 1 3 4 0 0 0 0 0 2 1 1 -1", [] { return model.elements[1].infiniteS == 0; }},
        {"2 1 3 4 0 0 0 0 0 2 1 1 -1 1", "2 1 3 4 0 0 0 0 0 2 7 1 -1", [] { return PointCount(1) == 7; }},
        {"2 1 3 4 0 0 0 0 0 2 1 1 -1 1", "2 1 3 4 0 0 0 0 0 1 -4 1", [] { return PointCount(1) == 0; }},
        {"-3 4.5", "somewhere", [] { return model.poleX == 0 && model.poleY == 0; }},
        {"FLUX 1", "FLUX 0/POLE 0/FLUX 1", [] { return model.fluxSectionCount == 1 && model.poleX == 0; }},
        {"1 1", "1 0/qBOUNDARY 0", [] { return model.qBoundaries.size() == 1 && model.qBoundaryCount == 0; }},
        {"NODE 4", "CONVERGE/7 1 1/NODE 4", [] { return model.maxIterations == 7; }},
    };
    for (const OddLine& odd : table) {
        EXPECT_EQ(Read(Changed(odd.line, odd.by)), 1) << odd.by;
        EXPECT_TRUE(odd.holds()) << odd.by;
    }
}

TEST_F(DataFile, CutFilesAreShown) {
    const std::string text = Changed();
    for (const auto& [before, message] : {std::pair{"FILEINFO", 1054},
                                          {"KALDRA", 1150},
                                          {"third", 1150},
                                          {"25 0.5", 1150},
                                          {"CONVERGE", 1053},
                                          {"unfrozen", 1150},
                                          {"3 1 1 -3", 1150},
                                          {"-3 4.5", 1150},
                                          {"qBOUNDARY", 1053}}) {
        EXPECT_EQ(Read(text.substr(0, text.find(before))), 0) << before;
        EXPECT_THAT(TakeMessages(), ElementsAre(message)) << before;
    }
    model.dataFileName = Path("none.kdr");
    EXPECT_EQ(ReadDataFile() + ReadTimeSequence(), 0);
    EXPECT_THAT(TakeMessages(), ElementsAre(1020, 1020));
}

TEST_F(DataFile, TheShortReaderTakesTheSequenceOnly) {
    ASSERT_EQ(Read(Changed("MATERIAL 2", "anything"), ReadTimeSequence), 1);
    EXPECT_TRUE(model.stepCount == 2 && model.timeSteps[1].elapsed == 4 && model.analysisType == transient);
    EXPECT_TRUE(model.useDoubleStore == 0 && model.materialCount == 0);
    EXPECT_EQ(Read(Changed("1 1.5 1.75 0", "1 x"), ReadTimeSequence), 0);
    EXPECT_EQ(Read(Changed("2 3 3.5E+2 0 -0.5", "2"), ReadTimeSequence), 0);
    EXPECT_EQ(Read("TITLE\na\nb\nc\nd\nANALYSIS\n1 1 0 1 0\n", ReadTimeSequence), 0);
    EXPECT_THAT(TakeMessages(), ElementsAre(1150, 1150, 1053));
}

}  // namespace
}  // namespace kaldra
