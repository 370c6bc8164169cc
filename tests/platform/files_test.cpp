#include "platform/files.h"

#include <sys/stat.h>

#include <array>
#include <cerrno>

#include "platform/faults.h"
#include "platform/memory.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

using Files = KaldraTest;

TEST_F(Files, KeepBytesAndTellWhatFailed) {
    File file;
    std::array<char, 8> block{};
    ASSERT_TRUE(file.Create(Path("a*[?")));
    EXPECT_EQ(file.Write({"a\0b\r\n", 5}), 5);
    ASSERT_TRUE(file.Close());
    EXPECT_TRUE(FileExists(Path("a*[?")) && !FileExists(Path("a*")));
    ASSERT_TRUE(file.OpenForReading(Path("a*[?")));
    EXPECT_EQ(file.Size(), 5);
    EXPECT_EQ(file.Read(block), 5);
    EXPECT_EQ(file.Read(block), 0);
    EXPECT_TRUE(file.SeekToStart() && file.Read(std::span(block).first(2)) == 2 && file.Close());
    EXPECT_EQ(TakeLastSystemError(), 0);
    EXPECT_FALSE(file.OpenForReading(Path("none")));
    EXPECT_EQ(TakeLastSystemError(), ENOENT);
    EXPECT_EQ(TakeLastSystemError(), 0);
    ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
    EXPECT_FALSE(file.OpenForAppending(Path("none")) || file.OpenForReading(folder) || DeleteFile(Path("none")));
    EXPECT_FALSE(file.OpenForReading(Path("pipe")));  // must not wait for a writer
    EXPECT_TRUE(DeleteFile(Path("a*[?")) && !HasFile("a*[?"));
}

// The lock tells its holders apart even within one process, and reading the file elsewhere does not lose it.
TEST_F(Files, LocksAreHeldOnceAndVanish) {
    using Result = FileLock::Result;
    const std::string path = WriteFile("case.kdr", "text");
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    {
        FileLock first;
        FileLock second;
        ASSERT_EQ(first.Take(path), Result::Held);
        File file;
        EXPECT_TRUE(file.OpenForReading(path) && file.Close());
        EXPECT_EQ(second.Take(path), Result::HeldElsewhere);
        EXPECT_EQ(first.Take(path), Result::Held);
        first.Release();
        EXPECT_EQ(second.Take(path), Result::Held);
    }
    FileLock third;
    EXPECT_EQ(third.Take(path), Result::Held);
    FileLock none;
    EXPECT_EQ(none.Take(Path("none")), Result::Impossible);
}

TEST_F(Files, TablesGrowZeroFilledOrShowAMessage) {
    std::vector<std::int32_t> table{1, 2};
    EXPECT_EQ(ResizeTable(table, 4), 1);
    EXPECT_EQ(ResizeTable(table, std::size_t{1} << 60) + ReserveTable(table, std::size_t{1} << 50), 0);
    ArmFault(FaultSeam::Allocation, 1, false);
    EXPECT_FALSE(AppendRecord(table, 5) == 1 || TryResizeTable(table, 3));
    EXPECT_THAT(table, ElementsAre(1, 2, 0, 0));
    EXPECT_EQ(MakeTable(table, 3), 0);
    EXPECT_TRUE(table.empty());
    EXPECT_THAT(TakeMessages(), ElementsAre(1138, 1138, 1138, 1138));
    ArmFault(FaultSeam::Allocation, 0);
    EXPECT_EQ(MakeTable(table, 2) + AppendRecord(table, 5), 2);
    EXPECT_THAT(table, ElementsAre(0, 0, 5));
}

}  // namespace
}  // namespace kaldra
