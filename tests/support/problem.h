// Problem texts of the tests: a small problem as the rows of its sections.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kaldra {

using Rows = std::vector<std::string>;

// The rows of a function: its header from number, points and "smoothing weight", a title, and the points "x y".
std::string FunctionRows(int number, const Rows& points, std::string_view fit = "0 0");

struct Problem {
    Rows title{"Title", "subtitle", "case", "revision"};
    std::string analysis = "1 1 0 1 0";  // kind, view, latent heat, store, freezing point
    std::string converge = "10 0.01 0";  // iterations, tolerance, phase points
    Rows times;
    Rows materials{"1 1 0 1 1 0"};                 // number, K, S, frozen, unfrozen, water
    Rows K{FunctionRows(1, {"-100 2", "100 2"})};  // conductivity 2
    Rows S, M, B;
    Rows nodes, elements, edges;  // of an edge: node1 node2 element kind q B M
    Rows flux;                    // of a section: "number lines\n1 x1 y1 x2 y2 ..."
    std::string pole = "POLE 0";

    // Adds a node or element and gives its number.
    std::int32_t Node(double x, double y, std::string_view boundary = "0 0 0 0 0 0");  // value, type, B, M, flag, start
    std::int32_t FixedNode(double x, double y, double temperature);
    std::int32_t Element(std::string_view slots, int points, std::string_view rest = "1", int material = 1);

    [[nodiscard]] std::string Text() const;
};

// A column of two unit squares, each cut into two triangles, of conductivity 2: nodes 1 and 2 at the bottom, 5 and 6 at
// the top, and node 7 in no element. Everything in it is exact in f32.
Problem Column(double bottom = -1, double top = 9);

// The column over the time steps "number increment elapsed save", of heat capacity 1 and without latent heat.
Problem TransientColumn(const Rows& times);

// A column of quadrilaterals, 1 wide and each of the same height, with two nodes of each boundary from below upwards.
Problem Stack(const Rows& boundaries, double height = 1);

// n by n unit squares of four nodes at 2 degrees under a surface at -6, and a flux section through the lowest row.
Problem Square(int n);

// Frost from above into wet squares over steps of 0.5, of which the odd ones are saved; without steps the steady state.
Problem FreezingSquare(int n, int steps);

// Gives a problem wet ground and a transient analysis in which it may freeze.
void MakeWet(Problem& problem);

}  // namespace kaldra
