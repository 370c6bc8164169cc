// The rehearsal: every file call and every table allocation of a small problem fails in turn, from Open to "Done.".

#include "platform/faults.h"

#include <filesystem>
#include <map>
#include <set>

#include "frontend/commands.h"
#include "run/analysis.h"
#include "run/messages.h"
#include "run/warnings.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

using Numbers = std::vector<int>;

class Rehearsal : public KaldraTest {
protected:
    static Problem SmallProblem() {
        Problem small = Column();
        small.K = {FunctionRows(1, {"-50 2", "0 2.1", "20 2.2", "50 2.1"}, "1 0.5")};
        small.edges = {"5 6 4 0 1 0 0"};
        small.flux = {"1 1\n1 -1 0.5 2 0.5"};
        small.converge = "3 0.01 0";
        return small;
    }
    using Contents = std::map<std::string, std::string>;

    [[nodiscard]] Contents ResultFiles() const {
        Contents files;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            const std::string name = entry.path().filename().string();
            if (name != "case.lkp") files[name] = ReadFile(name);
        }
        return files;
    }
    // Runs with the n-th call failing for every n up to the last, and gives the messages of each run.
    std::vector<Numbers> RehearseAll(FaultSeam seam, bool onlyOnce) {
        std::vector<Numbers> all;
        const std::string path = WriteFile("case.kdr", SmallProblem().Text());
        for (std::int64_t n = 1;; ++n) {
            for (const auto& entry : std::filesystem::directory_iterator(folder)) {
                if (entry.path() != path) std::filesystem::remove(entry.path());
            }
            ClearWarnings();
            ArmFault(seam, n, onlyOnce);
            const bool opened = OpenDataFile(path) == 1;
            const Outcome run = opened ? RunOpened() : Outcome{};
            const bool struck = FaultCalls(seam) >= n;
            ArmFault(seam, 0);
            EXPECT_FALSE(CalcThreadLives());
            all.push_back(TakeMessages());
            EXPECT_TRUE(run.result == 1 || !all.back().empty()) << "call " << n << " fails without a word";
            EXPECT_TRUE(run.result == 0 || HasFile("case.t00")) << n;
            if (run.result == 1 && ResultsAreWhole()) believed[n] = ResultFiles();
            if (HasFile("case.lkp")) {
                ++markersLeft;
                EXPECT_THAT(TakeWarnings(), testing::Contains(testing::HasSubstr("case.lkp could not be deleted")));
            }
            if (!struck) {
                EXPECT_EQ(run.result, 1);
                EXPECT_TRUE(all.back().empty());
                for (const auto& [call, files] : believed) {
                    EXPECT_TRUE(files == believed.rbegin()->second) << "call " << call << " changed the results";
                }
                return all;
            }
        }
    }
    int markersLeft = 0;
    std::map<std::int64_t, Contents> believed;  // of the runs that finished and called their files whole
};

TEST_F(Rehearsal, FileCallsFailInTurn) {
    const std::vector<Numbers> all = RehearseAll(FaultSeam::FileCall, true);
    EXPECT_EQ(markersLeft, 1);  // when its own deletion failed
    const std::set<Numbers> kinds(all.begin(), all.end());
    for (const Numbers& kind : {Numbers{}, {1020}, {1020, 1150}, {1025}, {1038}, {1192, 1193}, {1021}, {1035}}) {
        EXPECT_EQ(kinds.count(kind), 1U) << testing::PrintToString(kind);
    }
    for (const Numbers& kind : kinds) {
        for (const int number : kind) EXPECT_NE(StringText(number), "") << number;
    }
}

TEST_F(Rehearsal, FileCallsFailFromThenOn) {
    const std::vector<Numbers> all = RehearseAll(FaultSeam::FileCall, false);
    EXPECT_EQ(all.front(), Numbers{1020});
}

TEST_F(Rehearsal, AllocationsFailInTurn) {
    for (const bool onlyOnce : {true, false}) {
        const std::vector<Numbers> all = RehearseAll(FaultSeam::Allocation, onlyOnce);
        EXPECT_GT(all.size(), 100U);
        for (const Numbers& numbers : all)
            EXPECT_TRUE(&numbers == &all.back() || testing::Value(numbers, testing::Contains(1138)));
    }
    EXPECT_EQ(markersLeft, 0);
}

}  // namespace
}  // namespace kaldra
