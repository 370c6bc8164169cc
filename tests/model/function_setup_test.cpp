#include "model/function_setup.h"

#include "support/kaldra_test.h"

namespace kaldra {
namespace {

using FunctionSetup = KaldraTest;

TEST_F(FunctionSetup, PointsWithoutASlopeShowTheFunctionsTable) {
    for (const auto& [table, message] :
         {std::pair{&Problem::K, 1118}, {&Problem::S, 1174}, {&Problem::M, 1131}, {&Problem::B, 1008}}) {
        Problem problem = Column();
        problem.*table = {FunctionRows(1, {"1 0"}, "0 0 0 0")};
        EXPECT_FALSE(Prepare(problem));
        EXPECT_THAT(TakeMessages(), ElementsAre(1173, message));
    }
}

// The slopes alone come from the smoothed curve; a smoothing that fails leaves the plain fit.
TEST_F(FunctionSetup, SmoothingKeepsThePointsOfTheFile) {
    const auto fitted = [&](const char* fit) {
        Problem problem = Column();
        problem.K = {FunctionRows(1, {"0 0", "1 1", "2 0", "3 1"}, fit)};
        EXPECT_TRUE(Prepare(problem));
        return model.kFunctions[0].points;
    };
    const std::vector<FunctionPoint> plain = fitted("0 0"), smoothed = fitted("1E-5 0"), failed = fitted("-1 0");
    EXPECT_THAT(TakeMessages(), ElementsAre(1117));
    for (std::size_t i = 0; i < plain.size(); ++i) {
        EXPECT_TRUE(smoothed[i].x == plain[i].x && smoothed[i].y == plain[i].y && failed[i].slope == plain[i].slope);
        EXPECT_LT(std::abs(smoothed[i].slope), std::abs(plain[i].slope));
    }
}

}  // namespace
}  // namespace kaldra
