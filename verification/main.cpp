// kaldra-verify: runs problems with exact solutions and compares the printed results with them.

#include <cstdio>
#include <exception>
#include <string_view>

#include "cases.h"
#include "engine.h"

namespace {

using namespace verification;

struct Case {
    const char* name;
    void (*run)(Report& report, bool full);
};

constexpr Case cases[] = {
    {"error function", ErrorFunction},
    {"periodic surface", PeriodicSurface},
    {"order in space", OrderInSpace},
    {"order in time", OrderInTime},
    {"log profile", LogarithmicProfile},
    {"far field", FarField},
    {"plan view", PlanViewFlux},
    {"narrow front", NarrowFront},
    {"badly posed", BadlyPosedFront},
    {"wide front", WideFront},
    {"sensible heat", SensibleHeat},
    {"freezing heat", FreezingHeat},
    {"restart", Restart},
};

void RunCase(const Case& item, Report& report, bool full) {
    report.BeginCase(item.name);
    try {
        item.run(report, full);
    } catch (const std::exception& error) {
        report.Failure(error.what());
    }
}

}  // namespace

int main(int argc, char** argv) {
    const bool isShort = argc == 2 && std::string_view(argv[1]) == "--short";
    if (argc > 1 && !isShort) {
        std::fputs("usage: kaldra-verify [--short]\n", stderr);
        return 2;
    }
    ConnectEngine();
    Report report;
    for (const Case& item : cases) RunCase(item, report, !isShort);
    return report.Finish() ? 0 : 1;
}
