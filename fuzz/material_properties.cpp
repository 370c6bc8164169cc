// The material property file: looked at by --resume, and read by a restart for its conductivities.
#include "frontend/commands.h"
#include "restart/resume.h"
#include "support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kaldra;
    RestoreSmallProblem();
    for (const char* name : {"case.r01", "case.r03"}) WriteFuzzFile(name, BytesOf(data, size));
    (void)FindResumePoint(1);
    ChooseStartTime(2);
    (void)RunBriefly(Solver::Skyline);
    return 0;
}
