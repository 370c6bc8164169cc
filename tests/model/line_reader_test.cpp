#include "model/line_reader.h"

#include "platform/faults.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

class LineReader : public KaldraTest {
protected:
    // All lines of a file with this content, and behind them the last result.
    Rows Lines(std::string_view content) {
        File file;
        LineBuffer line;
        EXPECT_TRUE(file.OpenForReading(WriteFile("in", content)));
        Rows lines;
        int result = 0;
        while ((result = ReadLine(file, line)) == 1) lines.emplace_back(line.View());
        EXPECT_EQ(ReadLine(file, clearbuf), 1);
        lines.push_back(std::to_string(result));
        return lines;
    }
};

TEST_F(LineReader, TakesLinesApart) {
    const std::string nul(1, '\0');
    EXPECT_THAT(Lines(""), ElementsAre("0"));
    EXPECT_THAT(Lines("a\r\n\r\n\nlast"), ElementsAre("a", "", "", "last", "0"));
    EXPECT_THAT(Lines("\ra\r\rb\r\n\r"), ElementsAre("ab", "0"));
    EXPECT_THAT(Lines(std::string(93, 'x') + "yz" + std::string(200, 'q') + "\nnext"),
                ElementsAre(std::string(93, 'x') + "y", "next", "0"));
    EXPECT_THAT(Lines("ab" + nul + "cd\nlost\n"), ElementsAre("ab", "0"));  // a NUL loses the rest of its block
    EXPECT_THAT(Lines("ab" + nul + std::string(997, 'x') + "cd\nef\n"), ElementsAre("abcd", "ef", "0"));
    EXPECT_THAT(Lines("caf\xc3\xa9 \xff\n"), ElementsAre("caf\xc3\xa9 \xff", "0"));
}

// Whatever byte of a line a block of 1000 ends at, the lines are the same.
TEST_F(LineReader, HidesTheBlocks) {
    for (std::size_t shift = 0; shift < 95; ++shift) {
        std::string content;
        Rows expected;
        for (std::size_t i = 0; i < 26; ++i) {
            expected.emplace_back(i == 0 ? shift : 92, static_cast<char>('a' + i));
            content += expected.back() + "\r\n";
        }
        expected.emplace_back("0");
        ASSERT_EQ(Lines(content), expected) << "first line of " << shift;
    }
}

TEST_F(LineReader, ReadsManyBlocksAtOnceAndShowsFailures) {
    File file;
    LineBuffer line;
    ASSERT_TRUE(file.OpenForReading(WriteFile("in", std::string(96000, '\n'))));
    ArmFault(FaultSeam::FileCall, 2);
    for (int i = 0; i < 64000; ++i) ASSERT_EQ(ReadLine(file, line), 1);
    EXPECT_EQ(ReadLine(file, line), -1);
    ArmFault(FaultSeam::Allocation, 1);
    EXPECT_EQ(ReadLine(file, line), -1);
    EXPECT_THAT(TakeMessages(), ElementsAre(1020, 1138));
    EXPECT_EQ(ReadLine(file, line), 1);
    EXPECT_TRUE(file.SeekToStart());
    EXPECT_EQ(ReadLine(file, clearbuf), 1);  // makes the reader forget what it has read ahead
    int lines = 0;
    while (ReadLine(file, line) == 1) ++lines;
    EXPECT_EQ(lines, 96000);
}

}  // namespace
}  // namespace kaldra
