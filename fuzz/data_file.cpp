// The data file: a model that was read whole runs for a few iterations with either solver.
#include "frontend/commands.h"
#include "support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kaldra;
    BeginInput();
    WriteFuzzFile("case.kdr", BytesOf(data, size));
    if (!OpenDataFile(FuzzPath("case.kdr"))) return 0;
    (void)RunBriefly(Solver::Skyline);
    (void)RunBriefly(Solver::Sparse);
    return 0;
}
