// What a start deletes, and what it leaves alone.

#include "results/old_output.h"

#include <filesystem>
#include <set>

#include "run/run_state.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

struct StartCase {
    const char* what;
    int analysisType, startStep;
    std::set<std::string> kept;
    Rows status;
};

class OldOutput : public KaldraTest {};

TEST_F(OldOutput, GoesByStart) {
    const std::set<std::string> all{"a.kdr", "a.cnp", "a.t00", "a.t01", "a.t03", "a.t100", "a.g04", "a.r05",
                                    "a.j12", "a.tin", "a.gin", "a.t1a", "a.t",   "a.m07",  "b.t05", "a.b.t05"};
    const std::set<std::string> spared{"a.kdr", "a.cnp", "a.t00", "a.t1a", "a.t", "a.m07", "b.t05", "a.b.t05"};
    const auto with = [&](std::set<std::string> more) {
        more.insert(spared.begin(), spared.end());
        return more;
    };
    const std::vector<StartCase> cases{
        {"steady state",
         1,
         0,
         with({}),
         {"Deleting old output files...", "a.t01", "a.t03", "a.t100", "a.g04", "a.r05", "a.j12"}},
        {"from the beginning",
         2,
         1,
         with({"a.tin", "a.gin"}),
         {"Deleting old output files...", "a.t01", "a.t03", "a.t100", "a.g04", "a.r05", "a.j12"}},
        {"at step 5",
         2,
         5,
         with({"a.tin", "a.gin", "a.t01", "a.t03", "a.g04"}),
         {"Deleting old output files...", "a.t100", "a.r05", "a.j12"}},
        {"behind everything",
         2,
         101,
         with({"a.tin", "a.gin", "a.t01", "a.t03", "a.g04", "a.t100", "a.r05", "a.j12"}),
         {}},
    };
    for (const StartCase& c : cases) {
        for (const std::string& name : all) WriteFile(name, "x");
        model.dataFileName = Path("a.kdr");
        model.analysisType = c.analysisType;
        runState.startStep = c.startStep;
        recorder.status.clear();
        EXPECT_EQ(ClearOldOutput(), 1);
        std::set<std::string> kept;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) kept.insert(entry.path().filename());
        EXPECT_EQ(kept, c.kept) << c.what;
        EXPECT_EQ(recorder.status, c.status) << c.what;
    }
}

TEST_F(OldOutput, ReadsNamesLiterally) {
    WriteFile("a*.t05", "x");
    WriteFile("ab.t05", "x");
    model.dataFileName = Path("a*.kdr");
    model.analysisType = 2;
    EXPECT_EQ(ClearOldOutput(), 1);
    EXPECT_FALSE(HasFile("a*.t05"));
    EXPECT_TRUE(HasFile("ab.t05"));
    model.dataFileName = "nodot";
    EXPECT_EQ(ClearOldOutput(), 0);
    EXPECT_EQ(TakeMessages(), std::vector<int>{1074});
}

}  // namespace
}  // namespace kaldra
