#include "support/problem.h"

#include "platform/number_text.h"

namespace kaldra {

static std::string Join(const Rows& rows) {
    std::string text;
    for (const std::string& row : rows) text += row + '\n';
    return text;
}

static std::string Section(std::string_view keyword, const Rows& rows) {
    return FormatText("%s %d\n", keyword, static_cast<std::int64_t>(rows.size())) + Join(rows);
}

std::string FunctionRows(int number, const Rows& points, std::string_view fit) {
    std::string rows = FormatText("%d %d %s\nfunction", number, static_cast<std::int64_t>(points.size()), fit);
    for (const std::string& point : points) rows += '\n' + point;
    return rows;
}

std::int32_t Problem::Node(double x, double y, std::string_view boundary) {
    const auto number = static_cast<std::int32_t>(nodes.size() + 1);
    nodes.push_back(FormatText("%d %.8E %.8E %s", number, x, y, boundary));
    return number;
}

std::int32_t Problem::FixedNode(double x, double y, double temperature) {
    return Node(x, y, FormatText("%.8E 1 0 0 0 0", temperature));
}

std::int32_t Problem::Element(std::string_view slots, int points, std::string_view rest, int material) {
    const auto number = static_cast<std::int32_t>(elements.size() + 1);
    elements.push_back(FormatText("%d %s %d %d %s", number, slots, material, points, rest));
    return number;
}

std::string Problem::Text() const {
    return "FILEINFO\nKALDRA 4.0\nTITLE\n" + Join(title) + "ANALYSIS\n" + analysis + "\nCONVERGE\n" + converge + "\n" +
           Section("TIME", times) + Section("MATERIAL", materials) + Section("KFUNCTION", K) + Section("SFUNCTION", S) +
           Section("MFUNCTION", M) + Section("BFUNCTION", B) + Section("NODE", nodes) + Section("ELEMENT", elements) +
           pole + "\n" + Section("FLUX", flux) + Section("qBOUNDARY", edges);
}

Problem Column(double bottom, double top) {
    Problem column;
    for (const double x : {0.0, 1.0}) column.FixedNode(x, 0, bottom);
    for (const double x : {0.0, 1.0}) column.Node(x, 1);
    for (const double x : {0.0, 1.0}) column.FixedNode(x, 2, top);
    column.Node(5, 5, "0 0 0 0 1 -2.5");
    for (const char* slots : {"1 2 4 0 0 0 0 0", "1 4 3 0 0 0 0 0", "3 4 6 0 0 0 0 0", "3 6 5 0 0 0 0 0"}) {
        column.Element(slots, 1);
    }
    return column;
}

Problem TransientColumn(const Rows& times) {
    Problem column = Column();
    column.analysis = "2 1 0 1 0";
    column.materials = {"1 1 1 1 1 0"};
    column.S = {FunctionRows(1, {"-100 0", "100 1"})};
    column.times = times;
    return column;
}

Problem Stack(const Rows& boundaries, double height) {
    Problem stack;
    for (std::size_t row = 0; row < boundaries.size(); ++row) {
        for (const double x : {0.0, 1.0}) stack.Node(x, height * static_cast<double>(row), boundaries[row]);
    }
    for (int n = 1; n + 3 <= static_cast<int>(stack.nodes.size()); n += 2) {
        stack.Element(FormatText("%d %d %d %d 0 0 0 0", n + 3, n + 2, n, n + 1), 4);
    }
    return stack;
}

Problem Square(int n) {
    Problem square;
    for (int i = 0; i <= n; ++i) {
        for (int j = 0; j <= n; ++j) square.Node(j, i, i == n ? "-6 1 0 0 1 2" : "0 0 0 0 1 2");
    }
    for (int low = 1; low + n + 2 <= (n + 1) * (n + 1); ++low) {
        if (low % (n + 1) == 0) continue;
        square.Element(FormatText("%d %d %d %d 0 0 0 0", low + n + 2, low + n + 1, low, low + 1), 4);
    }
    square.flux = {"1 1\n1 -1 0.5 99 0.5"};
    return square;
}

void MakeWet(Problem& problem) {
    problem.analysis = "2 1 300 1 0";
    problem.materials = {"1 1 1 2 3 0.4"};
    problem.S = {FunctionRows(1, {"-10 0", "-0.5 0.1", "0 1", "10 1"}, "0 4")};
    problem.converge = "30 0.1 4";
}

Problem FreezingSquare(int n, int steps) {
    Problem square = Square(n);
    MakeWet(square);
    if (steps == 0) square.analysis = "1 1 0 1 0";
    for (int i = 1; i <= steps; ++i) square.times.push_back(FormatText("%d 0.5 %.1f %d", i, 0.5 * i, i % 2));
    return square;
}

}  // namespace kaldra
