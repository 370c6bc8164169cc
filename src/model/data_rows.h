// The lines of the problem data file, one by one: section keywords and rows.
//
// Both readers scan with these: ReadDataFile, which stops at the first line that is wrong, and the check, which goes
// on. A scan fills its record in as far as the line goes. Nothing is checked but that numbers can be read and fit.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "model/problem_model.h"

namespace kaldra {

// The sections in the order in which a keyword line is compared with them; QBoundary ends the file.
enum class Section : std::uint8_t {
    Title,
    Analysis,
    Converge,
    Time,
    Material,
    KFunction,
    SFunction,
    MFunction,
    BFunction,
    Node,
    Element,
    Pole,
    Flux,
    QBoundary,
};

inline constexpr std::size_t sectionCount = 14;

[[nodiscard]] std::string_view KeywordOf(Section section);

// The section whose keyword the line, without leading blanks, begins with.
[[nodiscard]] std::optional<Section> SectionOfLine(std::string_view line);

// What a line gave.
struct RowScan {
    bool whole = false;  // it holds all fields that the row must have
    int fields = 0;      // that it holds, optional ones included
};

// A node as its row gives it, before the rules of ReadDataFile for its boundary and its start.
struct NodeRow {
    std::int32_t number = 0;
    NodeRec node{};
    std::int32_t initialFlag = 0;
    float initialTemperature = 0;
};

[[nodiscard]] RowScan ScanVersionRow(std::string_view line, float& version);
[[nodiscard]] RowScan ScanAnalysisRow(std::string_view line, ProblemModel& settings);
[[nodiscard]] RowScan ScanConvergeRow(std::string_view line, ProblemModel& settings);
[[nodiscard]] RowScan ScanTimeRow(std::string_view line, TimeStepRec& step);
[[nodiscard]] RowScan ScanMaterialRow(std::string_view line, std::int32_t& number, MaterialRec& material);
[[nodiscard]] RowScan ScanFunctionHeader(std::string_view line, std::int32_t& number, PropertyFunction& function);
[[nodiscard]] RowScan ScanFunctionHeader(std::string_view line, std::int32_t& number, BoundaryFunction& function);
[[nodiscard]] RowScan ScanPointRow(std::string_view line, FunctionPoint& point);
[[nodiscard]] RowScan ScanNodeRow(std::string_view line, NodeRow& row);
[[nodiscard]] RowScan ScanElementRow(std::string_view line, std::int32_t& number, ElementRec& element);
[[nodiscard]] RowScan ScanPoleRow(std::string_view line, ProblemModel& settings);  // whole whatever it holds
[[nodiscard]] RowScan ScanFluxHeader(std::string_view line, std::int32_t& number, FluxSection& section);
[[nodiscard]] RowScan ScanFluxRow(std::string_view line, FluxLine& row);
[[nodiscard]] RowScan ScanEdgeRow(std::string_view line, QBoundaryRec& edge);

// The number behind a keyword.
[[nodiscard]] RowScan ScanCountRow(std::string_view line, std::int32_t& count);
[[nodiscard]] RowScan ScanTimeCountRow(std::string_view line, std::int32_t& count);  // octal and hexadecimal as well

}  // namespace kaldra
