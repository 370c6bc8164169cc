#include "frontend/export/workbook.h"

#include <xlsxwriter.h>

#include <array>
#include <charconv>
#include <initializer_list>

#include "model/file_names.h"
#include "model/problem_model.h"
#include "platform/files.h"
#include "platform/number_text.h"
#include "post/cells.h"
#include "post/csv_export.h"
#include "post/output_file.h"

namespace kaldra {

namespace {

constexpr lxw_row_t mostRows = LXW_ROW_MAX;

// A sheet that is filled row by row. Rows beyond what a sheet holds are counted only.
struct Sheet {
    std::string name;
    lxw_worksheet* sheet = nullptr;
    lxw_row_t next = 0;
    std::int64_t lost = 0;
};

// Cells hold text as UTF-8; a title in another character set would make the whole workbook unreadable.
std::string AsUtf8(std::string_view bytes) {
    std::string text;
    for (const char c : bytes) {
        const auto code = static_cast<unsigned char>(c);
        if (code >= 0x20 && code < 0x7F) text += c;
        if (code >= 0xA0) {  // as if it were Latin-1
            text += static_cast<char>(0xC0 | code >> 6);
            text += static_cast<char>(0x80 | (code & 0x3F));
        }
    }
    return text;
}

}  // namespace

struct Workbook::State {
    std::string path;
    lxw_workbook* book = nullptr;
    lxw_format* bold = nullptr;
    Sheet overview{"Overview"}, histories{"Histories"}, nodes{"Nodes"}, elements{"Elements"}, sections{"Sections"};
    std::vector<Sheet*> all{&overview, &histories, &nodes, &elements, &sections};

    void AddHead(Sheet& sheet, std::initializer_list<const char*> columns) {
        lxw_col_t column = 0;
        for (const char* const name : columns) worksheet_write_string(sheet.sheet, sheet.next, column++, name, bold);
        worksheet_set_column(sheet.sheet, 0, static_cast<lxw_col_t>(column - 1), 16, nullptr);
        worksheet_freeze_panes(sheet.sheet, 1, 0);
        ++sheet.next;
    }
    static void AddRow(Sheet& sheet, std::initializer_list<double> values) {
        if (sheet.next >= mostRows) {
            ++sheet.lost;
            return;
        }
        lxw_col_t column = 0;
        for (const double value : values) worksheet_write_number(sheet.sheet, sheet.next, column++, value, nullptr);
        ++sheet.next;
    }
    void AddText(const char* name, const std::string& text) {
        worksheet_write_string(overview.sheet, overview.next, 0, name, bold);
        worksheet_write_string(overview.sheet, overview.next++, 1, text.c_str(), nullptr);
    }
    void AddCount(const char* name, std::int32_t count) {
        worksheet_write_string(overview.sheet, overview.next, 0, name, bold);
        worksheet_write_number(overview.sheet, overview.next++, 1, count, nullptr);
    }
    void AddOverview();
    void AddChart();
};

static double D(float value) {
    std::string text;  // the shortest decimal of an f32, as a workbook shows all digits of an f64
    AppendNumber(text, value);
    double same = 0;
    std::from_chars(text.data(), text.data() + text.size(), same);
    return same;
}

void Workbook::State::AddOverview() {
    for (const std::string& line : model.titleLine) AddText("Title", AsUtf8(line));
    AddText("Data file", AsUtf8(model.dataFileName.substr(model.dataFileName.rfind('/') + 1)));
    AddText("Analysis", model.analysisType == steadyState ? "steady state" : "transient");
    constexpr std::array<const char*, 4> views{"unknown", "vertical section", "axisymmetric, x is the radius",
                                               "plan view"};
    const bool known = model.problemView >= 1 && model.problemView <= 3;
    AddText("View", views[known ? static_cast<std::size_t>(model.problemView) : 0]);
    AddCount("Nodes", model.nodeCount);
    AddCount("Elements", model.elementCount);
    AddCount("Steps of the sequence", model.stepCount);
    AddText("Units", "those of the data file, which gives all its numbers in one system of units");
    worksheet_set_column(overview.sheet, 0, 0, 24, nullptr);
    worksheet_set_column(overview.sheet, 1, 1, 60, nullptr);
}

// Least and greatest temperature against time.
void Workbook::State::AddChart() {
    if (histories.next < 3) return;
    lxw_chart* const chart = workbook_add_chart(book, LXW_CHART_SCATTER_STRAIGHT);
    const lxw_row_t last = histories.next - 1;
    for (const lxw_col_t column : {lxw_col_t{2}, lxw_col_t{4}}) {
        lxw_chart_series* const series = chart_add_series(chart, nullptr, nullptr);
        chart_series_set_categories(series, "Histories", 1, 1, last, 1);
        chart_series_set_values(series, "Histories", 1, column, last, column);
        chart_series_set_name(series, column == 2 ? "Least temperature" : "Greatest temperature");
    }
    chart_axis_set_name(chart->x_axis, "Time");
    chart_axis_set_name(chart->y_axis, "Temperature");
    worksheet_insert_chart(histories.sheet, 1, 10, chart);
}

Workbook::Workbook() : state_(std::make_unique<State>()) {}

Workbook::~Workbook() {
    if (state_->book == nullptr) return;
    (void)workbook_close(state_->book);
    (void)DeleteFile(PartName(state_->path));
}

int Workbook::Begin() {
    State& s = *state_;
    s.path = ReplaceExtension(model.dataFileName, ".xlsx");
    lxw_workbook_options options{};
    options.constant_memory = LXW_TRUE;  // rows go to temporary files
    s.book = workbook_new_opt(PartName(s.path).c_str(), &options);
    if (s.book == nullptr) return ShowCannotWrite(s.path);
    s.bold = workbook_add_format(s.book);
    format_set_bold(s.bold);
    for (Sheet* const sheet : s.all) {
        if (sheet == &s.sections && model.fluxSectionCount == 0) continue;
        sheet->sheet = workbook_add_worksheet(s.book, sheet->name.c_str());
        if (sheet->sheet == nullptr) return ShowCannotWrite(s.path);
    }
    s.AddOverview();
    s.AddHead(s.histories, {"Step", "Time", "Least temperature", "at node", "Greatest temperature", "at node",
                            "Heat flow in", "Heat flow out", "Net heat flow"});
    s.AddHead(s.nodes, {"Step", "Time", "Node", "x", "y", "Temperature", "Heat flow"});
    s.AddHead(s.elements, {"Step", "Time", "Element", "Material", "Conductivity", "Unfrozen water", "Heat capacity",
                           "Flux x", "Flux y"});
    if (s.sections.sheet != nullptr)
        s.AddHead(s.sections, {"Step", "Time", "Section", "Total", "Heat flux", "Storage"});
    return 1;
}

int Workbook::Add(const StepResults& results) {
    State& s = *state_;
    const double step = results.step;
    const double time = D(results.elapsed);
    const StepSummary sum = SummaryOf(results);
    State::AddRow(s.histories,
                  {step, time, D(sum.least), static_cast<double>(sum.leastNode), D(sum.greatest),
                   static_cast<double>(sum.greatestNode), sum.flowIn, sum.flowOut, sum.flowIn - sum.flowOut});
    for (std::size_t n = 0; n < results.nodes.size(); ++n) {
        const NodeResult& node = results.nodes[n];
        State::AddRow(s.nodes, {step, time, static_cast<double>(n + 1), D(model.nodes[n].x), D(model.nodes[n].y),
                                D(node.temperature), D(node.flow)});
    }
    for (std::size_t e = 0; e < static_cast<std::size_t>(model.elementCount); ++e) {
        if (IsNullElement(model.elements[e])) continue;
        const ElementMeans m = MeansOf(results, e);
        State::AddRow(s.elements,
                      {step, time, static_cast<double>(e + 1), static_cast<double>(model.elements[e].material),
                       D(m.conductivity), D(m.unfrozenWater), D(m.heatCapacity), D(m.fluxX), D(m.fluxY)});
    }
    for (std::size_t i = 0; i < results.sections.size(); ++i) {
        const SectionResult& section = results.sections[i];
        State::AddRow(s.sections, {step, time, static_cast<double>(i + 1), D(section.total), D(section.heatFlux),
                                   D(section.storage)});
    }
    return 1;
}

int Workbook::Finish(std::vector<std::string>& written, std::vector<std::string>& remarks) {
    State& s = *state_;
    s.AddChart();
    const bool closed = workbook_close(s.book) == LXW_NO_ERROR;
    s.book = nullptr;
    if (!closed || !RenameFile(PartName(s.path), s.path)) {
        (void)DeleteFile(PartName(s.path));
        return ShowCannotWrite(s.path);
    }
    written.push_back(s.path);
    for (const Sheet* const sheet : s.all) {
        if (sheet->lost == 0) continue;
        remarks.push_back(
            FormatText("the sheet %s of %s lacks %d rows, which no sheet has room for: export fewer steps, "
                       "or to csv",
                       sheet->name, s.path, sheet->lost));
    }
    return 1;
}

}  // namespace kaldra
