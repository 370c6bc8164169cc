// What all step result files have in common: their names, their five opening lines and the way they are written.
#pragma once

#include <algorithm>
#include <array>
#include <cassert>
#include <string>
#include <string_view>

#include "element/shape_functions.h"
#include "model/problem_model.h"
#include "platform/files.h"
#include "platform/number_text.h"
#include "platform/parallel.h"
#include "results/text_writer.h"
#include "run/run_state.h"
#include "run/warnings.h"

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

// How the writing of rows ended; it is given up when Stop was pressed and more than a moment's work was left.
enum class RowsEnd { Written, Failed, GivenUp };

// Creates the file, writes the common header, a line of three blanks, `columns` and a rule of `width` equal signs, and
// lets `writeRows(file)` add the rows. Gives 1, or 0 after a message; what was written by then stays. Gives 0 and
// leaves no file where the rows were given up.
template <class WriteRows>
[[nodiscard]] int WriteResultFile(const ResultFile& result, std::string_view columns, std::size_t width,
                                  WriteRows writeRows) {
    File file;
    if (!file.Create(result.path)) return ShowError(result.cannotOpen);
    const std::array<std::string, 3> heading{"   ", std::string(columns), std::string(width, '=')};
    auto end = RowsEnd::Failed;
    const int whole = WriteLinesAndClose(file, result.cannotClose, [&](File& out) {
        if (WriteLines(out, CommonHeader()) && WriteLines(out, heading)) end = writeRows(out);
        return end != RowsEnd::Failed;
    });
    if (end != RowsEnd::GivenUp) return whole;
    if (!DeleteFile(result.path)) WarnOfBrokenFile(result.path);
    (void)TakeLastSystemError();
    return 0;
}

inline char* PutLineEnd(char* out) { return out + lineEnd.copy(out, lineEnd.size()); }

// Where rows are put by all threads, each chunk at its own place, before they are joined and written: small enough for
// the cache, and there for the whole process, since new memory for every file would cost more than its rows.
inline constexpr std::size_t rowRoomBytes = 512U << 10U;
inline constexpr std::size_t mostChunks = 64;

struct RowRoom {
    std::array<char, rowRoomBytes> rows;
    std::array<char, rowRoomBytes> joined;
};

[[nodiscard]] RowRoom& TheRowRoom();

// Number of a record in a row of a result file.
[[nodiscard]] inline std::int32_t RowNumber(std::size_t index) { return static_cast<std::int32_t>(index) + 1; }

// Writes the lines of `count` items in their order: putItem(out, item) puts the lines of one, at most `longest`
// characters with their line ends and at most the room of a chunk, and gives the place behind. It is called on several
// threads and may only read.
template <class PutItem>
[[nodiscard]] RowsEnd WriteItems(File& file, std::size_t count, std::size_t longest, const PutItem& putItem) {
    assert(longest > 0 && longest <= rowRoomBytes / mostChunks);
    const std::size_t grain = rowRoomBytes / mostChunks / longest;
    const std::size_t fitting = grain * mostChunks;
    RowRoom& room = TheRowRoom();
    std::string_view unwritten;  // of the round before: the caller writes it while this one is put
    bool written = true;
    const auto write = [&] { written = WriteBufferedLines(file, unwritten) == 1; };
    for (std::size_t first = 0; first < count && written; first += fitting) {
        if (first > 0 && !IsRunning()) return RowsEnd::GivenUp;
        std::array<std::string_view, mostChunks> chunks;
        RunChunksBeside(write, std::min(fitting, count - first), grain, [&](std::size_t begin, std::size_t end) {
            char* const start = room.rows.data() + begin * longest;
            char* at = start;
            for (std::size_t i = begin; i < end; ++i) at = putItem(at, first + i);
            chunks[begin / grain] = {start, at};
        });
        char* joined = room.joined.data();
        for (const std::string_view chunk : chunks) joined += chunk.copy(joined, chunk.size());
        unwritten = {room.joined.data(), joined};
    }
    if (written) write();
    return written ? RowsEnd::Written : RowsEnd::Failed;
}

// Writes `count` rows: putRow(out, row) fills in the format's numbers and gives the place behind.
template <class PutNumbers>
[[nodiscard]] RowsEnd WriteRows(File& file, std::size_t count, const RowFormat& format, const PutNumbers& putRow) {
    return WriteItems(file, count, format.longest + lineEnd.size(),
                      [&](char* out, std::size_t row) { return PutLineEnd(putRow(out, row)); });
}

// Writes the rows of every element's integration points, in order: putElement(out, e) puts those of one with their line
// ends.
template <class PutElement>
[[nodiscard]] RowsEnd WritePointRows(File& file, const RowFormat& format, const PutElement& putElement) {
    return WriteItems(file, static_cast<std::size_t>(model.elementCount),
                      largestRule * (format.longest + lineEnd.size()), putElement);
}

}  // namespace kaldra
