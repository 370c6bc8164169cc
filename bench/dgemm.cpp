#include "dgemm.h"

#include <dlfcn.h>

#include <cstdlib>

namespace kaldra {

namespace {

enum : int { rowMajor = 101, noTranspose = 111 };  // of the C interface of the BLAS

using DgemmFunction = void (*)(int, int, int, int, int, int, double, const double*, int, const double*, int, double,
                               double*, int);
using SetThreads = void (*)(int);

struct Library {
    DgemmFunction dgemm = nullptr;
    SetThreads setThreads = nullptr;

    Library() {
        // In a virtual machine the library may take the processor for an older one, and the environment may ask it to:
        // a yardstick of half the vector width would flatter us.
        if (__builtin_cpu_supports("avx512f")) setenv("OPENBLAS_CORETYPE", "SkylakeX", 1);
        void* const handle = dlopen("libopenblas.so.0", RTLD_NOW);
        if (handle == nullptr) return;
        dgemm = reinterpret_cast<DgemmFunction>(dlsym(handle, "cblas_dgemm"));
        setThreads = reinterpret_cast<SetThreads>(dlsym(handle, "openblas_set_num_threads"));
    }
};

}  // namespace

bool Dgemm(std::size_t n, const double* a, const double* b, double* c, int threads) {
    static const Library library;
    if (library.dgemm == nullptr || library.setThreads == nullptr) return false;
    library.setThreads(threads);
    const auto size = static_cast<int>(n);
    library.dgemm(rowMajor, noTranspose, noTranspose, size, size, size, 1, a, size, b, size, 0, c, size);
    return true;
}

}  // namespace kaldra
