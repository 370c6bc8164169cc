// Times the drawing of the ground, on the N by N square of tools/square_problem with a smooth field.
//
//     build/release/bin/kaldra-bench-pictures [--benchmark_filter=REGEX]
//
// The argument of a benchmark is N; 141 makes 19,881 elements. Every figure is one repaint of 1080 by 640 pixels on one
// thread, as for every movement of the mouse that pans or zooms; a window then has to copy the result to its screen.

#include <benchmark/benchmark.h>

#include <cmath>

#include "model/problem_model.h"
#include "post/result_set.h"
#include "prepared_run.h"
#include "view/ground_picture.h"

namespace {

using namespace kaldra;

// Waves of freezing and thawing ground, so that the isotherm is long.
Scene MakeScene(std::int64_t n) {
    ResultSet set;
    Require(OpenResultSet(ProblemFile(n, SquareKind::Steady), set) == 1, "reading the problem");
    Scene scene;
    Require(BuildScene(scene) == 1, "the scene");
    StepResults results;
    results.nodes.resize(static_cast<std::size_t>(model.nodeCount));
    results.points.resize(static_cast<std::size_t>(model.pointTotal));
    for (std::size_t i = 0; i < results.nodes.size(); ++i) {
        results.nodes[i].temperature = 8 * std::sin(6 * model.nodes[i].x) * std::cos(6 * model.nodes[i].y);
    }
    for (PointResult& point : results.points) point.fluxX = point.fluxY = 1;
    Require(SetSceneStep(scene, results) == 1, "the step");
    return scene;
}

void Repaint(benchmark::State& state, void (*set)(GroundLook& look)) {
    Scene scene = MakeScene(state.range(0));
    GroundLook look;
    look.width = 1080;
    look.height = 640;
    look.colours = MakeColourScale(-8, 8, 0, 0);
    set(look);
    for (auto _ : state) benchmark::DoNotOptimize(DrawGround(scene, look));
    state.counters["elements"] = static_cast<double>(scene.cells.size());
}

void Bands(benchmark::State& state) {
    Repaint(state, [](GroundLook& look) { look.mesh = false; });
}

void BandsAndMesh(benchmark::State& state) {
    Repaint(state, [](GroundLook&) {});
}

void Everything(benchmark::State& state) {
    Repaint(state, [](GroundLook& look) { look.arrows = look.boundaryNodes = true; });
}

void ZoomedIn(benchmark::State& state) {
    Repaint(state, [](GroundLook& look) { look.window = {0.5, 0.5, 5000}; });
}

BENCHMARK(Bands)->Arg(141)->Arg(400)->Unit(benchmark::kMillisecond);
BENCHMARK(BandsAndMesh)->Arg(141)->Arg(400)->Unit(benchmark::kMillisecond);
BENCHMARK(Everything)->Arg(141)->Arg(400)->Unit(benchmark::kMillisecond);
BENCHMARK(ZoomedIn)->Arg(141)->Arg(400)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
