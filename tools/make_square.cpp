// make-square steady|linear|freezing N FILE.kdr: writes the timing problem of an N by N mesh.

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#include "square_problem.h"

int main(int argc, char** argv) {
    using kaldra::SquareKind;
    static const std::map<std::string, SquareKind> kinds{
        {"steady", SquareKind::Steady}, {"linear", SquareKind::Linear}, {"freezing", SquareKind::Freezing}};
    const auto kind = argc == 4 ? kinds.find(argv[1]) : kinds.end();
    const int n = argc == 4 ? std::atoi(argv[2]) : 0;
    if (n < 1 || kind == kinds.end()) {
        std::fputs("usage: make-square steady|linear|freezing N FILE.kdr\n", stderr);
        return 2;
    }
    if (kaldra::WriteSquareProblem(argv[3], n, kind->second)) return 0;
    std::fprintf(stderr, "make-square: cannot write %s\n", argv[3]);
    return 1;
}
