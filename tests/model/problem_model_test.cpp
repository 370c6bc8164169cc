#include "model/problem_model.h"

#include "convergence/graph_memory.h"
#include "model/file_names.h"
#include "model/time_sequence.h"
#include "platform/faults.h"
#include "run/run_state.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

using ModelTest = KaldraTest;

TEST_F(ModelTest, AnEmptyModelAnswersWithOneZeroRecord) {
    ASSERT_TRUE(Prepare(Column()));
    runState.startStep = 5;
    EXPECT_EQ(FreeModel(), 1);
    EXPECT_TRUE(model.nodes.empty() && model.titleLine[0].empty() && graphMemory.GraphNorms.empty());
    InitModel(1);
    EXPECT_EQ(model.baseName, Path("case"));  // the document outlives the tables
    EXPECT_EQ(model.analysisType, steadyState);
    EXPECT_TRUE(runState.currentStep == 4 && IsRunning() == 0);
    EXPECT_EQ(model.nodeCount + model.elementCount + model.materialCount + model.kFunctionCount, 0);
    EXPECT_TRUE(model.nodes.size() == 1 && model.PhaseState.size() == 1 && graphMemory.GraphIterations.size() == 1);
    EXPECT_TRUE(model.nodes[0].bcType == 0 && model.timeSteps.at(0).elapsed == 0 && model.materials.size() == 1);
    ArmFault(FaultSeam::Allocation, 10);
    EXPECT_EQ(FreeModel(), 1);
    InitModel(1);
    EXPECT_THAT(TakeMessages(), ElementsAre(1138));
    EXPECT_TRUE(model.nodes.size() == 1 && model.elements.empty() && model.PhaseState.empty());  // no table after it
}

TEST_F(ModelTest, StepZeroHasNoRecord) {
    model.timeSteps = {{2, 2, 1}, {0, 2, 1}};
    model.stepCount = 2;
    EXPECT_THAT((std::array{ElapsedTime(0), StepIncrement(0), ElapsedTime(2), ElapsedTime(3)}),
                ElementsAre(0, 0, 2, 0));
    EXPECT_TRUE(InverseIncrement(1) == 0.5 && InverseIncrement(2) == 0);
}

TEST_F(ModelTest, FileNamesComeApart) {
    EXPECT_TRUE(FileNameOffset("/a.b\\c/d.kdr") == 7 && FileNameOffset("C:\\dir\\x.kdr") == 7 &&
                FileNameOffset("x") == 0);
    EXPECT_EQ(ReplaceExtension("/a.b/c.d.kdr", ".cnp"), "/a.b/c.d.cnp");
    std::int32_t dot = 0, length = 0;
    EXPECT_EQ(FindExtension("c.d.kdr", dot, length), 1);
    EXPECT_TRUE(dot == 4 && length == 7);
    EXPECT_EQ(FindExtension("plain", dot, length), 0);
    EXPECT_THAT(TakeMessages(), ElementsAre(1074));
}

}  // namespace
}  // namespace kaldra
