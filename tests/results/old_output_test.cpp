// What a start deletes, and what it leaves alone.

#include "results/old_output.h"

#include <filesystem>
#include <iterator>
#include <sstream>

#include "run/run_state.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

using OldOutput = KaldraTest;

Rows Words(std::string_view text) {
    std::istringstream stream{std::string(text)};
    return {std::istream_iterator<std::string>(stream), {}};
}

struct StartCase {
    const char* what;
    int analysisType, startStep;
    const char *kept, *deleted;  // the latter in the order of the status lines
};

// Names are read literally: a* stands for nothing else.
TEST_F(OldOutput, GoesByStart) {
    const std::vector<StartCase> cases{
        {"steady state", 1, 0, "", "a*.t01 a*.t03 a*.t100 a*.g04 a*.r05 a*.j12"},  // and a*.tin, a*.gin without a line
        {"from the beginning", 2, 1, "a*.tin a*.gin", "a*.t01 a*.t03 a*.t100 a*.g04 a*.r05 a*.j12"},
        {"at step 5", 2, 5, "a*.tin a*.gin a*.t01 a*.t03 a*.g04", "a*.t100 a*.r05 a*.j12"},
        {"behind everything", 2, 101, "a*.tin a*.gin a*.t01 a*.t03 a*.g04 a*.t100 a*.r05 a*.j12", ""},
    };
    const Rows spared = Words("a*.kdr a*.cnp a*.t00 a*.t1a a*.t a*.m07 b.t05 ab.t05 a*.b.t05");
    for (const StartCase& c : cases) {
        Rows expected = Words(c.kept), deleted = Words(c.deleted);
        expected.insert(expected.end(), spared.begin(), spared.end());
        for (const Rows& names : {expected, deleted, Rows{"a*.tin", "a*.gin"}}) {
            for (const std::string& name : names) WriteFile(name, "x");
        }
        model.dataFileName = Path("a*.kdr");
        model.analysisType = c.analysisType;
        runState.startStep = c.startStep;
        recorder.status.clear();
        EXPECT_EQ(ClearOldOutput(), 1);
        Rows kept;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) kept.push_back(entry.path().filename());
        EXPECT_THAT(kept, testing::UnorderedElementsAreArray(expected)) << c.what;
        if (!deleted.empty()) deleted.insert(deleted.begin(), "Deleting old output files...");
        EXPECT_EQ(recorder.status, deleted) << c.what;
    }
}

TEST_F(OldOutput, ANameWithoutAnExtensionIsShown) {
    model.dataFileName = "nodot";
    EXPECT_EQ(ClearOldOutput(), 0);
    EXPECT_EQ(TakeMessages(), std::vector<int>{1074});
}

}  // namespace
}  // namespace kaldra
