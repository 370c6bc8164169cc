#include "results/text_writer.h"

#include "platform/faults.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

using TextWriter = KaldraTest;

TEST_F(TextWriter, TouchesTheFileOncePerBlock) {
    File file;
    ASSERT_TRUE(file.Create(Path("out")));
    ArmFault(FaultSeam::FileCall, 0);
    for (int i = 0; i < 91; ++i) EXPECT_EQ(WriteBuffered(file, std::string(98, 'x')), 1);
    EXPECT_EQ(FaultCalls(FaultSeam::FileCall), 10);  // of nine lines each
    EXPECT_EQ(WriteBuffered(file, clearbuf), 1);
}

// One by one and many at once; lines fill a block by themselves and together, and need more than one.
TEST_F(TextWriter, GathersLinesWithoutChangingThem) {
    for (const bool together : {false, true}) {
        std::string expected = "clearbuf\r\n";  // the words of a file are no marker
        File file;
        ASSERT_TRUE(file.Create(Path("out")));
        EXPECT_EQ(WriteBuffered(file, "clearbuf"), 1);
        for (std::size_t first = 1; first < 900; first += 7) {
            std::string lines;
            const std::size_t last = 88 + first % 4;  // 906 characters and 90 more are a block
            for (const std::size_t length :
                 {first, 900 - first, std::size_t{0}, last, 2 * last, first, first / 2, 906 + last, 4 * first}) {
                const std::string line(length, static_cast<char>('a' + length % 26));
                EXPECT_TRUE(together || WriteBuffered(file, line) == 1);
                lines += line + "\r\n";
            }
            EXPECT_TRUE(!together || WriteBufferedLines(file, lines) == 1);
            EXPECT_TRUE(first % 3 != 0 || WriteBuffered(file, clearbuf) == 1);
            expected += lines;
        }
        EXPECT_EQ(WriteBuffered(file, clearbuf) + WriteBuffered(file, clearbuf), 2);
        EXPECT_TRUE(file.Close());
        EXPECT_EQ(ReadFile("out"), expected);
    }
}

TEST_F(TextWriter, LosesTheBlockWhenTheDiskIsFull) {
    File full;
    ASSERT_TRUE(full.Create("/dev/full"));
    EXPECT_EQ(WriteBuffered(full, std::string(900, 'x')), 1);
    EXPECT_EQ(WriteBuffered(full, std::string(96, 'x')), -1);
    EXPECT_EQ(WriteBuffered(full, clearbuf), 1);  // nothing is gathered any more
    EXPECT_EQ(WriteBuffered(full, std::string(996, 'x')), -1);
    EXPECT_EQ(WriteBuffered(full, "x"), 1);
    EXPECT_EQ(WriteBuffered(full, clearbuf), -1);
    EXPECT_EQ(WriteBufferedLines(full, std::string(898, 'x') + "\r\n" + std::string(96, 'x') + "\r\n"), -1);
    EXPECT_EQ(recorder.boxes.front().caption, "Error 28");
    ArmFault(FaultSeam::Allocation, 1);
    EXPECT_EQ(WriteBuffered(full, "x"), -1);
    EXPECT_THAT(TakeMessages(), ElementsAre(1192, 1192, 1192, 1192, 1138));

    EXPECT_EQ(WriteLinesAndClose(full, 1035, [](File& out) { return WriteLines(out, Rows{"x"}); }), 0);
    EXPECT_THAT(TakeMessages(), ElementsAre(1192, 1193));  // at the end of the stream
    ASSERT_TRUE(full.Create("/dev/full"));
    ArmFault(FaultSeam::FileCall, 2, false);
    EXPECT_EQ(WriteLinesAndClose(full, 1035, [](File& out) { return WriteLines(out, Rows{std::string(996, 'x')}); }),
              0);
    EXPECT_THAT(TakeMessages(), ElementsAre(1192, 1193, 1035));  // in a line, and the close as well
}

}  // namespace
}  // namespace kaldra
