// What all step result files have in common: their names, their five opening lines and the way they are written.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "model/problem_model.h"
#include "platform/files.h"
#include "results/text_writer.h"

namespace kaldra {

// baseName, then ".", the letter and the number of the step under way with at least two digits: .t00, .t09, .t100.
[[nodiscard]] std::string StepFileName(char letter);

// The four title lines and the line with step number and elapsed time.
[[nodiscard]] std::array<std::string, 5> CommonHeader();

// A result file and its messages.
struct ResultFile {
    std::string path;
    int cannotOpen;
    int cannotClose;
};

// Creates the file, writes the common header, a line of three blanks, `columns` and a rule of `width` equal signs, and
// lets `writeRows(file)` add the rows. Gives 1, or 0 after a message; what was written by then stays.
template <class WriteRows>
[[nodiscard]] int WriteResultFile(const ResultFile& result, std::string_view columns, std::size_t width,
                                  WriteRows writeRows) {
    File file;
    if (!file.Create(result.path)) return ShowError(result.cannotOpen);
    const std::array<std::string, 3> heading{"   ", std::string(columns), std::string(width, '=')};
    return WriteLinesAndClose(file, result.cannotClose, [&](File& out) {
        return WriteLines(out, CommonHeader()) && WriteLines(out, heading) && writeRows(out);
    });
}

// Number of a record in a row of a result file.
[[nodiscard]] inline std::int32_t RowNumber(std::size_t index) { return static_cast<std::int32_t>(index) + 1; }

// Writes a row for every integration point of every element, in order, until `writeRow(file, e, point)` gives -1.
template <class WriteRow>
[[nodiscard]] bool WritePointRows(File& file, WriteRow writeRow) {
    for (std::size_t e = 0; e < static_cast<std::size_t>(model.elementCount); ++e) {
        const std::size_t points = PointCount(e);
        for (std::size_t point = 0; point < points; ++point) {
            if (writeRow(file, e, point) != 1) return false;
        }
    }
    return true;
}

}  // namespace kaldra
