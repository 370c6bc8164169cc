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

}  // namespace kaldra
