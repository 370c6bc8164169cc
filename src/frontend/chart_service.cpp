#include "frontend/chart_service.h"

namespace kaldra {

ChartService chartService;

}  // namespace kaldra
