#include "square_problem.h"

#include <cmath>
#include <fstream>

#include "platform/number_text.h"

namespace kaldra {

namespace {

constexpr int steps = 20;
constexpr double stepSeconds = 86400;

void WriteSettings(std::ostream& out, int n, SquareKind kind) {
    const bool steady = kind == SquareKind::Steady;
    const double latentHeat = kind == SquareKind::Freezing ? 3.34e8 : 0;
    out << FormatText("FILEINFO\nKALDRA 4.23\nTITLE\nSquare of %d by %d elements\ntiming\n\n\n", n, n);
    if (steady) {
        out << "ANALYSIS\n1 1 0.0 1 0.0\nCONVERGE\n50 1.0E-04 0\n";
    } else {
        out << FormatText("ANALYSIS\n2 1 %.2E 1 0.0\nCONVERGE\n20 0.1 9999999\n", latentHeat);
    }
    out << FormatText("TIME %d\n", steady ? 0 : steps);
    for (int i = 1; !steady && i <= steps; ++i) {
        out << FormatText("%d %f %f %d\n", i, stepSeconds, stepSeconds * i, i == steps ? 1 : 0);
    }
    out << "MATERIAL 1\n1 1 1 2.0E+06 3.0E+06 0.3\n";
}

void WriteFunctions(std::ostream& out, SquareKind kind) {
    if (kind == SquareKind::Linear) {
        out << "KFUNCTION 1\n1 2 0.0 0.0\nconductivity\n-20 1.75\n20 1.75\n";
        out << "SFUNCTION 1\n1 2 0.0 0.0\nunfrozen water\n-20 1\n20 1\nMFUNCTION 0\n";
        out << FormatText("BFUNCTION 1\n1 %d 0 0 0.0 0.0\nsurface temperature\n", steps + 1);
        for (int i = 0; i <= steps; ++i) out << FormatText("%f %f\n", stepSeconds * i, 2 + 8 * std::sin(0.3 * i));
        return;
    }
    out << "KFUNCTION 1\n1 31 0.0 0.0\nconductivity\n";
    for (int t = -15; t <= 15; ++t) out << FormatText("%d %f\n", t, 1.75 - 0.25 * std::tanh(t / 5.0));
    out << "SFUNCTION 1\n1 4 0.0 4.0\nunfrozen water\n-15 0\n-2 0\n0 1\n15 1\nMFUNCTION 0\n";
    if (kind == SquareKind::Steady) {
        out << "BFUNCTION 0\n";
        return;
    }
    out << "BFUNCTION 1\n1 3 0 0 0.0 4.0\nsurface temperature\n";
    out << FormatText("0 2\n%f -6\n%f -6\n", 4 * stepSeconds, steps * stepSeconds);
}

void WriteNodes(std::ostream& out, int n, SquareKind kind) {
    const bool steady = kind == SquareKind::Steady;
    out << FormatText("NODE %d\n", (n + 1) * (n + 1));
    int number = 0;
    for (int i = 0; i <= n; ++i) {
        const double x = static_cast<double>(i) / n;
        for (int j = 0; j <= n; ++j) {
            out << FormatText("%d %.9f %.9f ", ++number, x, static_cast<double>(j) / n);
            if (j == 0) {
                out << FormatText("%f 1 0 0 1 2\n", steady ? 10.0 : 2.0);
            } else if (j == n) {
                out << (steady ? FormatText("%f 1 0 0 1 2\n", -10 + 5 * x) : std::string("0 1 1 0 1 2\n"));
            } else {
                out << "0 0 0 0 1 2\n";
            }
        }
    }
}

void WriteElements(std::ostream& out, int n) {
    out << FormatText("ELEMENT %d\n", n * n);
    int number = 0;
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            const int low = i * (n + 1) + j + 1;
            const int next = low + n + 1;
            out << FormatText("%d %d %d %d %d 0 0 0 0 1 4 1.0\n", ++number, next + 1, low + 1, low, next);
        }
    }
}

}  // namespace

bool WriteSquareProblem(const std::string& path, int n, SquareKind kind) {
    std::ofstream out(path, std::ios::binary);
    WriteSettings(out, n, kind);
    WriteFunctions(out, kind);
    WriteNodes(out, n, kind);
    WriteElements(out, n);
    out << "POLE 0\nFLUX 0\nqBOUNDARY 0\n";
    return out.good();
}

}  // namespace kaldra
