#include "solver/strips.h"

namespace kaldra {

void AwaitGroup(const std::uint32_t* ready, std::uint32_t wanted) {
    for (Patience patience; __atomic_load_n(ready, __ATOMIC_ACQUIRE) < wanted;) patience.Wait();
}

}  // namespace kaldra
