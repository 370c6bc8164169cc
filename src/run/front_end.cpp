#include "run/front_end.h"

namespace kaldra {

FrontEnd frontEnd;

}  // namespace kaldra
