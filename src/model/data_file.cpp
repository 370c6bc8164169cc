#include "model/data_file.h"

#include <algorithm>
#include <array>
#include <limits>

#include "convergence/graph_memory.h"
#include "model/data_rows.h"
#include "model/line_reader.h"
#include "model/problem_model.h"
#include "platform/memory.h"
#include "platform/number_text.h"
#include "run/messages.h"
#include "run/warnings.h"

namespace kaldra {

namespace {

// The data file under the reader. References are checked when everything is read, so it notes where the rows stand.
struct DataFile {
    File file;
    LineBuffer line;
    std::int64_t lineNumber = 0;    // of `line`, from 1
    bool sequenceOnly = false;      // ReadTimeSequence: a missing line is message 1053
    std::int64_t cutLines = 0;      // lines whose end was not seen,
    std::int64_t firstCutLine = 0;  // and the first of them

    std::int64_t firstNodeLine = 0;  // 0: no such section
    std::int64_t firstElementLine = 0;
    std::int64_t firstEdgeLine = 0;
    std::array<std::int64_t, largestSmallTable> materialLines{};
};

// ---------------------------------------------------------------------------------------------------------------------
// Lines and fields

int BadLine(const DataFile& in) { return ShowErrorWithText(1150, in.line.View()); }

// Reads a line that has to be there.
[[nodiscard]] int NextLine(DataFile& in) {
    const int result = ReadLine(in.file, in.line);
    if (result == 1) {
        ++in.lineNumber;
        return 1;
    }
    return result == 0 && in.sequenceOnly ? ShowError(1053) : BadLine(in);
}

// Takes the line in hand as a row, if it holds one.
[[nodiscard]] int Accept(DataFile& in, const RowScan& scan) {
    if (in.line.cut && in.cutLines++ == 0) in.firstCutLine = in.lineNumber;
    return scan.whole ? 1 : BadLine(in);
}

// Reads a line that has to hold a row: `scan` fills `records` in.
template <class... Records>
[[nodiscard]] int ReadRow(DataFile& in, RowScan (*scan)(std::string_view, Records&...), Records&... records) {
    return NextLine(in) && Accept(in, scan(in.line.View(), records...));
}

constexpr std::int32_t unlimited = std::numeric_limits<std::int32_t>::max();

// Takes the count behind the keyword of the line in hand.
[[nodiscard]] int TakeCount(DataFile& in, std::int32_t& count, std::int32_t limit = unlimited,
                            RowScan (*scan)(std::string_view, std::int32_t&) = ScanCountRow) {
    if (!Accept(in, scan(in.line.View(), count))) return 0;
    return count >= 0 && count <= limit ? 1 : BadLine(in);
}

// Empties a table that `count` rows will fill. Memory is taken only for as many rows as the file can hold.
template <class Record>
[[nodiscard]] int BeginTable(const DataFile& in, std::vector<Record>& table, std::int32_t count, std::int64_t fields) {
    const std::int64_t fitting = in.file.Size() / (2 * fields);  // a digit and a separator each
    return MakeTable(table, 0) && ReserveTable(table, static_cast<std::size_t>(std::min<std::int64_t>(count, fitting)));
}

// An empty table still answers with one zero record.
template <class Record>
[[nodiscard]] int EndTable(std::vector<Record>& table) {
    return table.empty() ? ResizeTable(table, 1) : 1;
}

bool IsNumberWithin(std::int32_t number, std::int32_t count) { return number >= 1 && number <= count; }

// ---------------------------------------------------------------------------------------------------------------------
// Sections, in the order of the format's description

[[nodiscard]] int ReadFileInfo(DataFile& in) {
    for (;;) {
        const int result = ReadLine(in.file, in.line);
        if (result == 0) return ShowError(1054);
        if (result < 0) return BadLine(in);
        ++in.lineNumber;
        TrimLeadingBlanks(in.line);
        if (in.line.View().starts_with("FILEINFO")) break;
    }
    float version = 0;
    if (!ReadRow(in, ScanVersionRow, version)) return 0;
    return version >= 4.0F ? 1 : ShowError(1054);
}

[[nodiscard]] int ReadTitle(DataFile& in) {
    constexpr std::array<std::size_t, 4> longest{54, 54, 14, 14};
    for (std::size_t i = 0; i < longest.size(); ++i) {
        if (!NextLine(in)) return 0;
        TrimLeadingBlanks(in.line);
        model.titleLine[i] = in.line.View().substr(0, longest[i]);
    }
    return 1;
}

[[nodiscard]] int ReadAnalysis(DataFile& in) { return ReadRow(in, ScanAnalysisRow, model); }

[[nodiscard]] int ReadConverge(DataFile& in) {
    if (!ReadRow(in, ScanConvergeRow, model)) return 0;
    model.convergeLine = in.lineNumber;
    const std::scoped_lock lock(hmtxGraphMem);
    graphMemory.GraphLastIteration = model.maxIterations;
    return 1;
}

[[nodiscard]] int ReadTimeRows(DataFile& in, std::int32_t count) {
    model.stepCount = 0;
    if (!BeginTable(in, model.timeSteps, count, 3)) return 0;
    model.firstStepLine = in.lineNumber + 1;
    for (std::int32_t i = 0; i < count; ++i) {
        TimeStepRec step{0, 0, 1};
        if (!ReadRow(in, ScanTimeRow, step)) return 0;
        if (!AppendRecord(model.timeSteps, step)) return 0;
    }
    model.stepCount = count;
    return EndTable(model.timeSteps);
}

[[nodiscard]] int ReadTime(DataFile& in) {
    std::int32_t count = 0;
    return TakeCount(in, count, unlimited, ScanTimeCountRow) && ReadTimeRows(in, count);
}

[[nodiscard]] int ReadMaterials(DataFile& in) {
    std::int32_t& count = model.materialCount;
    if (!TakeCount(in, count, largestSmallTable)) return 0;
    if (!MakeTable(model.materials, static_cast<std::size_t>(std::max(count, 1)))) return 0;
    for (std::int32_t number = 0; number != count;) {
        MaterialRec material{};
        if (!ReadRow(in, ScanMaterialRow, number, material)) return 0;
        if (!IsNumberWithin(number, count)) return BadLine(in);
        material.conductivityRatio = 1.0F;
        model.materials[IndexOf(number)] = material;
        in.materialLines[IndexOf(number)] = in.lineNumber;
    }
    return 1;
}

// The title line and the points of a function whose header is the line in hand.
[[nodiscard]] int ReadFunctionPoints(DataFile& in, std::int32_t count, std::vector<FunctionPoint>& points) {
    if (count < 0) return BadLine(in);
    if (!NextLine(in)) return 0;
    if (!BeginTable(in, points, count, 2)) return 0;
    for (std::int32_t i = 0; i < count; ++i) {
        FunctionPoint point{};
        if (!ReadRow(in, ScanPointRow, point)) return 0;
        if (!AppendRecord(points, point)) return 0;
    }
    return 1;
}

[[nodiscard]] int ReadPropertyFunctions(DataFile& in, std::vector<PropertyFunction>& table, std::int32_t& count) {
    if (!TakeCount(in, count, largestSmallTable)) return 0;
    if (!MakeTable(table, static_cast<std::size_t>(std::max(count, 1)))) return 0;
    for (std::int32_t number = 0; number != count;) {
        PropertyFunction function;
        if (!ReadRow(in, ScanFunctionHeader, number, function)) return 0;
        if (!IsNumberWithin(number, count)) return BadLine(in);
        if (!ReadFunctionPoints(in, function.pointCount, function.points)) return 0;
        table[IndexOf(number)] = std::move(function);
    }
    return 1;
}

[[nodiscard]] int ReadKFunctions(DataFile& in) {
    return ReadPropertyFunctions(in, model.kFunctions, model.kFunctionCount);
}

[[nodiscard]] int ReadSFunctions(DataFile& in) {
    return ReadPropertyFunctions(in, model.sFunctions, model.sFunctionCount);
}

[[nodiscard]] int ReadMFunctions(DataFile& in) {
    return ReadPropertyFunctions(in, model.mFunctions, model.mFunctionCount);
}

[[nodiscard]] int ReadBFunctions(DataFile& in) {
    std::int32_t& count = model.bFunctionCount;
    if (!TakeCount(in, count, largestSmallTable)) return 0;
    if (!MakeTable(model.bFunctions, static_cast<std::size_t>(std::max(count, 1)))) return 0;
    for (std::int32_t number = 0; number != count;) {
        BoundaryFunction function;
        if (!ReadRow(in, ScanFunctionHeader, number, function)) return 0;
        function.line = in.lineNumber;
        if (!IsNumberWithin(number, count)) return BadLine(in);
        if (!ReadFunctionPoints(in, function.pointCount, function.points)) return 0;
        if (!function.points.empty()) function.period = function.points.back().x;
        model.bFunctions[IndexOf(number)] = std::move(function);
    }
    return 1;
}

[[nodiscard]] int ReadNodeRow(DataFile& in, std::int32_t place) {
    NodeRow row;
    if (!ReadRow(in, ScanNodeRow, row)) return 0;
    if (row.number != place) return ShowError(1133);
    NodeRec& node = row.node;
    if (node.bcType == bcFree) {
        node.bcValue = 0;
        node.bcFunction = 0;
        node.modifierFunction = 0;
    }
    if (node.bcType > bcFree && node.bcFunction == 0) node.bcInput = node.bcValue;
    const float start = row.initialFlag == 1 ? row.initialTemperature : model.freezingPoint;
    return AppendRecord(model.nodes, node) && AppendRecord(model.nodeStates, NodeState{start, start, 0});
}

[[nodiscard]] int ReadNodes(DataFile& in) {
    std::int32_t count = 0;
    model.nodeCount = 0;
    if (!TakeCount(in, count)) return 0;
    if (!BeginTable(in, model.nodes, count, 7) || !BeginTable(in, model.nodeStates, count, 7)) return 0;
    in.firstNodeLine = in.lineNumber + 1;
    for (std::int32_t place = 1; place <= count; ++place) {
        if (!ReadNodeRow(in, place)) return 0;
    }
    model.nodeCount = count;
    return EndTable(model.nodes) && EndTable(model.nodeStates);
}

[[nodiscard]] int ReadElementRow(DataFile& in, std::int32_t place) {
    ElementRec element{};
    std::int32_t number = 0;
    if (!ReadRow(in, ScanElementRow, number, element)) return 0;
    if (number != place) return ShowError(1051);
    if (element.material < 1) return BadLine(in);
    return AppendRecord(model.elements, element);
}

// Asked after the elements, and again at the end: a later MATERIAL section may have changed the answer.
[[nodiscard]] int CheckActive() {
    const auto active = [](const ElementRec& element) {
        return IsNumberWithin(element.material, model.materialCount) && !IsNullElement(element);
    };
    return std::ranges::any_of(model.elements, active) ? 1 : ShowError(1052);
}

[[nodiscard]] int ReadElements(DataFile& in) {
    std::int32_t count = 0;
    model.elementCount = 0;
    if (!TakeCount(in, count)) return 0;
    if (!BeginTable(in, model.elements, count, 12)) return 0;
    in.firstElementLine = in.lineNumber + 1;
    for (std::int32_t place = 1; place <= count; ++place) {
        if (!ReadElementRow(in, place)) return 0;
    }
    if (!CheckActive()) return 0;
    model.elementCount = count;
    return EndTable(model.elements);
}

[[nodiscard]] int ReadPole(DataFile& in) {
    model.poleX = 0;
    model.poleY = 0;
    std::int32_t flag = 0;
    if (!Accept(in, ScanCountRow(in.line.View(), flag))) return 0;
    if (flag == 0) return 1;
    return ReadRow(in, ScanPoleRow, model);  // a line of other text leaves the pole at 0
}

[[nodiscard]] int ReadFluxSection(DataFile& in, std::int32_t count, std::int32_t& number) {
    FluxSection section;
    if (!ReadRow(in, ScanFluxHeader, number, section)) return 0;
    const bool believable = IsNumberWithin(number, count) && number <= in.file.Size() / 4;
    if (!believable || section.lineCount < 0) return BadLine(in);
    if (!BeginTable(in, section.lines, section.lineCount, 5)) return 0;
    for (std::int32_t i = 0; i < section.lineCount; ++i) {
        FluxLine line{};
        if (!ReadRow(in, ScanFluxRow, line)) return 0;
        if (!AppendRecord(section.lines, line)) return 0;
    }
    const std::size_t held = std::max(model.fluxSections.size(), static_cast<std::size_t>(number));
    if (!ResizeTable(model.fluxSections, held)) return 0;
    model.fluxSections[IndexOf(number)] = std::move(section);
    return 1;
}

[[nodiscard]] int ReadFluxSections(DataFile& in) {
    std::int32_t count = 0;
    model.fluxSectionCount = 0;
    if (!TakeCount(in, count)) return 0;
    if (!MakeTable(model.fluxSections, 1)) return 0;
    for (std::int32_t number = 0; number != count;) {
        if (!ReadFluxSection(in, count, number)) return 0;
    }
    model.fluxSectionCount = count;
    return MakeTable(model.fluxResults, model.fluxSections.size());
}

[[nodiscard]] int ReadQBoundaries(DataFile& in) {
    std::int32_t count = 0;
    model.qBoundaryCount = 0;
    if (!TakeCount(in, count)) return 0;
    if (!BeginTable(in, model.qBoundaries, count, 7)) return 0;
    in.firstEdgeLine = in.lineNumber + 1;
    for (std::int32_t i = 0; i < count; ++i) {
        QBoundaryRec edge{};
        if (!ReadRow(in, ScanEdgeRow, edge)) return 0;
        if (edge.node1 == 0 || edge.node2 == 0 || edge.element == 0) return BadLine(in);
        if (!AppendRecord(model.qBoundaries, edge)) return 0;
    }
    model.qBoundaryCount = count;
    return EndTable(model.qBoundaries);
}

// By Section.
constexpr std::array<int (*)(DataFile& in), sectionCount> readers{
    ReadTitle,      ReadAnalysis,   ReadConverge, ReadTime,     ReadMaterials, ReadKFunctions,   ReadSFunctions,
    ReadMFunctions, ReadBFunctions, ReadNodes,    ReadElements, ReadPole,      ReadFluxSections, ReadQBoundaries,
};

[[nodiscard]] int ReadSections(DataFile& in) {
    for (;;) {
        const int result = ReadLine(in.file, in.line);
        if (result == 0) return ShowError(1053);
        if (result < 0) return BadLine(in);
        ++in.lineNumber;
        TrimLeadingBlanks(in.line);
        const std::optional<Section> section = SectionOfLine(in.line.View());
        if (!section) return BadLine(in);
        if (!readers[static_cast<std::size_t>(*section)](in)) return 0;
        if (section == Section::QBoundary) return 1;
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// References between records

// Shows message 1150 with a line that was read before.
int BadEarlierLine(DataFile& in, std::int64_t lineNumber) {
    in.line.length = 0;
    ReadLine(in.file, clearbuf);
    if (in.file.SeekToStart()) {
        for (std::int64_t i = 0; i < lineNumber && ReadLine(in.file, in.line) == 1; ++i) {
        }
    }
    return BadLine(in);
}

bool RefersWithin(std::int32_t number, std::int32_t count) { return number >= 0 && number <= count; }

bool IsSound(const MaterialRec& material) {
    return RefersWithin(material.conductivityFunction, model.kFunctionCount) &&
           RefersWithin(material.waterContentFunction, model.sFunctionCount);
}

bool IsSound(const NodeRec& node) {
    return RefersWithin(node.bcFunction, model.bFunctionCount) &&
           RefersWithin(node.modifierFunction, model.mFunctionCount);
}

// An active element needs a count of points that has a rule; any element has room for nine at most.
bool IsSound(const ElementRec& element) {
    const auto isNode = [](std::int32_t number) { return RefersWithin(number, model.nodeCount); };
    if (!std::ranges::all_of(element.nodes, isNode)) return false;
    if (!IsNumberWithin(element.material, model.materialCount)) return false;
    const std::int32_t points = element.integrationPoints;
    if (points > 9) return false;
    return points <= 0 || IsNullElement(element) || points == 1 || points == 3 || points == 4 || points == 9;
}

bool IsSound(const QBoundaryRec& edge) {
    return IsNumberWithin(edge.node1, model.nodeCount) && IsNumberWithin(edge.node2, model.nodeCount) &&
           IsNumberWithin(edge.element, model.elementCount) && RefersWithin(edge.bFunction, model.bFunctionCount) &&
           RefersWithin(edge.modifier, model.mFunctionCount);
}

// Checks the first `count` records, whose rows follow each other from `firstLine` on.
template <class Record>
[[nodiscard]] int CheckRows(DataFile& in, const std::vector<Record>& table, std::int32_t count,
                            std::int64_t firstLine) {
    for (std::int32_t number = 1; number <= count; ++number) {
        if (!IsSound(table[IndexOf(number)])) return BadEarlierLine(in, firstLine + number - 1);
    }
    return 1;
}

// From here on every number in a record reaches a record.
[[nodiscard]] int CheckReferences(DataFile& in) {
    for (std::int32_t number = 1; number <= model.materialCount; ++number) {
        if (IsSound(model.materials[IndexOf(number)])) continue;
        return BadEarlierLine(in, in.materialLines[IndexOf(number)]);
    }
    return CheckRows(in, model.nodes, model.nodeCount, in.firstNodeLine) &&
           CheckRows(in, model.elements, model.elementCount, in.firstElementLine) &&
           CheckRows(in, model.qBoundaries, model.qBoundaryCount, in.firstEdgeLine);
}

// ---------------------------------------------------------------------------------------------------------------------
// The short reader

[[nodiscard]] int ReadSequenceSections(DataFile& in) {
    bool timeRead = false;
    for (;;) {
        if (!NextLine(in)) return 0;
        TrimLeadingBlanks(in.line);
        if (in.line.View().starts_with("ANALYSIS")) {
            if (!ReadAnalysis(in)) return 0;
        } else if (in.line.View().starts_with("TIME")) {
            std::int32_t count = 0;
            if (!TakeCount(in, count) || !ReadTimeRows(in, count)) return 0;
            timeRead = true;
        } else if (timeRead) {
            return 1;
        } else if (in.line.View().starts_with("TITLE")) {
            if (!ReadTitle(in)) return 0;  // a title may begin like a keyword
        }
    }
}

void WarnOfCutLines(const DataFile& in) {
    if (in.cutLines == 0) return;
    std::string text = "the line is longer than 94 characters, and what stands behind them is not read: shorten it";
    if (in.cutLines > 1) text += FormatText(", and %d more behind it", in.cutLines - 1);
    WarnOfLine(model.dataFileName, in.firstCutLine, text);
}

}  // namespace

int ReadDataFile() {
    DataFile in;
    if (!in.file.OpenForReading(model.dataFileName)) return ShowError(1020);
    const std::size_t extension = std::min<std::size_t>(model.dataFileName.size(), 4);
    model.baseName = model.dataFileName.substr(0, model.dataFileName.size() - extension);
    const int result = ReadFileInfo(in) && ReadSections(in) && CheckActive() && CheckReferences(in);
    model.useDoubleStore = 1;
    WarnOfCutLines(in);
    ReadLine(in.file, clearbuf);
    return result;
}

int ReadTimeSequence() {
    DataFile in;
    in.sequenceOnly = true;
    if (!in.file.OpenForReading(model.dataFileName)) return ShowError(1020);
    const int result = ReadSequenceSections(in);
    ReadLine(in.file, clearbuf);
    return result;
}

}  // namespace kaldra
