// make-square steady|freezing N FILE.kdr: writes the timing problem of an n by n mesh.

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "square_problem.h"

int main(int argc, char** argv) {
    const bool freezing = argc == 4 && std::strcmp(argv[1], "freezing") == 0;
    const int n = argc == 4 ? std::atoi(argv[2]) : 0;
    if (n < 1 || (!freezing && std::strcmp(argv[1], "steady") != 0)) {
        std::fputs("usage: make-square steady|freezing N FILE.kdr\n", stderr);
        return 2;
    }
    const auto kind = freezing ? kaldra::SquareKind::Freezing : kaldra::SquareKind::Steady;
    if (kaldra::WriteSquareProblem(argv[3], n, kind)) return 0;
    std::fprintf(stderr, "make-square: cannot write %s\n", argv[3]);
    return 1;
}
