// The file of initial temperatures: picked by the user, looked at by --resume, and read by a restart.
#include "restart/initial_conditions.h"
#include "frontend/commands.h"
#include "restart/resume.h"
#include "restart/step_files.h"
#include "support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kaldra;
    RestoreSmallProblem();
    WriteFuzzFile("case.t01", BytesOf(data, size));
    WriteFuzzFile("other.t01", BytesOf(data, size));
    (void)LastConsistentStep('t');
    (void)FindResumePoint(1);
    (void)CheckInitialFile(FuzzPath("case.t01"), FuzzPath("case.kdr"), 't', 2);
    ChooseStartTime(2);
    (void)RunBriefly(Solver::Skyline);
    if (ChooseInitialConditions(FuzzPath("other.t01"))) (void)RunBriefly(Solver::Sparse);
    return 0;
}
