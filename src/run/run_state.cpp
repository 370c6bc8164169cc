#include "run/run_state.h"

namespace kaldra {

RunState runState;

}  // namespace kaldra
