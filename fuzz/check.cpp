// The check of a data file. What it says about errors has to agree with a start of the same file: a file without one is
// read and prepared, and one with an error does not run to its end.
#include "check/check.h"

#include <algorithm>

#include "frontend/commands.h"
#include "support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kaldra;
    BeginInput();
    WriteFuzzFile("case.kdr", BytesOf(data, size));
    const Findings findings = CheckDataFile(FuzzPath("case.kdr"));
    Require(std::ranges::is_sorted(findings.list, {}, &Finding::line), "findings are sorted by line");
    const bool opened = OpenDataFile(FuzzPath("case.kdr")) == 1;
    Require(opened || HasErrors(findings), "a file that cannot be opened has an error");
    if (opened && HasErrors(findings)) {
        Require(RunBriefly(Solver::Automatic) != 1, "a file with an error does not run to its end");
    }
    return 0;
}
