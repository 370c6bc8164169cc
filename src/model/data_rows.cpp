#include "model/data_rows.h"

#include <algorithm>
#include <array>

#include "platform/number_text.h"

namespace kaldra {

static constexpr std::array<std::string_view, sectionCount> keywords{
    "TITLE",     "ANALYSIS",  "CONVERGE", "TIME",    "MATERIAL", "KFUNCTION", "SFUNCTION",
    "MFUNCTION", "BFUNCTION", "NODE",     "ELEMENT", "POLE",     "FLUX",      "qBOUNDARY",
};

std::string_view KeywordOf(Section section) { return keywords[static_cast<std::size_t>(section)]; }

std::optional<Section> SectionOfLine(std::string_view line) {
    const auto starts = [&](std::string_view keyword) { return line.starts_with(keyword); };
    const auto* const found = std::ranges::find_if(keywords, starts);
    if (found == keywords.end()) return std::nullopt;
    return static_cast<Section>(found - keywords.begin());
}

// Scans a line that must hold at least `wanted` fields and no number beyond f32 or 32 bits.
template <class... Targets>
static RowScan Scan(std::string_view line, int wanted, const ScanFormat& format, Targets*... targets) {
    const ScanResult result = ScanText(line, format, targets...);
    return {result.fields >= wanted && !result.outOfRange, result.fields};
}

RowScan ScanVersionRow(std::string_view line, float& version) { return Scan(line, 1, "%*s %f", &version); }

RowScan ScanAnalysisRow(std::string_view line, ProblemModel& settings) {
    return Scan(line, 5, "%d %d %e %d %e ", &settings.analysisType, &settings.problemView, &settings.latentHeat,
                &settings.useDoubleStore, &settings.freezingPoint);
}

RowScan ScanConvergeRow(std::string_view line, ProblemModel& settings) {
    return Scan(line, 3, "%d %f %d", &settings.maxIterations, &settings.tolerance, &settings.maxPhasePoints);
}

RowScan ScanTimeRow(std::string_view line, TimeStepRec& step) {
    return Scan(line, 2, "%*d %f %f %d", &step.increment, &step.elapsed, &step.saveFlag);
}

RowScan ScanMaterialRow(std::string_view line, std::int32_t& number, MaterialRec& material) {
    return Scan(line, 6, "%d %d %d %f %f %f", &number, &material.conductivityFunction, &material.waterContentFunction,
                &material.frozenHeatCapacity, &material.unfrozenHeatCapacity, &material.waterContent);
}

RowScan ScanFunctionHeader(std::string_view line, std::int32_t& number, PropertyFunction& function) {
    return Scan(line, 4, "%d %d %f %f", &number, &function.pointCount, &function.smoothing, &function.weight);
}

RowScan ScanFunctionHeader(std::string_view line, std::int32_t& number, BoundaryFunction& function) {
    return Scan(line, 6, "%d %d %d %d %f %f %d", &number, &function.pointCount, &function.xKind, &function.yKind,
                &function.smoothing, &function.weight, &function.repeat);
}

RowScan ScanPointRow(std::string_view line, FunctionPoint& point) { return Scan(line, 2, "%f %f", &point.x, &point.y); }

RowScan ScanNodeRow(std::string_view line, NodeRow& row) {
    NodeRec& node = row.node;
    return Scan(line, 9, "%d %f %f %f %1d %2d %2d %1d %f", &row.number, &node.x, &node.y, &node.bcValue, &node.bcType,
                &node.bcFunction, &node.modifierFunction, &row.initialFlag, &row.initialTemperature);
}

RowScan ScanElementRow(std::string_view line, std::int32_t& number, ElementRec& element) {
    std::int32_t* const n = element.nodes;
    return Scan(line, 12, "%d%d%d%d%d%d%d%d%d%d%d%f%d%d", &number, &n[0], &n[1], &n[2], &n[3], &n[4], &n[5], &n[6],
                &n[7], &element.material, &element.integrationPoints, &element.thickness, &element.infiniteR,
                &element.infiniteS);
}

RowScan ScanPoleRow(std::string_view line, ProblemModel& settings) {
    return Scan(line, 0, "%f %f", &settings.poleX, &settings.poleY);
}

RowScan ScanFluxHeader(std::string_view line, std::int32_t& number, FluxSection& section) {
    return Scan(line, 2, "%d %d", &number, &section.lineCount);
}

RowScan ScanFluxRow(std::string_view line, FluxLine& row) {
    return Scan(line, 4, "%*d %f %f %f %f", &row.x1, &row.y1, &row.x2, &row.y2);
}

RowScan ScanEdgeRow(std::string_view line, QBoundaryRec& edge) {
    return Scan(line, 7, "%d %d %d %d %f %d %d", &edge.node1, &edge.node2, &edge.element, &edge.edgeKind, &edge.q,
                &edge.bFunction, &edge.modifier);
}

RowScan ScanCountRow(std::string_view line, std::int32_t& count) { return Scan(line, 1, "%*s %d", &count); }

RowScan ScanTimeCountRow(std::string_view line, std::int32_t& count) { return Scan(line, 1, "%*s %i", &count); }

}  // namespace kaldra
