#include "check/loose_reader.h"

#include <algorithm>
#include <optional>
#include <type_traits>
#include <utility>

#include "model/line_reader.h"
#include "model/problem_model.h"
#include "platform/memory.h"

namespace kaldra {

namespace {

struct LooseFile {
    ReadLines& lines;
    Findings& found;
    File file{};
    LineBuffer line{};
    std::int64_t lineNumber = 0;
    bool held = false;  // NextLine hands the line in hand out once more
    bool ended = false;
    std::optional<Section> section{};  // of the rows under way
};

constexpr std::int32_t unknownCount = -1;  // the rows go to the next section

// ---------------------------------------------------------------------------------------------------------------------
// Lines

bool NextLine(LooseFile& in) {
    if (in.held) {
        in.held = false;
        return true;
    }
    in.ended = in.ended || ReadLine(in.file, in.line) != 1;
    if (in.ended) return false;
    ++in.lineNumber;
    return true;
}

std::string_view Text(const LooseFile& in) {
    const std::string_view line = in.line.View();
    return line.substr(std::min(line.find_first_not_of(' '), line.size()));
}

bool IsBlank(const LooseFile& in) { return in.line.View().find_first_not_of(" \t") == std::string_view::npos; }

std::string_view Name(const LooseFile& in) { return in.section ? KeywordOf(*in.section) : "FILEINFO"; }

// The next row of the section, of which `read` of `count` have been read; false at its end. What a section's keyword
// begins is no row, and a blank line takes no row's place.
bool NextRow(LooseFile& in, std::int32_t read, std::int32_t count) {
    while (NextLine(in)) {
        if (SectionOfLine(Text(in))) {
            in.held = true;
            break;
        }
        if (!IsBlank(in)) return true;
        AddError(in.found, in.lineNumber, "a blank line stands within %s: remove it", Name(in));
    }
    if (count != unknownCount) {
        AddError(in.found, in.lineNumber, "%s ends behind %s of %d: correct its count, or add what is missing",
                 Name(in), Counted(read, "row"), count);
    }
    return false;
}

void SkipToSection(LooseFile& in) {
    while (NextLine(in)) {
        if (!SectionOfLine(Text(in))) continue;
        in.held = true;
        return;
    }
}

// The rest of a section cannot be told apart.
bool PassSection(LooseFile& in) {
    SkipToSection(in);
    return true;
}

std::int64_t WordCount(std::string_view line) {
    std::int64_t words = 0;
    bool within = false;
    for (const char c : line) {
        const bool blank = c == ' ' || c == '\t';
        if (!blank && !within) ++words;
        within = !blank;
    }
    return words;
}

// Takes the line in hand as a row; `passed` leading fields are not looked at, and `most` the row may have with them.
bool Take(LooseFile& in, const RowScan& scan, int passed = 0, int most = 0) {
    if (in.line.cut) {
        AddDoubt(in.found, in.lineNumber,
                 "the line is longer than 94 characters, and what stands behind them is not read: shorten it");
    }
    const std::int32_t next = scan.fields + passed + 1;
    if (!scan.whole) {
        AddError(in.found, in.lineNumber, "field %d of this row of %s is missing, or no number that can be taken: %s",
                 next, Name(in), in.line.View());
    } else if (next <= most && WordCount(in.line.View()) >= next) {
        AddDoubt(in.found, in.lineNumber, "field %d of this row of %s is no number and counts as missing: %s", next,
                 Name(in), in.line.View());
    }
    return scan.whole;
}

std::int32_t TakeCount(LooseFile& in, std::int32_t limit, RowScan (*scan)(std::string_view, std::int32_t&)) {
    std::int32_t count = 0;
    if (!scan(Text(in), count).whole || count < 0 || count > limit) {
        AddError(in.found, in.lineNumber, "behind %s stands no count from 0 to %d: %s", Name(in), limit, Text(in));
        return unknownCount;
    }
    return count;
}

constexpr std::int32_t anyCount = 2147483647;

bool IsWithin(std::int32_t number, std::int32_t count) { return number >= 1 && number <= count; }

// A record's number and the line of the one that had it before.
bool TakeNumber(LooseFile& in, std::int32_t number, std::int32_t count, std::int64_t& line) {
    if (!IsWithin(number, count)) {
        AddError(in.found, in.lineNumber, "number %d of %s is not within its count, 1 to %d", number, Name(in), count);
        return false;
    }
    if (line != 0) {
        AddDoubt(in.found, in.lineNumber, "number %d of %s stands a second time: what line %d gives is lost", number,
                 Name(in), line);
    }
    line = in.lineNumber;
    return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Sections. Each gives false after message 1138.

bool ReadTitle(LooseFile& in) {
    for (std::string& title : model.titleLine) {
        if (!NextLine(in)) break;
        title = Text(in);
        if (!title.starts_with("==============")) continue;
        AddDoubt(in.found, in.lineNumber,
                 "a title that begins with 14 equal signs hides the rows of result files from "
                 "a restart: change it");
    }
    return true;
}

bool ReadAnalysis(LooseFile& in) {
    if (NextRow(in, 0, 1) && Take(in, ScanAnalysisRow(in.line.View(), model))) in.lines.analysis = in.lineNumber;
    return true;
}

bool ReadConverge(LooseFile& in) {
    if (NextRow(in, 0, 1) && Take(in, ScanConvergeRow(in.line.View(), model))) in.lines.converge = in.lineNumber;
    return true;
}

bool ReadTime(LooseFile& in) {
    const std::int32_t count = TakeCount(in, anyCount, ScanTimeCountRow);
    in.lines.steps.clear();
    if (!MakeTable(model.timeSteps, 0)) return false;
    for (std::int32_t i = 0; (count == unknownCount || i < count) && NextRow(in, i, count); ++i) {
        TimeStepRec step{0, 0, 1};
        if (!Take(in, ScanTimeRow(in.line.View(), step), 1, 4)) continue;
        in.lines.steps.push_back(in.lineNumber);
        if (!AppendRecord(model.timeSteps, step)) return false;
    }
    model.stepCount = static_cast<std::int32_t>(model.timeSteps.size());
    return true;
}

bool ReadMaterials(LooseFile& in) {
    const std::int32_t count = TakeCount(in, largestSmallTable, ScanCountRow);
    if (count == unknownCount) return PassSection(in);
    in.lines.materials.assign(static_cast<std::size_t>(count), 0);
    model.materialCount = count;
    if (!MakeTable(model.materials, static_cast<std::size_t>(std::max(count, 1)))) return false;
    for (std::int32_t number = 0, read = 0; number != count && NextRow(in, read, count); ++read) {
        MaterialRec material{};
        if (!Take(in, ScanMaterialRow(in.line.View(), number, material))) continue;
        const std::size_t place = IsWithin(number, count) ? IndexOf(number) : 0;
        if (TakeNumber(in, number, count, in.lines.materials[place])) model.materials[place] = material;
    }
    return true;
}

// Title and points of the function whose header is the line in hand. False where it cannot be told how the file goes
// on.
template <class Function>
bool ReadPoints(LooseFile& in, Function& function, FunctionLines& lines) {
    lines.points.clear();
    if (function.pointCount < 0) {
        AddError(in.found, in.lineNumber, "a function cannot have %d points", function.pointCount);
        return false;
    }
    if (!NextLine(in)) return false;
    for (std::int32_t i = 0; i < function.pointCount; ++i) {
        if (!NextRow(in, i, unknownCount)) {
            AddError(in.found, in.lineNumber, "the function in line %d ends behind %s of %d", lines.header,
                     Counted(i, "point"), function.pointCount);
            return false;
        }
        FunctionPoint point{};
        if (!ScanPointRow(in.line.View(), point).whole) {
            AddError(in.found, in.lineNumber,
                     "this is no point %d of %d of the function in line %d: correct it, or the count there: %s", i + 1,
                     function.pointCount, lines.header, in.line.View());
            return false;
        }
        function.points.push_back(point);
        lines.points.push_back(in.lineNumber);
    }
    return true;
}

void SetPeriod(PropertyFunction&) {}
void SetPeriod(BoundaryFunction& function) {
    if (!function.points.empty()) function.period = function.points.back().x;
}

template <class Function>
bool ReadFunctions(LooseFile& in, std::vector<Function>& table, std::int32_t& count,
                   std::vector<FunctionLines>& lines) {
    const std::int32_t wanted = TakeCount(in, largestSmallTable, ScanCountRow);
    if (wanted == unknownCount) return PassSection(in);
    count = wanted;
    lines.assign(static_cast<std::size_t>(count), {});
    if (!MakeTable(table, static_cast<std::size_t>(std::max(count, 1)))) return false;
    constexpr int most = std::is_same_v<Function, BoundaryFunction> ? 7 : 4;
    for (std::int32_t number = 0, read = 0; number != count && NextRow(in, read, count); ++read) {
        Function function;
        if (!Take(in, ScanFunctionHeader(in.line.View(), number, function), 0, most)) return PassSection(in);
        FunctionLines found{in.lineNumber, {}};
        const std::size_t place = IsWithin(number, count) ? IndexOf(number) : 0;
        const bool numbered = TakeNumber(in, number, count, lines[place].header);
        const bool whole = ReadPoints(in, function, found);
        if (numbered) {
            SetPeriod(function);
            table[place] = std::move(function);
            lines[place] = std::move(found);
        }
        if (!whole) return PassSection(in);
    }
    return true;
}

bool ReadKFunctions(LooseFile& in) {
    return ReadFunctions(in, model.kFunctions, model.kFunctionCount, in.lines.functions[0]);
}
bool ReadSFunctions(LooseFile& in) {
    return ReadFunctions(in, model.sFunctions, model.sFunctionCount, in.lines.functions[1]);
}
bool ReadMFunctions(LooseFile& in) {
    return ReadFunctions(in, model.mFunctions, model.mFunctionCount, in.lines.functions[2]);
}
bool ReadBFunctions(LooseFile& in) {
    return ReadFunctions(in, model.bFunctions, model.bFunctionCount, in.lines.functions[3]);
}

// Boundary type, functions and flag have 1, 2, 2 and 1 digits: a wider number runs on into the next field.
void CheckWidths(LooseFile& in, const NodeRow& row) {
    NodeRow apart;
    NodeRec& n = apart.node;
    const ScanResult scan =
        ScanText(in.line.View(), "%d %f %f %f %d %d %d %d %f", &apart.number, &n.x, &n.y, &n.bcValue, &n.bcType,
                 &n.bcFunction, &n.modifierFunction, &apart.initialFlag, &apart.initialTemperature);
    if (scan.fields < 9 || (n.bcType == row.node.bcType && n.bcFunction == row.node.bcFunction &&
                            n.modifierFunction == row.node.modifierFunction && apart.initialFlag == row.initialFlag)) {
        return;
    }
    AddDoubt(
        in.found, in.lineNumber,
        "node %d is read with type %d, functions %d and %d and flag %d, as these fields have 1, 2, 2 and 1 digits: %s",
        row.number, row.node.bcType, row.node.bcFunction, row.node.modifierFunction, row.initialFlag, in.line.View());
}

// Nodes and elements are numbered without gaps; a gap is told once, not for all that follow.
void CheckSequence(LooseFile& in, std::int32_t number, std::int32_t& before) {
    if (number != before + 1) {
        AddError(in.found, in.lineNumber, "number %d of %s follows number %d: number them from 1 without gaps", number,
                 Name(in), before);
    }
    before = number;
}

bool ReadNodes(LooseFile& in) {
    const std::int32_t count = TakeCount(in, anyCount, ScanCountRow);
    in.lines.nodes.clear();
    in.lines.nodeRows.clear();
    if (!MakeTable(model.nodes, 0)) return false;
    std::int32_t before = 0;
    for (std::int32_t i = 0; (count == unknownCount || i < count) && NextRow(in, i, count); ++i) {
        NodeRow row;
        const bool whole = Take(in, ScanNodeRow(in.line.View(), row));
        if (whole) {
            CheckSequence(in, row.number, before);
            CheckWidths(in, row);
        } else {
            ++before;
        }
        in.lines.nodes.push_back(whole ? in.lineNumber : 0);
        in.lines.nodeRows.push_back(row);
        if (!AppendRecord(model.nodes, row.node)) return false;
    }
    model.nodeCount = static_cast<std::int32_t>(model.nodes.size());
    return true;
}

bool ReadElements(LooseFile& in) {
    const std::int32_t count = TakeCount(in, anyCount, ScanCountRow);
    in.lines.elements.clear();
    if (!MakeTable(model.elements, 0)) return false;
    std::int32_t before = 0;
    for (std::int32_t i = 0; (count == unknownCount || i < count) && NextRow(in, i, count); ++i) {
        ElementRec element{};
        std::int32_t number = before + 1;
        const bool whole = Take(in, ScanElementRow(in.line.View(), number, element), 0, 14);
        if (!whole) number = before + 1;
        CheckSequence(in, number, before);
        in.lines.elements.push_back(whole ? in.lineNumber : 0);
        if (!AppendRecord(model.elements, element)) return false;
    }
    model.elementCount = static_cast<std::int32_t>(model.elements.size());
    return true;
}

// The line behind the flag is taken whatever it holds, be it the next section.
bool ReadPole(LooseFile& in) {
    model.poleX = 0;
    model.poleY = 0;
    std::int32_t flag = 0;
    if (!Take(in, ScanCountRow(Text(in), flag)) || flag == 0 || !NextLine(in)) return true;
    if (ScanPoleRow(in.line.View(), model).fields < 2) {
        AddDoubt(in.found, in.lineNumber, "this is no position of a pole, which then lies at 0 0: %s", in.line.View());
    }
    return true;
}

bool ReadFluxSections(LooseFile& in) {
    const std::int32_t count = TakeCount(in, anyCount, ScanCountRow);
    if (count == unknownCount) return PassSection(in);
    in.lines.fluxSections.clear();
    for (std::int32_t number = 0, read = 0; number != count && NextRow(in, read, count); ++read) {
        FluxSection section;
        std::int64_t line = 0;
        if (!Take(in, ScanFluxHeader(in.line.View(), number, section))) return PassSection(in);
        if (IsWithin(number, count) && IndexOf(number) < in.lines.fluxSections.size()) {
            line = in.lines.fluxSections[IndexOf(number)];
        }
        (void)TakeNumber(in, number, count, line);
        if (IsWithin(number, count) && number <= in.file.Size() / 4) {
            in.lines.fluxSections.resize(std::max(in.lines.fluxSections.size(), IndexOf(number) + 1));
            in.lines.fluxSections[IndexOf(number)] = line;
        }
        if (section.lineCount < 0)
            AddError(in.found, in.lineNumber, "a section cannot have %d lines", section.lineCount);
        for (std::int32_t i = 0; i < section.lineCount; ++i) {
            FluxLine row{};
            if (!NextRow(in, i, section.lineCount)) return true;
            if (!Take(in, ScanFluxRow(in.line.View(), row), 1)) return PassSection(in);
        }
    }
    return true;
}

bool ReadEdges(LooseFile& in) {
    const std::int32_t count = TakeCount(in, anyCount, ScanCountRow);
    in.lines.edges.clear();
    if (!MakeTable(model.qBoundaries, 0)) return false;
    for (std::int32_t i = 0; (count == unknownCount || i < count) && NextRow(in, i, count); ++i) {
        QBoundaryRec edge{};
        if (!Take(in, ScanEdgeRow(in.line.View(), edge))) continue;
        in.lines.edges.push_back(in.lineNumber);
        if (!AppendRecord(model.qBoundaries, edge)) return false;
    }
    model.qBoundaryCount = static_cast<std::int32_t>(model.qBoundaries.size());
    return true;
}

// By Section.
constexpr std::array<bool (*)(LooseFile& in), sectionCount> readers{
    ReadTitle,      ReadAnalysis,   ReadConverge, ReadTime,     ReadMaterials, ReadKFunctions,   ReadSFunctions,
    ReadMFunctions, ReadBFunctions, ReadNodes,    ReadElements, ReadPole,      ReadFluxSections, ReadEdges,
};

// ---------------------------------------------------------------------------------------------------------------------
// The file

void ReadFileInfo(LooseFile& in) {
    while (NextLine(in)) {
        if (!Text(in).starts_with("FILEINFO")) continue;
        float version = 0;
        if (NextLine(in) && Take(in, ScanVersionRow(in.line.View(), version)) && version < 4.0F) {
            AddError(in.found, in.lineNumber, "the version is below 4.0: %s", in.line.View());
        }
        return;
    }
    AddError(in.found, 0, "no line begins with FILEINFO, behind which a data file begins");
    ReadLine(in.file, clearbuf);
    in.lineNumber = 0;
    in.ended = !in.file.SeekToStart();
}

// Lines that belong to no section, of which the one in hand is the first.
void PassStrayLines(LooseFile& in) {
    const std::int64_t first = in.lineNumber;
    const bool blank = IsBlank(in);
    const bool row = !blank && std::string_view("+-.0123456789").find(Text(in).front()) != std::string_view::npos;
    const std::string text(Text(in));
    SkipToSection(in);
    const std::int64_t count = in.lineNumber - first + (in.held ? 0 : 1);
    if (blank) {
        AddError(in.found, first, "a blank line stands where a section should begin: remove it");
    } else if (row && in.section) {
        AddError(in.found, first, "%s has %s more than it counts: correct its count, or remove what is too much: %s",
                 Name(in), Counted(count, "row"), text);
    } else {
        AddError(in.found, first, "no section begins so; passed over with all up to the next section, %s: %s",
                 Counted(count, "line"), text);
    }
}

bool ReadSections(LooseFile& in) {
    while (NextLine(in)) {
        const std::optional<Section> section = SectionOfLine(Text(in));
        if (!section) {
            PassStrayLines(in);
            continue;
        }
        in.section = section;
        std::int64_t& line = in.lines.keyword[static_cast<std::size_t>(*section)];
        if (line != 0) {
            AddDoubt(in.found, in.lineNumber, "%s stands a second time: what line %d gives is lost", Name(in), line);
        }
        line = in.lineNumber;
        if (!readers[static_cast<std::size_t>(*section)](in)) return false;
        if (section == Section::QBoundary) return true;
    }
    return true;
}

void PassTheRest(LooseFile& in) {
    std::int64_t first = 0;
    std::int64_t count = 0;
    while (NextLine(in)) {
        if (IsBlank(in)) continue;
        if (count++ == 0) first = in.lineNumber;
    }
    if (count > 0) {
        AddDoubt(in.found, first, "behind the rows of qBOUNDARY nothing is read, and here follows %s",
                 Counted(count, "line"));
    }
}

}  // namespace

bool ReadLoosely(ReadLines& lines, Findings& findings) {
    LooseFile in{lines, findings};
    if (!in.file.OpenForReading(model.dataFileName)) {
        AddError(findings, 0, "the file cannot be opened");
        return false;
    }
    ReadFileInfo(in);
    const bool read = ReadSections(in);
    if (read) PassTheRest(in);
    ReadLine(in.file, clearbuf);
    return read;
}

}  // namespace kaldra
