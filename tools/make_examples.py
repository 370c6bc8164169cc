#!/usr/bin/env python3
"""Writes the data files of the examples.

    python3 tools/make_examples.py [FOLDER]

Each example becomes FOLDER/NAME/NAME.kdr; FOLDER is the project's examples folder if none is given. The same
script always writes the same bytes. Temperatures are in degrees Celsius and lengths in metres. The steady-state
example counts in watts; the transient ones count time in days and heat in kilojoules, so that elapsed times stay
exact in the five digits that a result file prints.
"""

import sys
from math import atan2, cos, hypot, pi, sin
from pathlib import Path

from problem_file import (Boundary, Curve, Material, Mesh, Problem, add_grid, add_infinite_corner, add_infinite_down,
                          add_infinite_right, at, steps_of, write_problem)

DAY = 86.4                 # kJ per day that one watt gives
LATENT_HEAT = 3.34e5       # kJ per m3 of water
YEAR = 364                 # days: 52 weeks, or 13 months of 28 days
GEOTHERMAL = 0.06          # W/m2
WARMEST_DAY = 287          # days from the start of October to the middle of July


# Orders of the node numbers: along the direction with fewer nodes, which keeps the profile narrow ------------------

def down_columns(p):
    return p[0], -p[1]


def along_rows(p):
    return -p[1], p[0]


def outwards(p):
    radius, angle = polar(p)
    return round(radius, 3), angle


# Functions shared by the examples -------------------------------------------------------------------------------

def conductivity(name, frozen, unfrozen, scale=DAY):
    """Conductivity in W/(m K): one value frozen, one unfrozen, and a smooth passage from -1 to 0 degrees."""
    return Curve(name, [(-40, frozen * scale), (-1, frozen * scale), (0, unfrozen * scale), (40, unfrozen * scale)])


def constant_conductivity(name, value, scale=DAY):
    return Curve(name, [(-40, value * scale), (40, value * scale)])


def all_freezes(name):
    """Unfrozen fraction of the water in gravel and sand: gone within half a degree."""
    return Curve(name, [(-40, 0.02), (-0.5, 0.02), (0, 1), (40, 1)])


def some_stays(name):
    """Unfrozen fraction of the water in silt: an eighth is still liquid at ten degrees of frost."""
    return Curve(name, [(-40, 0.07), (-20, 0.09), (-10, 0.12), (-5, 0.16), (-2, 0.24), (-1, 0.32), (-0.5, 0.43),
                        (-0.2, 0.65), (0, 1), (40, 1)])


def n_factor(name, freezing, thawing):
    """Ground surface over air temperature, both from the freezing point, below and above it."""
    return Curve(name, [(-40, freezing), (-0.5, freezing), (0.5, thawing), (40, thawing)])


def yearly_temperature(name, mean, amplitude, warmest=WARMEST_DAY):
    """A sine wave of one year from the start of October, in points two weeks apart."""
    wave = [(day, mean + amplitude * cos(2 * pi * (day - warmest) / YEAR)) for day in range(0, YEAR + 1, 14)]
    return Curve(name, wave, weight=0.0, repeat=1)


def profile(*points):
    """The initial temperature as a function of position: straight lines between (y, temperature) points from the
    lowest up, and constant beyond them."""
    def temperature(p):
        y = p[1]
        if y <= points[0][0]:
            return points[0][1]
        for (y1, t1), (y2, t2) in zip(points, points[1:]):
            if y <= y2:
                return t1 + (t2 - t1) * (y - y1) / (y2 - y1)
        return points[-1][1]
    return temperature


def lines(start, step, count):
    """Grid lines at equal distances, the first one included."""
    return [round(start + k * step, 6) for k in range(count + 1)]


# Heated slab ----------------------------------------------------------------------------------------------------

def heated_slab():
    """Half of an evenly heated floor, 12 m wide, on insulation and partly frozen ground."""
    half_width, floor, bottom = 6.0, 0.3, -20.0
    xs = [0, 1, 2, 3, 4, 4.75, 5.3, 5.7, half_width, 6.3, 6.7, 7.3, 8, 9, 10.5, 12.5, 15, 18, 22, 30]
    ys = [bottom, -16, -12.5, -9.5, -7.5, -5.5, -4, -3, -2.2, -1.5, -1, -0.6, -0.3, 0, 0.05, 0.1, 0.2, floor]
    mesh = Mesh()
    add_grid(mesh, xs, ys, slab_cell)
    mesh.number(down_columns)
    problem = Problem(
        "heated-slab", ("Heated floor slab on frozen ground", "half section, long-term state", "steady state",
                        "W, m, C"),
        analysis=1, view=1, latent_heat=3.34e8, max_iterations=50, tolerance=0.01, max_phase_points=0, mesh=mesh,
        initial=lambda p: 2.0)
    problem.materials = [Material(1, 0, 2.0e6, 2.0e6, 0.0), Material(2, 0, 4.0e4, 4.0e4, 0.0),
                         Material(3, 1, 1.7e6, 1.9e6, 0.10), Material(4, 2, 2.0e6, 2.8e6, 0.40),
                         Material(5, 2, 2.0e6, 2.5e6, 0.25)]
    problem.conductivities = [constant_conductivity("concrete", 1.7, 1),
                              constant_conductivity("insulation", 0.035, 1), conductivity("gravel", 1.8, 1.6, 1),
                              conductivity("silt", 2.1, 1.2, 1), conductivity("till", 2.3, 1.7, 1)]
    problem.waters = [all_freezes("gravel"), some_stays("silt and till")]
    problem.heat_through(lambda p: p[1] == floor, flux=3.5)
    problem.heat_through(lambda p: p[1] == bottom, flux=GEOTHERMAL)
    problem.set_nodes(lambda p: p[1] == 0 and p[0] >= half_width, Boundary(1, -4.0))
    problem.sections = [[(-0.5, -0.4), (half_width, -0.4)]]
    return problem


def slab_cell(x, y):
    """Quadratic elements where the temperature changes fast, linear ones elsewhere."""
    if y > 0:
        return (1 if y > 0.1 else 2, "quad8") if x < 6 else None
    if y > -0.6:
        return (3, "quad8") if x < 7.3 else (4, "quad")
    if y > -3:
        return 4, "triangles6" if 4 < x < 8 else "quad"
    return 5, "triangles" if x > 8 else "quad"


# Road embankment ------------------------------------------------------------------------------------------------

def road_embankment():
    """Half of a gravel road on ice-rich silt through three years."""
    crest, toe, height, bottom = 5.0, 10.0, 2.5, -15.0
    xs = lines(0, 1, 5) + lines(5.5, 0.5, 9) + [10.6, 11.3, 12.2, 13.5, 15, 17.5, 20.5, 25, 30]
    ys = [bottom, -12, -9, -6.8, -5.2, -4.1, -3.3, -2.7, -2.2, -1.8] + lines(-1.5, 0.25, 16)
    mesh = Mesh()
    add_grid(mesh, xs, ys, embankment_cell)
    mesh.number(down_columns)
    problem = Problem(
        "road-embankment", ("Gravel road on ice-rich permafrost", "half section, three years in weeks", "transient",
                            "kJ, m, day, C"),
        analysis=2, view=1, latent_heat=LATENT_HEAT, max_iterations=60, tolerance=0.1, max_phase_points=50, mesh=mesh,
        initial=profile((bottom, -1.2), (-6, -1.4), (-3, -1.2), (-1.1, -0.2), (0, 1.5), (height, 3.0)),
        steps=steps_of((156, 7, 4)))
    problem.materials = [Material(1, 1, 1700, 1900, 0.08), Material(2, 2, 1900, 2700, 0.45),
                         Material(3, 2, 2000, 3100, 0.60)]
    problem.conductivities = [conductivity("gravel", 2.0, 1.8), conductivity("organic silt", 1.7, 0.9),
                              conductivity("ice-rich silt", 2.2, 1.1)]
    problem.waters = [all_freezes("gravel"), some_stays("silt")]
    problem.modifiers = [n_factor("road surface, ploughed", 0.9, 1.7), n_factor("slope, drifted snow", 0.35, 1.4),
                         n_factor("tundra", 0.45, 0.75)]
    problem.histories = [yearly_temperature("air", -5, 20)]
    problem.heat_through(lambda p: p[1] == bottom, flux=GEOTHERMAL * DAY)
    problem.set_nodes(lambda p: p[1] == height, Boundary(1, function=1, modifier=1))
    problem.set_nodes(lambda p: crest < p[0] < toe and p[1] == (toe - p[0]) / 2, Boundary(1, function=1, modifier=2))
    problem.set_nodes(lambda p: p[0] >= toe and p[1] == 0, Boundary(1, function=1, modifier=3))
    problem.sections = [[(10.3, 0.5), (10.3, -3.3)], [(-0.5, -0.1), (toe, -0.1)]]
    return problem


def embankment_cell(x, y):
    """Gravel below the crest and a slope of one in two, 1.25 m of organic silt, ice-rich silt."""
    if y > 0:
        surface = 2.5 if x < 5 else (10 - x) / 2
        return None if y > surface + 0.01 else (1, "slope" if abs(y - surface) < 0.01 else "quad")
    return 2 if y > -1.25 else 3, "quad"


# Chilled pipe ---------------------------------------------------------------------------------------------------

PIPE_AXIS, PIPE_RADIUS, PIPE_BOX = -2.0, 0.5, 1.2


def chilled_pipe():
    """Half of a chilled gas pipe in unfrozen silt through two years, open to all sides by infinite elements."""
    right, bottom, pole = 8.0, -8.0, (0.0, PIPE_AXIS)
    xs = lines(0, 0.3, 4) + [1.55, 2, 2.6, 3.4, 4.5, 6, right]
    ys = [bottom, -6.5, -5.4, -4.6, -4, -3.55] + lines(-3.2, 0.3, 8) + lines(-0.6, 0.2, 3)
    mesh = Mesh()
    add_pipe_rings(mesh, material=1)
    add_grid(mesh, xs, ys, lambda x, y: None if x < PIPE_BOX and abs(y - PIPE_AXIS) < PIPE_BOX else (1, "quad"))
    for y1, y2 in zip(ys, ys[1:]):
        add_infinite_right(mesh, pole, at(right, y2), at(right, y1), 1)
    for x1, x2 in zip(xs, xs[1:]):
        add_infinite_down(mesh, pole, at(x1, bottom), at(x2, bottom), 1)
    add_infinite_corner(mesh, pole, at(right, bottom), 1)
    mesh.number(down_columns)
    problem = Problem(
        "chilled-pipe", ("Chilled gas pipe in unfrozen silt", "half section, two years in weeks", "transient",
                         "kJ, m, day, C"),
        analysis=2, view=1, latent_heat=LATENT_HEAT, max_iterations=60, tolerance=0.1, max_phase_points=40, mesh=mesh,
        initial=lambda p: 4.0, steps=steps_of((104, 7, 4)), pole=pole)
    problem.materials = [Material(1, 1, 2000, 2800, 0.40)]
    problem.conductivities = [conductivity("silt", 2.1, 1.3)]
    problem.waters = [some_stays("silt")]
    problem.histories = [yearly_temperature("ground surface, from May on", 4, 9, warmest=91)]
    problem.set_nodes(lambda p: p[1] == 0, Boundary(1, function=1))
    problem.set_nodes(lambda p: p[1] < 2 * bottom - PIPE_AXIS, Boundary(1, 4.0))
    problem.set_nodes(on_pipe, Boundary(1, -5.0))
    return problem


def on_pipe(p):
    return abs(p[0] ** 2 + (p[1] - PIPE_AXIS) ** 2 - PIPE_RADIUS ** 2) < 1e-4


def add_pipe_rings(mesh, material, segments=16):
    """Fills the half square around the pipe with rings of elements that blend from circle to square.

    The innermost ring has curved quadratic elements, so that the pipe wall is round.
    """
    depths = [0, 0.12, 0.27, 0.46, 0.70, 1]
    for k in range(segments):
        for inner, outer in zip(depths, depths[1:]):
            corners = [pipe_point(outer, k + 1, segments), pipe_point(inner, k + 1, segments),
                       pipe_point(inner, k, segments), pipe_point(outer, k, segments)]
            if inner == 0:
                mesh.bend(corners[1], corners[2], pipe_point(0, k + 0.5, segments))
            mesh.add(corners, material, quadratic=inner == 0)


def pipe_point(depth, k, segments):
    """The point of ray k, from 0 straight below the axis to `segments` straight above it; `depth` 0 is on the pipe
    wall, 1 on the square around it."""
    angle, corner = pi * k / segments - pi / 2, segments / 4
    circle = PIPE_RADIUS * cos(angle), PIPE_RADIUS * sin(angle)
    square = (PIPE_BOX * min(1, k / corner, (segments - k) / corner),
              PIPE_BOX * max(-1, min(1, (k - 2 * corner) / corner)))
    x, y = (c + depth * (s - c) for c, s in zip(circle, square))
    return at(x, PIPE_AXIS + y)


# Thermosyphon pile ----------------------------------------------------------------------------------------------

PILE_RADIUS, PILE_TOE, BOREHOLE_RADIUS = 0.15, -9.0, 0.3


def thermosyphon_pile():
    """A steel pile with a thermosyphon in warm permafrost through two years; the inside of the pile takes no part."""
    evaporator_top, bottom = -2.3, -15.0
    radii = [0, PILE_RADIUS, 0.22, BOREHOLE_RADIUS, 0.4, 0.55, 0.75, 1, 1.35, 1.8, 2.4, 3.2, 4.3, 5.8, 8]
    ys = [bottom, -12.5, -11, -10, -9.4, PILE_TOE, -8.6, -8, -7, -6, -5, -4, -3.4, -2.8, evaporator_top,
          -1.9, -1.6, -1.3] + lines(-1, 0.25, 4)
    mesh = Mesh()
    add_grid(mesh, radii, ys, pile_cell)
    mesh.number(along_rows)
    problem = Problem(
        "thermosyphon-pile", ("Pile with thermosyphon in warm permafrost", "axisymmetric, two years in weeks",
                              "transient", "kJ, m, day, C"),
        analysis=2, view=2, latent_heat=LATENT_HEAT, max_iterations=60, tolerance=0.1, max_phase_points=28, mesh=mesh,
        thickness=2 * pi, initial=profile((bottom, -1.0), (-8, -0.9), (-2.5, -0.6), (-1.2, -0.1), (0, 1.0)),
        steps=steps_of((104, 7, 4)))
    problem.materials = [Material(0, 0, 0.0, 0.0, 0.0), Material(1, 1, 2000, 2600, 0.30),
                         Material(2, 2, 2000, 2800, 0.45)]
    problem.conductivities = [conductivity("sand slurry", 2.6, 1.7), conductivity("silt", 2.1, 1.2)]
    problem.waters = [all_freezes("sand slurry"), some_stays("silt")]
    problem.modifiers = [n_factor("ground surface", 0.55, 0.9),
                         Curve("less heat as the wall grows cold", [(-20, 0), (0, 1), (40, 1)])]
    problem.histories = [yearly_temperature("air", -4, 18), winter_cooling(40 * DAY)]
    problem.heat_through(lambda p: p[1] == bottom, flux=GEOTHERMAL * DAY)
    problem.heat_through(lambda p: p[0] == PILE_RADIUS and PILE_TOE <= p[1] <= evaporator_top, flux=0.0, function=2,
                         modifier=2, skip=(1,))
    problem.set_nodes(lambda p: p[1] == 0 and p[0] >= PILE_RADIUS, Boundary(1, function=1, modifier=1))
    return problem


def pile_cell(r, y):
    """Nothing but NULL elements inside the pile, slurry around it down to the bottom of its borehole, silt beyond."""
    if r < PILE_RADIUS and y > PILE_TOE:
        return 1, "quad"
    return 2 if r < BOREHOLE_RADIUS and y > PILE_TOE - 0.4 else 3, "quad"


def winter_cooling(strongest):
    """Heat that leaves through the wall, per area: from October to the middle of April, most in January."""
    cold = 196
    return Curve("heat into the thermosyphon",
                 [(day, -strongest * sin(pi * day / cold) ** 2 if 0 < day < cold else 0.0)
                  for day in range(0, YEAR + 1, 14)], repeat=1)


# Building on permafrost -----------------------------------------------------------------------------------------

def building_on_permafrost():
    """Half of a heated building on an insulated gravel pad through ten years, with a slowly growing thaw bulb."""
    half_width, floor, pad, crest, toe, bottom = 8.0, 1.1, 1.0, 9.0, 11.0, -20.0
    xs = lines(0, 1, 6) + [6.75, 7.4, half_width, 8.5, crest, 10, toe, 11.7, 12.6, 14, 16, 19, 23, 28, 34]
    ys = [bottom, -16, -13, -10.5, -8.5, -7, -6, -5.2, -4.5, -3.9, -3.3, -2.8, -2.3, -1.9, -1.5, -1.1, -0.8, -0.5,
          -0.25, 0, 0.5, pad, 1.05, floor]
    mesh = Mesh()
    add_grid(mesh, xs, ys, building_cell)
    mesh.number(down_columns)
    problem = Problem(
        "building-on-permafrost", ("Heated building on an insulated gravel pad", "half section, ten years",
                                   "transient", "kJ, m, day, C"),
        analysis=2, view=1, latent_heat=LATENT_HEAT, max_iterations=60, tolerance=0.1, max_phase_points=50, mesh=mesh,
        initial=profile((bottom, -1.6), (-8, -2.0), (-3, -1.8), (-1, -0.2), (0, 1.0), (pad, 3.0)),
        steps=steps_of((52, 14, 13), (104, 28, 13)))
    problem.materials = [Material(1, 1, 1700, 1900, 0.08), Material(2, 1, 40, 40, 0.0),
                         Material(3, 2, 2000, 2900, 0.50)]
    problem.conductivities = [conductivity("gravel", 2.0, 1.8), constant_conductivity("insulation", 0.035),
                              conductivity("ice-rich silt", 2.1, 1.1)]
    problem.waters = [all_freezes("gravel"), some_stays("silt")]
    problem.modifiers = [n_factor("gravel pad", 0.8, 1.5), n_factor("tundra", 0.45, 0.75)]
    problem.histories = [yearly_temperature("air", -7, 19)]
    problem.heat_through(lambda p: p[1] == bottom, flux=GEOTHERMAL * DAY)
    problem.set_nodes(lambda p: p[1] == floor, Boundary(1, 20.0))
    problem.set_nodes(lambda p: half_width <= p[0] <= toe and p[1] == min(pad, (toe - p[0]) / 2),
                      Boundary(1, function=1, modifier=1))
    problem.set_nodes(lambda p: p[0] > toe and p[1] == 0, Boundary(1, function=1, modifier=2))
    problem.sections = [[(-0.5, 0.8), (half_width, 0.8)], [(-0.5, -3.5), (11.3, -3.5), (11.3, 0.5)]]
    return problem


def building_cell(x, y):
    """Insulation under the floor, a gravel pad with a slope of one in two, silt."""
    if y > 1:
        return (2, "quad") if x < 8 else None
    if y > 0:
        surface = min(1, (11 - x) / 2)
        return None if y > surface + 0.01 else (1, "slope" if abs(y - surface) < 0.01 else "quad")
    return 3, "quad"


# Plan view ------------------------------------------------------------------------------------------------------

def plan_view():
    """A quarter of a ring of freeze pipes around a shaft in wet sand, seen from above, through ninety days."""
    ring, natural, pipes = 3.5, 9.0, 6
    radii = [0.7, 1.3, 1.8, 2.2, 2.55, 2.82, 3.05, 3.27, ring, 3.73, 3.95, 4.2, 4.5, 4.9, 5.4, 6, 6.8, 7.8, 9,
             10.5, 12]
    segments = 4 * pipes
    mesh = Mesh()
    add_sector(mesh, radii, segments)
    mesh.number(outwards)
    problem = Problem(
        "plan-view", ("Ring of freeze pipes around a shaft", "quarter plan, ninety days", "transient",
                      "kJ, m, day, C"),
        analysis=2, view=3, latent_heat=LATENT_HEAT, max_iterations=60, tolerance=0.1, max_phase_points=48, mesh=mesh,
        initial=lambda p: natural, steps=steps_of((90, 1, 10)))
    problem.materials = [Material(1, 1, 2000, 2700, 0.38)]
    problem.conductivities = [conductivity("wet sand", 3.2, 2.1)]
    problem.waters = [all_freezes("wet sand")]
    problem.modifiers = [Curve("natural ground less present temperature", [(-40, natural + 40), (40, natural - 40)])]
    problem.histories = [Curve("brine", [(0, natural), (2, -6), (7, -20), (14, -28), (30, -28), (90, -28)]),
                         Curve("heat transfer inside the ring", [(0, 0.5 * DAY), (60, 0.5 * DAY), (62, 4 * DAY),
                                                                (90, 4 * DAY)])]
    problem.set_nodes(lambda p: True, Boundary(3, 0.5 * DAY, modifier=1))
    problem.set_nodes(lambda p: polar(p)[0] < ring - 0.9, Boundary(3, function=2, modifier=1))
    problem.set_nodes(lambda p: polar(p)[0] > radii[-1] - 0.01, Boundary(1, natural))
    pipe_nodes = {polar_point(ring, 4 * k + 2, segments) for k in range(pipes)}
    problem.set_nodes(lambda p: p in pipe_nodes, Boundary(1, function=1))
    return problem


def polar(p):
    return hypot(p[0], p[1]), atan2(p[1], p[0])


def polar_point(radius, k, segments):
    """The point at a radius on ray k; ray 0 is the x axis, the last one the y axis."""
    angle = pi / 2 * k / segments
    return at(radius * cos(angle), radius * sin(angle))


def add_sector(mesh, radii, segments):
    """A quarter circle: triangles around the centre, quadrilaterals beyond the first radius."""
    for k in range(segments):
        mesh.add([at(0, 0), polar_point(radii[0], k, segments), polar_point(radii[0], k + 1, segments)], 1)
    for inner, outer in zip(radii, radii[1:]):
        for k in range(segments):
            mesh.add([polar_point(outer, k + 1, segments), polar_point(inner, k + 1, segments),
                      polar_point(inner, k, segments), polar_point(outer, k, segments)], 1)


EXAMPLES = (heated_slab, road_embankment, chilled_pipe, thermosyphon_pile, building_on_permafrost, plan_view)


def main(arguments):
    folder = arguments[0] if arguments else Path(__file__).resolve().parent.parent / "examples"
    for make in EXAMPLES:
        print(write_problem(make(), folder))


if __name__ == "__main__":
    main(sys.argv[1:])
