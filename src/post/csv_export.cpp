#include "post/csv_export.h"

#include "element/shape_functions.h"
#include "model/file_names.h"
#include "model/problem_model.h"
#include "platform/memory.h"
#include "platform/narrow.h"
#include "post/local_point.h"
#include "post/result_set.h"

namespace kaldra {

namespace {

std::string TableName(std::string_view table) { return ReplaceExtension(model.dataFileName, table); }

void PutNodes(OutputFile& file, const StepResults& results) {
    std::string rows;
    for (std::size_t n = 0; n < results.nodes.size(); ++n) {
        const NodeResult& node = results.nodes[n];
        AppendRow(rows, results.step, results.elapsed, static_cast<std::int32_t>(n) + 1, model.nodes[n].x,
                  model.nodes[n].y, node.temperature, node.flow);
        file.Put(rows);
        rows.clear();
    }
}

void PutPoints(OutputFile& file, const StepResults& results) {
    std::string rows;
    for (std::size_t e = 0; e < static_cast<std::size_t>(model.elementCount); ++e) {
        if (IsNullElement(model.elements[e])) continue;
        RuleTable rule;
        GetIntegrationRule(rule, PointCount(e));
        for (std::size_t i = 0; i < PointCount(e); ++i) {
            const PointResult& p = results.points[PointsBegin(e) + i];
            const LocalPoint at = PointAt(e, static_cast<double>(rule[i].r), static_cast<double>(rule[i].s));
            AppendRow(rows, results.step, results.elapsed, static_cast<std::int32_t>(e) + 1,
                      static_cast<std::int32_t>(i) + 1, Narrow(at.x), Narrow(at.y), p.temperature, p.conductivity,
                      p.waterSlope, p.unfrozenWater, p.heatCapacity, p.fluxX, p.fluxY, p.gradientX, p.gradientY);
        }
        file.Put(rows);
        rows.clear();
    }
}

void PutSections(OutputFile& file, const StepResults& results) {
    std::string rows;
    for (std::size_t s = 0; s < results.sections.size(); ++s) {
        AppendNumber(rows, results.step);
        rows += ',';
        AppendNumber(rows, results.elapsed);
        rows += ',';
        AppendNumber(rows, static_cast<std::int32_t>(s) + 1);
        rows += ",,";
        AppendRow(rows, results.sections[s].total, results.sections[s].heatFlux, results.sections[s].storage);
    }
    for (const CrossingResult& crossing : results.crossings) {
        AppendRow(rows, results.step, results.elapsed, crossing.section, crossing.element, crossing.total,
                  crossing.heatFlux, crossing.storage);
    }
    file.Put(rows);
}

void PutHistory(OutputFile& file, const StepResults& results) {
    const StepSummary summary = SummaryOf(results);
    std::string row;
    AppendRow(row, results.step, results.elapsed, summary.least, summary.leastNode, summary.greatest,
              summary.greatestNode, Narrow(summary.flowIn), Narrow(summary.flowOut),
              Narrow(summary.flowIn - summary.flowOut));
    file.Put(row);
}

[[nodiscard]] int BeginTable(OutputFile& file, std::string_view table, std::string_view columns) {
    if (!file.Begin(TableName(table))) return 0;
    file.Put(UnitLine());
    file.Put(columns);
    return 1;
}

[[nodiscard]] int EndTable(OutputFile& file, std::string_view table, std::vector<std::string>& written) {
    if (!file.IsOpen()) return 1;
    if (!file.Commit()) return 0;
    written.push_back(TableName(table));
    return 1;
}

// Nodes whose temperature the analysis finds or prescribes.
std::vector<bool> ActiveNodes() {
    std::vector<bool> active(static_cast<std::size_t>(model.nodeCount), false);
    for (const ElementRec& element : model.elements) {
        if (IsNullElement(element)) continue;
        for (const std::int32_t node : element.nodes) {
            if (node > 0) active[IndexOf(node)] = true;
        }
    }
    return active;
}

}  // namespace

std::string UnitLine() {
    return "# Units are those of the data file, which gives all its numbers in one system of units\n";
}

int BeginCsv(CsvTables& tables) {
    return BeginTable(tables.nodes, ".nodes.csv", "step,time,node,x,y,temperature,heat_flow\n") &&
           BeginTable(tables.points, ".points.csv",
                      "step,time,element,point,x,y,temperature,conductivity,unfrozen_water_slope,unfrozen_water,"
                      "heat_capacity,flux_x,flux_y,gradient_x,gradient_y\n") &&
           (model.fluxSectionCount == 0 ||
            BeginTable(tables.sections, ".sections.csv", "step,time,section,element,total,heat_flux,storage\n")) &&
           BeginTable(tables.histories, ".histories.csv",
                      "step,time,least_temperature,least_at_node,greatest_temperature,greatest_at_node,heat_flow_in,"
                      "heat_flow_out,heat_flow_net\n");
}

int AddToCsv(CsvTables& tables, const StepResults& results) {
    constexpr std::size_t someMemory = 1 << 20;
    return WithMemory(someMemory, [&] {
        PutNodes(tables.nodes, results);
        PutPoints(tables.points, results);
        if (tables.sections.IsOpen()) PutSections(tables.sections, results);
        PutHistory(tables.histories, results);
    });
}

int EndCsv(CsvTables& tables, std::vector<std::string>& written) {
    return EndTable(tables.nodes, ".nodes.csv", written) && EndTable(tables.points, ".points.csv", written) &&
           EndTable(tables.sections, ".sections.csv", written) && EndTable(tables.histories, ".histories.csv", written);
}

StepSummary SummaryOf(const StepResults& results) {
    StepSummary summary;
    const std::vector<bool> active = ActiveNodes();
    for (std::size_t n = 0; n < results.nodes.size(); ++n) {
        const NodeResult& node = results.nodes[n];
        const auto flow = static_cast<double>(node.flow);
        (flow > 0 ? summary.flowIn : summary.flowOut) += flow > 0 ? flow : -flow;
        if (!active[n]) continue;
        const auto number = static_cast<std::int32_t>(n) + 1;
        if (summary.leastNode == 0 || node.temperature < summary.least) {
            summary.least = node.temperature;
            summary.leastNode = number;
        }
        if (summary.greatestNode == 0 || node.temperature > summary.greatest) {
            summary.greatest = node.temperature;
            summary.greatestNode = number;
        }
    }
    return summary;
}

}  // namespace kaldra
