// Stops at every notification and at random moments: what a stopped run leaves is the beginning of a whole one.

#include <atomic>
#include <chrono>
#include <filesystem>
#include <random>
#include <thread>

#include "convergence/graph_memory.h"
#include "frontend/commands.h"
#include "platform/files.h"
#include "platform/parallel.h"
#include "run/analysis.h"
#include "run/run_state.h"
#include "solver/solution.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

// Presses Stop within the notification number `at`, on the thread that makes it.
struct Notifications {
    static void Note() {
        if (++seen == at) Stop();
    }
    inline static std::atomic<int> seen{0};
    inline static std::atomic<int> at{0};
};

class Stops : public KaldraTest {
protected:
    Stops() { SetThreadCount(2); }
    // Starts with an empty folder. Notifications are counted from here on.
    bool Begin(const Problem& problem) {
        for (const auto& [name, bytes] : FilesBeside()) std::filesystem::remove(Path(name));
        recorder.status.clear();
        if (!OpenDataFile(WriteFile("case.kdr", problem.Text()))) return false;
        graphMemory.GraphWindow = 1;
        graphMemory.GraphLastIteration = 1000;
        Notifications::seen = 0;
        return Start() == 1;
    }
    void ExpectBeginningOf(const Contents& whole, int result) {
        EXPECT_FALSE(CalcThreadLives() || runState.running != 0 || HasFile("case.lkp"));
        EXPECT_EQ(TakeMessages(), std::vector<int>{});
        FileLock lock;
        EXPECT_EQ(lock.Take(Path("case.kdr")), FileLock::Result::Held);
        const Contents files = FilesBeside();
        EXPECT_TRUE(result == 0 || files == whole);
        int cut = 0;
        for (const auto& [name, bytes] : files) {
            ASSERT_EQ(whole.count(name), 1U) << name;
            const std::string& all = whole.at(name);
            EXPECT_EQ(all.compare(0, bytes.size(), bytes), 0) << name;
            if (bytes.size() < all.size() && name != "case.cnp") ++cut;
        }
        EXPECT_LE(cut, 1) << "only the file under way may be short";
    }
    void NoteNotifications() {
        recorder.onStatus = [](std::string_view) { Notifications::Note(); };
        recorder.onGraphData = Notifications::Note;
        frontEnd.IterationDone = frontEnd.StartRunAnimation = frontEnd.StopRunAnimation = Notifications::Note;
        frontEnd.UpdateMenuState = frontEnd.UpdateButtonState = frontEnd.ResultsChanged = Notifications::Note;
        frontEnd.RepaintMainWindow = frontEnd.Beep = Notifications::Note;
        frontEnd.SetHaltEnabled = frontEnd.ShowRunIcon = [](bool) { Notifications::Note(); };
    }
};

TEST_F(Stops, AtEveryNotification) {
    NoteNotifications();
    for (const Solver solver : {Solver::Skyline, Solver::Sparse}) {
        WishSolver(solver);
        for (const int steps : {0, 3}) {
            const Problem problem = FreezingSquare(6, steps);
            Notifications::at = 0;
            ASSERT_TRUE(Begin(problem));
            ASSERT_EQ(WaitForEnd(), 1);
            const int last = Notifications::seen;
            const Contents whole = FilesBeside();
            int stopped = 0;
            for (int n = 1; n <= last; ++n) {
                SCOPED_TRACE(n);
                Notifications::at = n;
                ASSERT_TRUE(Begin(problem));
                const int result = WaitForEnd();
                stopped += result == 0;
                ExpectBeginningOf(whole, result);
            }
            EXPECT_GT(stopped, last / 2);
            EXPECT_LT(stopped, last);  // before the run and behind it there is nothing to stop
        }
    }
}

TEST_F(Stops, AtRandomMoments) {
    std::mt19937 random(20);  // NOLINT: the same runs each time
    const auto upTo = [&random](int most) { return static_cast<int>(random() % static_cast<unsigned>(most + 1)); };
    for (int round = 0; round < 12; ++round) {
        WishSolver(upTo(1) == 0 ? Solver::Skyline : Solver::Sparse);
        const Problem problem = FreezingSquare(8 + upTo(24), upTo(3));
        ASSERT_TRUE(Begin(problem));
        const auto begun = std::chrono::steady_clock::now();
        ASSERT_EQ(WaitForEnd(), 1);
        const std::chrono::duration<double, std::micro> length = std::chrono::steady_clock::now() - begun;
        const Contents whole = FilesBeside();
        for (int i = 0; i < 6; ++i) {
            const double moment = length.count() * upTo(110) / 100;
            SCOPED_TRACE(testing::Message() << "round " << round << ", after " << moment << " microseconds");
            ASSERT_TRUE(Begin(problem));
            std::this_thread::sleep_for(std::chrono::duration<double, std::micro>(moment));
            Stop();
            ExpectBeginningOf(whole, WaitForEnd());
        }
    }
}

}  // namespace
}  // namespace kaldra
