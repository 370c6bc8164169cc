#include "results/result_file.h"

#include <atomic>

#include "platform/faults.h"
#include "platform/parallel.h"
#include "results/node_results.h"
#include "run/run_state.h"
#include "run/warnings.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

class ResultRows : public KaldraTest {
protected:
    ResultRows() { runState.running = 1; }
    static constexpr RowFormat format{"%5d %+14.6E"};
    // Writes rows "n half" for n = 1, 2, ... and gives the file.
    std::string Written(std::size_t count) {
        File file;
        EXPECT_TRUE(file.Create(Path("rows")));
        const RowsEnd end = WriteRows(file, count, format, [](char* out, std::size_t row) {
            return PutRow(out, format, RowNumber(row), static_cast<float>(row) / 2);
        });
        EXPECT_EQ(end, RowsEnd::Written);
        EXPECT_EQ(WriteBuffered(file, clearbuf), 1);
        EXPECT_TRUE(file.Close());
        return ReadFile("rows");
    }
};

// From none over a part of a chunk to several rounds, for any number of threads.
TEST_F(ResultRows, StandInTheirOrder) {
    const std::size_t chunk = rowRoomBytes / mostChunks / (format.longest + lineEnd.size());
    const std::size_t round = chunk * mostChunks;
    for (const std::size_t count : {std::size_t{0}, std::size_t{1}, chunk - 1, chunk, chunk + 1, round - 1, round,
                                    round + 1, 7 * round + chunk + 5}) {
        std::string expected;
        for (std::size_t row = 0; row < count; ++row) {
            expected += FormatText("%5d %+14.6E\r\n", RowNumber(row), static_cast<float>(row) / 2);
        }
        for (const int threads : {1, 2, 5}) {
            SetThreadCount(threads);
            EXPECT_TRUE(Written(count) == expected) << count << " rows, " << threads << " threads";
        }
    }
}

TEST_F(ResultRows, EndAtTheFirstFailure) {
    static constexpr RowFormat numberAlone("%5d");
    File full;
    ASSERT_TRUE(full.Create("/dev/full"));
    std::atomic<std::size_t> most = 0;
    const RowsEnd end = WriteRows(full, 1000000, numberAlone, [&](char* out, std::size_t row) {
        if (row > most) most = row;
        return PutRow(out, numberAlone, RowNumber(row));
    });
    EXPECT_EQ(end, RowsEnd::Failed);
    EXPECT_LT(most, 100000U);
    EXPECT_THAT(TakeMessages(), ElementsAre(1192));
    EXPECT_EQ(Written(1), "    1 +0.000000E+000\r\n");  // nothing is left of it
}

// A file that is nearly done is finished all the same.
TEST_F(ResultRows, AreGivenUpAtAStop) {
    ClearWarnings();
    model.baseName = Path("case");
    for (const std::int32_t nodes : {100, 100000}) {
        model.nodeCount = nodes;
        model.nodeStates.resize(static_cast<std::size_t>(nodes));
        model.SolutionVector.resize(static_cast<std::size_t>(nodes));
        runState.running = 1;
        EXPECT_EQ(WriteNodeResults(), 1);
        runState.running = 0;
        EXPECT_EQ(WriteNodeResults(), nodes == 100 ? 1 : 0);
        EXPECT_EQ(HasFile("case.t00"), nodes == 100);
    }
    EXPECT_TRUE(ResultsAreWhole());
}

}  // namespace
}  // namespace kaldra
