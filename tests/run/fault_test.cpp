// The rehearsal: every file call and every table allocation of small runs fails in turn, from Open to "Done.".

#include "platform/faults.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>

#include "frontend/commands.h"
#include "platform/files.h"
#include "platform/number_text.h"
#include "platform/parallel.h"
#include "run/analysis.h"
#include "run/last_net.h"
#include "run/messages.h"
#include "run/run_state.h"
#include "run/warnings.h"
#include "solver/solution.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

using Numbers = std::vector<int>;

// A run as it begins on disk: the files beside its data file, and how it is started.
struct Rehearsed {
    Problem problem;
    std::int32_t startStep = 0;    // 0: as opened
    std::string initialFile = {};  // empty: none
    Contents beside = {};
};

// How a run with a failing call ended.
struct Ending {
    std::string call;  // "write t", "open tin": of step files without the number
    Numbers messages;
    int result;
    bool whole;  // with the result, what the console makes its exit status of
    Rows warnings;

    [[nodiscard]] bool IsSilent() const { return messages.empty() && warnings.empty() && result == 1 && whole; }
    [[nodiscard]] std::string Text() const {
        std::string text;
        for (const int number : messages) text += FormatText("%d ", number);
        if (result != 1) return text + "failed";
        return text + (whole ? warnings.empty() ? "done" : "warned" : "broken");
    }
};

// "write /folder/case.t03" becomes "write t".
std::string WithoutPlace(const std::string& call) {
    const std::string verb = call.substr(0, call.find(' '));
    const std::size_t dot = call.rfind('.');
    if (dot == std::string::npos) return verb;
    const std::string extension = call.substr(dot + 1);
    return verb + ' ' + extension.substr(0, extension.find_first_of("0123456789"));
}

class Rehearsal : public KaldraTest {
protected:
    // Four triangles, flux section, prescribed flow, smoothed function; writes every file that a steady run can.
    static Problem SmallProblem() {
        Problem small = Column();
        small.K = {FunctionRows(1, {"-50 2", "0 2.1", "20 2.2", "50 2.1"}, "1 0.5")};
        small.edges = {"5 6 4 0 1 0 0"};
        for (int i = 1; i <= 20; ++i) small.flux.push_back(FormatText("%d 1\n1 -1 0.5 2 0.5", i));
        small.converge = "9 0.01 0";
        return small;
    }
    static Problem TransientProblem() {
        Problem small = SmallProblem();
        MakeWet(small);
        small.times = {"1 1 1 1", "2 1 2 0", "3 1 3 1"};
        return small;
    }
    Rehearsed Steady() {
        return {SmallProblem(), 0, "", {{"case.t01", "old"}, {"case.tin", "old"}, {"case.cnp", "old"}}};
    }
    Rehearsed Transient() { return {TransientProblem(), 0, "", {{"case.t03", "old"}, {"case.j100", "old"}}}; }
    // Begins behind step 1 of its own results.
    Rehearsed Restarted() {
        EXPECT_EQ(Run(TransientProblem()).result, 1);
        return {TransientProblem(), 2, "", FilesBeside()};
    }
    // Begins from another problem's results, whose companions it takes along.
    Rehearsed Continued() {
        Contents files{{"other.m03", "m"}, {"other.v03", "v"}, {"other.f03", "f"}};
        EXPECT_EQ(Run(TransientProblem()).result, 1);
        files["other.t03"] = ReadFile("case.t03");
        files["other.r03"] = ReadFile("case.r03");
        return {TransientProblem(), 0, "other.t03", files};
    }

    void RestoreFiles(const Contents& files) const {
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            if (entry.path() != Path("case.kdr")) std::filesystem::remove(entry.path());
        }
        for (const auto& [name, bytes] : files) WriteFile(name, bytes);
    }
    // From the opening of the data file as the console goes about it. Whatever is made here belongs to the run.
    int OpenAndRun(const Rehearsed& start, const std::string& file, const std::string& initialFile) {
        if (!OpenDataFile(file)) return 0;
        if (start.startStep > 0) ChooseStartTime(start.startStep);
        if (!start.initialFile.empty() && !ChooseInitialConditions(initialFile)) return 0;
        return Start() ? WaitForEnd() : 0;
    }
    // What has to hold however a run ends.
    void ExpectOrder(const Ending& end) {
        EXPECT_FALSE(CalcThreadLives());
        EXPECT_EQ(runState.running, 0);
        for (const int number : end.messages) EXPECT_NE(StringText(number), "") << number;
        EXPECT_TRUE(end.result == 1 || !end.messages.empty()) << "fails without a word";
        FileLock lock;
        EXPECT_EQ(lock.Take(Path("case.kdr")), FileLock::Result::Held);
        if (!HasFile("case.lkp")) return;
        ++markersLeft;
        EXPECT_THAT(end.warnings, testing::Contains(testing::HasSubstr("case.lkp could not be deleted")));
    }
    // Runs with the n-th call failing for every n up to the last, and gives the end of each run; nothing fails in the
    // last one, and every other that ends as if nothing had failed has to leave the same files.
    std::vector<Ending> RehearseAll(const Rehearsed& start, FaultSeam seam, bool onlyOnce) {
        const std::string file = WriteFile("case.kdr", start.problem.Text());
        const std::string initialFile = Path(start.initialFile);
        const auto openAndRun = [&] { return OpenAndRun(start, file, initialFile); };
        std::vector<Ending> endings;
        std::map<std::int64_t, Contents> silent;
        for (std::int64_t n = 1;; ++n) {
            RestoreFiles(start.beside);
            ClearWarnings();
            ArmFault(seam, n, onlyOnce);
            const int result = CatchLackOfMemory(openAndRun);
            const std::string call = StruckCall(seam);
            ArmFault(seam, 0);
            endings.push_back({WithoutPlace(call), TakeMessages(), result, ResultsAreWhole(), TakeWarnings()});
            SCOPED_TRACE(testing::Message() << "call " << n << ": " << call);
            ExpectOrder(endings.back());
            if (endings.back().IsSilent()) silent[n] = FilesBeside();
            if (call.empty()) break;
        }
        EXPECT_TRUE(endings.back().IsSilent());
        for (const auto& [call, files] : silent) {
            EXPECT_TRUE(files == silent.rbegin()->second) << "call " << call << " changes the results and nobody tells";
        }
        return endings;
    }
    int markersLeft = 0;
};

// By the call that fails: messages in their order, and done, warned (and done), broken (done, but with files that are
// not whole) or failed.
TEST_F(Rehearsal, FileCallsFailInTurn) {
    using Endings = std::set<std::string>;
    std::map<std::string, Endings> expected{
        {"", {"done"}},
        {"exists", {"done"}},
        {"exists cnp", {"done"}},
        {"lock kdr", {"done"}},
        {"open kdr", {"1020 failed"}},
        {"read kdr", {"1020 1150 failed"}},
        // what a start builds on, older results that it holds against the time sequence, and what it writes
        {"exists t", {"1075 failed", "4005 done"}},
        {"open t", {"1021 failed", "1024 failed", "done"}},
        {"read t", {"1020 1152 failed", "1020 1301 failed", "1020 done"}},
        {"exists r", {"1075 failed", "4005 done"}},
        {"open r", {"1023 failed"}},
        {"read r", {"1020 1151 failed"}},
        {"open tin", {"1021 1082 failed"}},
        {"write tin", {"1192 1193 1082 failed"}},
        {"close tin", {"1035 1082 failed"}},
        // the run
        {"open cnp", {"1025 failed"}},
        {"seek cnp", {"1025 failed"}},
        {"close cnp", {"1038 failed"}},
        {"close t", {"1035 failed"}},
        {"open g", {"1022 failed"}},
        {"close g", {"1036 failed"}},
        {"close r", {"1037 failed"}},
        {"open j", {"1026 failed"}},
        {"write j", {"1192 1193 failed", "1192 broken"}},  // only its last block counts
        {"close j", {"1039 failed"}},
    };
    for (const char* file : {"cnp", "t", "g", "r"}) expected[std::string("write ") + file] = {"1192 1193 failed"};
    for (const char* file : {"min", "vin", "fin"}) expected[std::string("copy ") + file] = {"broken"};
    for (const char* file : {"t", "g", "r", "j", "tin", "gin", "rin", "jin", "lkp"}) {
        expected[std::string("delete ") + file] = {"warned"};
    }
    for (const char* call : {"list", "open lkp", "close lkp"}) expected[call] = {"warned"};

    std::map<std::string, Endings> found;
    for (const Rehearsed& start : {Steady(), Transient(), Restarted(), Continued()}) {
        for (const Ending& end : RehearseAll(start, FaultSeam::FileCall, true)) {
            found[end.call].insert(end.Text());
            if (end.whole) continue;
            const std::string name = "case." + end.call.substr(end.call.find(' ') + 1);
            EXPECT_THAT(end.warnings, testing::ElementsAre(testing::ContainsRegex(name + ".* was not written whole")));
        }
    }
    for (const auto& [call, endings] : found) EXPECT_EQ(endings, expected[call]) << call;
    EXPECT_EQ(found.size(), expected.size());
    EXPECT_EQ(markersLeft, 4);  // when its own deletion failed
}

TEST_F(Rehearsal, FileCallsFailFromThenOn) {
    for (const Rehearsed& start : {Steady(), Transient(), Restarted(), Continued()}) {
        const std::vector<Ending> endings = RehearseAll(start, FaultSeam::FileCall, false);
        EXPECT_EQ(endings.front().Text(), "1020 failed");
        const auto saved = std::ranges::find_if(endings, [](const Ending& end) { return end.call == "open g"; });
        ASSERT_NE(saved, endings.end());
        for (auto end = saved; end + 2 != endings.end(); ++end) EXPECT_EQ(end->result, 0) << end->call;
    }
}

TEST_F(Rehearsal, AllocationsFailInTurn) {
    SetThreadCount(2);
    Problem wet = Square(11);  // enough elements for several threads at every stage
    MakeWet(wet);
    wet.K = SmallProblem().K;
    wet.times = {"1 1 1 1", "2 1 2 0"};
    Problem dry = wet;
    dry.analysis = "1 3 0 1 0";  // in plan, with the areas of nodes
    for (const Solver solver : {Solver::Skyline, Solver::Sparse}) {
        WishSolver(solver);
        ASSERT_EQ(Run(wet).result, 1);
        for (const Rehearsed& start : {Rehearsed{dry}, Rehearsed{wet, 2, "", FilesBeside()}}) {
            for (const bool onlyOnce : {true, false}) {
                if (!onlyOnce && solver == Solver::Sparse) continue;  // what fails then fails before a solver is asked
                const std::vector<Ending> endings = RehearseAll(start, FaultSeam::Allocation, onlyOnce);
                EXPECT_GT(endings.size(), 100U);
                for (const Ending& end : endings) {
                    const auto told = std::ranges::count(end.messages, 1138);
                    EXPECT_TRUE(end.IsSilent() || (told > 0 && !end.whole)) << end.Text();
                    EXPECT_TRUE(!onlyOnce || told < 2) << end.Text();
                }
            }
        }
    }
    EXPECT_EQ(markersLeft, 0);
}

// Not only those of tables: every text and every name.
TEST_F(Rehearsal, TriflesThatFindNoMemoryEndTheRunInOrder) {
    SetThreadCount(2);
    for (const Rehearsed& start : {Steady(), Restarted(), Continued()}) {
        const std::vector<Ending> endings = RehearseAll(start, FaultSeam::OperatorNew, true);
        EXPECT_GT(endings.size(), 300U);
        for (const Ending& end : endings) {
            EXPECT_TRUE(end.IsSilent() || testing::Value(end.messages, testing::Contains(1138))) << end.Text();
            EXPECT_TRUE(end.messages.empty() || end.result == 0 || !end.whole) << end.Text();
        }
    }
    EXPECT_EQ(markersLeft, 0);
}

}  // namespace
}  // namespace kaldra
