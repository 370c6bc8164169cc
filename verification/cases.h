// The cases, in the order in which they run. `full` is false in the short form.
#pragma once

#include "report.h"

namespace verification {

// conduction.cpp
void ErrorFunction(Report& report, bool full);
void PeriodicSurface(Report& report, bool full);
// orders.cpp
void OrderInSpace(Report& report, bool full);
void OrderInTime(Report& report, bool full);
// fields.cpp
void LogarithmicProfile(Report& report, bool full);
void FarField(Report& report, bool full);
void PlanViewFlux(Report& report, bool full);
// fronts.cpp
void NarrowFront(Report& report, bool full);
void BadlyPosedFront(Report& report, bool full);
void WideFront(Report& report, bool full);
// heat_balance.cpp
void SensibleHeat(Report& report, bool full);
void FreezingHeat(Report& report, bool full);
// restart.cpp
void Restart(Report& report, bool full);

}  // namespace verification
