"""A problem and its mesh in memory, and the writer of its data file.

A mesh is built from the positions of corners. Two elements that name the same position share the node there.
An element side becomes a three-node side as soon as one element that has it is quadratic, so that a quadratic
element beside a linear one turns the linear one into a transition element, and the mesh always conforms.

A program fills a Problem, numbers the mesh and calls write_problem. Only the Python standard library is used.
"""

from dataclasses import dataclass, field
from pathlib import Path
from typing import Callable

LONGEST_LINE = 94
TITLE_WIDTHS = (54, 54, 14, 14)

Point = tuple[float, float]
Where = Callable[[Point], bool]


def at(x, y):
    """The position (x, y), rounded so that equal positions compare equal, and free of negative zeros."""
    return (round(x, 6) + 0.0, round(y, 6) + 0.0)


def middle(a, b):
    """The position halfway between a and b."""
    return at((a[0] + b[0]) / 2, (a[1] + b[1]) / 2)


# Mesh ---------------------------------------------------------------------------------------------------------

@dataclass
class Element:
    """Three or four corners counter-clockwise; a quadrilateral starts at its local corner (+1, +1)."""
    corners: list[Point]
    material: int
    infinite: tuple[int, int] = (0, 0)

    def sides(self):
        """The pairs of corners in slot order: side k runs from corner k to the next one."""
        return list(zip(self.corners, self.corners[1:] + self.corners[:1]))


@dataclass
class Mesh:
    elements: list[Element] = field(default_factory=list)
    side_nodes: dict[frozenset, Point] = field(default_factory=dict)
    numbers: dict[Point, int] = field(default_factory=dict)

    def add(self, corners, material, quadratic=False):
        """Adds an element; a quadratic one puts a node on each of its sides that has none yet."""
        element = Element(list(corners), material)
        self.elements.append(element)
        if quadratic:
            for a, b in element.sides():
                self.side_nodes.setdefault(frozenset((a, b)), middle(a, b))

    def bend(self, a, b, position):
        """Puts the node of the side from a to b at a position of its own."""
        self.side_nodes[frozenset((a, b))] = position

    def slots(self, element):
        """The eight slots of an element, each a position or None."""
        corners = element.corners + [None] * (4 - len(element.corners))
        sides = [self.side_nodes.get(frozenset(side)) for side in element.sides()]
        return corners + sides + [None] * (4 - len(sides))

    def number(self, order):
        """Numbers all nodes in the order of the key; rows along the shorter direction keep the profile narrow."""
        used = {p for e in self.elements for p in self.slots(e) if p is not None}
        self.numbers = {p: i for i, p in enumerate(sorted(used, key=order), start=1)}

    def edges(self, where, skip=()):
        """(element number, first corner, second corner) of each side with both corners in the place `where`.

        A side comes once, with the first element that has it; elements of the materials in `skip` are not asked.
        """
        found = {}
        for number, element in enumerate(self.elements, start=1):
            if element.material in skip:
                continue
            for a, b in element.sides():
                if where(a) and where(b):
                    found.setdefault(frozenset((a, b)), (number, a, b))
        return list(found.values())


def add_grid(mesh, xs, ys, fill):
    """Fills the cells between the grid lines.

    fill(x, y) is asked at the centre of each cell and gives None for an empty cell, or (material, shape) with
    shape one of "quad", "quad8", "triangles", "triangles6" and "slope", the last a single triangle under a slope
    that falls to the right.
    """
    for i, (x1, x2) in enumerate(zip(xs, xs[1:])):
        for j, (y1, y2) in enumerate(zip(ys, ys[1:])):
            cell = fill((x1 + x2) / 2, (y1 + y2) / 2)
            if cell:
                add_cell(mesh, x1, x2, y1, y2, cell, flip=(i + j) % 2 == 1)


def add_cell(mesh, x1, x2, y1, y2, cell, flip):
    """Adds the one or two elements of a rectangular cell; `flip` chooses the diagonal of a pair of triangles."""
    material, shape = cell
    quadratic = shape[-1] in "68"
    upper_right, upper_left, lower_left, lower_right = at(x2, y2), at(x1, y2), at(x1, y1), at(x2, y1)
    if shape.startswith("quad"):
        mesh.add([upper_right, upper_left, lower_left, lower_right], material, quadratic)
    elif shape == "slope":
        mesh.add([lower_left, lower_right, upper_left], material)
    elif flip:
        mesh.add([lower_left, lower_right, upper_left], material, quadratic)
        mesh.add([lower_right, upper_right, upper_left], material, quadratic)
    else:
        mesh.add([lower_left, lower_right, upper_right], material, quadratic)
        mesh.add([lower_left, upper_right, upper_left], material, quadratic)


def add_infinite_right(mesh, pole, near_top, near_bottom, material):
    """An element from the near side, given by its two ends, to infinity along +x."""
    far_top, far_bottom = (beyond(mesh, pole, p, (1, 0)) for p in (near_top, near_bottom))
    mesh.side_nodes.setdefault(frozenset((near_top, near_bottom)), middle(near_top, near_bottom))
    mesh.elements.append(Element([far_top, near_top, near_bottom, far_bottom], material, (1, 0)))


def add_infinite_down(mesh, pole, near_left, near_right, material):
    """An element from the near side, given by its two ends, to infinity along -y. Its local r points down."""
    far_left, far_right = (beyond(mesh, pole, p, (0, -1)) for p in (near_left, near_right))
    mesh.side_nodes.setdefault(frozenset((near_left, near_right)), middle(near_left, near_right))
    mesh.elements.append(Element([far_right, near_right, near_left, far_left], material, (0, -1)))


def add_infinite_corner(mesh, pole, near, material):
    """The element that closes the corner between the two rows above, infinite along +x and -y."""
    right, below = beyond(mesh, pole, near, (1, 0)), beyond(mesh, pole, near, (0, -1))
    mesh.elements.append(Element([at(right[0], below[1]), right, near, below], material, (1, -1)))


def beyond(mesh, pole, near, direction):
    """The node that stands for infinity behind `near`, after the node at twice the distance from the pole.

    The far node is drawn at three times the distance; its coordinates play no part in the mapping.
    """
    reach = [abs(direction[k]) * (near[k] - pole[k]) for k in (0, 1)]
    far = at(near[0] + 2 * reach[0], near[1] + 2 * reach[1])
    mesh.bend(near, far, at(near[0] + reach[0], near[1] + reach[1]))
    return far


# Problem ------------------------------------------------------------------------------------------------------

@dataclass
class Curve:
    """A function of temperature or, with `repeat`, of time: points of rising x."""
    name: str
    points: list[tuple[float, float]]
    weight: float = 4.0
    repeat: int = 0


@dataclass
class Material:
    """Numbers of its functions, volumetric heat capacities, water content as a fraction of the volume."""
    conductivity: int
    water: int
    frozen_capacity: float
    unfrozen_capacity: float
    water_content: float


@dataclass
class Boundary:
    """Kind 1: temperature, 2: nodal flow, 3: flow from q edges or, in plan view, per area."""
    kind: int
    value: float = 0.0
    function: int = 0
    modifier: int = 0


@dataclass
class HeatEdge:
    element: int
    first: Point
    second: Point
    flux: float
    function: int
    modifier: int


@dataclass
class Problem:
    name: str
    title: tuple[str, str, str, str]
    analysis: int                 # 1 steady state, 2 transient
    view: int                     # 1 section with thickness, 2 axisymmetric, 3 plan
    latent_heat: float
    max_iterations: int
    tolerance: float              # per cent
    max_phase_points: int
    mesh: Mesh
    initial: Callable[[Point], float]
    freezing_point: float = 0.0
    thickness: float = 1.0
    steps: list[tuple[float, float, int]] = field(default_factory=list)
    materials: list[Material] = field(default_factory=list)
    conductivities: list[Curve] = field(default_factory=list)
    waters: list[Curve] = field(default_factory=list)
    modifiers: list[Curve] = field(default_factory=list)
    histories: list[Curve] = field(default_factory=list)
    boundaries: dict[Point, Boundary] = field(default_factory=dict)
    heat_edges: list[HeatEdge] = field(default_factory=list)
    sections: list[list[Point]] = field(default_factory=list)
    pole: Point | None = None

    def set_nodes(self, where, boundary):
        """Gives all nodes in a place their boundary condition, in place of an earlier one."""
        for p in self.mesh.numbers:
            if where(p):
                self.boundaries[p] = boundary

    def heat_through(self, where, flux, function=0, modifier=0, skip=()):
        """Lets heat in through all element sides in a place; nodes there that have no condition yet become kind 3."""
        for element, a, b in self.mesh.edges(where, skip):
            self.heat_edges.append(HeatEdge(element, a, b, flux, function, modifier))
            for p in (a, b, self.mesh.side_nodes.get(frozenset((a, b)))):
                if p:
                    self.boundaries.setdefault(p, Boundary(3))


def steps_of(*runs):
    """Time steps from (count, increment, saved) runs: of each run every saved-th step is saved, and the last."""
    steps, elapsed = [], 0.0
    for count, increment, saved in runs:
        for k in range(1, count + 1):
            elapsed += increment
            steps.append((increment, elapsed, int(k % saved == 0 or k == count)))
    return steps


# Data file ----------------------------------------------------------------------------------------------------

def write_problem(problem, folder):
    """Writes folder/NAME/NAME.kdr and gives its path."""
    path = Path(folder) / problem.name / f"{problem.name}.kdr"
    path.parent.mkdir(parents=True, exist_ok=True)
    lines = [line.rstrip() for section in sections_of(problem) for line in section]
    check_lines(path, lines)
    path.write_bytes("".join(line + "\r\n" for line in lines).encode("ascii"))
    return path


def check_lines(path, lines):
    for line in lines:
        if len(line) >= LONGEST_LINE:
            raise ValueError(f"{path}: line too long: {line}")


def sections_of(problem):
    """All sections in the order of the file; the q edges must be the last."""
    yield ["FILEINFO", "KALDRA 4.23"]
    yield title_section(problem)
    yield settings_section(problem)
    yield time_section(problem)
    yield material_section(problem)
    yield curve_section("KFUNCTION", problem.conductivities)
    yield curve_section("SFUNCTION", problem.waters)
    yield curve_section("MFUNCTION", problem.modifiers)
    yield history_section(problem)
    yield node_section(problem)
    yield element_section(problem)
    yield pole_section(problem)
    yield flux_section(problem)
    yield heat_edge_section(problem)


def title_section(problem):
    for text, width in zip(problem.title, TITLE_WIDTHS):
        if len(text) > width:
            raise ValueError(f"{problem.name}: title too long: {text}")
    return ["TITLE", *problem.title]


def settings_section(problem):
    p = problem
    return ["ANALYSIS", f"{p.analysis:3d}{p.view:3d} {p.latent_heat:12.5E}   1 {p.freezing_point:12.5E}",
            "CONVERGE", f"{p.max_iterations:5d}{p.tolerance:10.4f}{p.max_phase_points:7d}"]


def time_section(problem):
    return [f"TIME {len(problem.steps)}"] + [
        f"{i:5d} {increment:11.4f} {elapsed:11.4f} {save:2d}"
        for i, (increment, elapsed, save) in enumerate(problem.steps, start=1)]


def material_section(problem):
    return [f"MATERIAL {len(problem.materials)}"] + [
        f"{i:4d}{m.conductivity:4d}{m.water:4d} {m.frozen_capacity:12.4E} {m.unfrozen_capacity:12.4E}"
        f" {m.water_content:8.4f}"
        for i, m in enumerate(problem.materials, start=1)]


def curve_section(keyword, curves):
    lines = [f"{keyword} {len(curves)}"]
    for i, curve in enumerate(curves, start=1):
        lines += [f"{i:4d}{len(curve.points):5d} {0.0:8.3f} {curve.weight:8.3f}", curve.name]
        lines += point_rows(curve)
    return lines


def history_section(problem):
    lines = [f"BFUNCTION {len(problem.histories)}"]
    for i, curve in enumerate(problem.histories, start=1):
        lines += [f"{i:4d}{len(curve.points):5d}   1   1 {0.0:8.3f} {curve.weight:8.3f}{curve.repeat:4d}",
                  curve.name]
        lines += point_rows(curve)
    return lines


def point_rows(curve):
    return [f"{x:12.4f} {y:14.5f}" for x, y in curve.points]


def node_section(problem):
    lines = [f"NODE {len(problem.mesh.numbers)}"]
    for p, i in problem.mesh.numbers.items():
        b = problem.boundaries.get(p, Boundary(0))
        lines.append(f"{i:6d} {p[0]:12.5f} {p[1]:12.5f} {b.value:12.5f} {b.kind:2d} {b.function:3d} {b.modifier:3d}"
                     f"  1 {problem.initial(p):10.4f}")
    return lines


def element_section(problem):
    mesh = problem.mesh
    lines = [f"ELEMENT {len(mesh.elements)}"]
    for i, element in enumerate(mesh.elements, start=1):
        slots = mesh.slots(element)
        nodes = "".join(f"{mesh.numbers[p] if p else 0:6d}" for p in slots)
        points = integration_points(slots, problem.analysis)
        lines.append(f"{i:6d}{nodes}{element.material:4d}{points:3d} {problem.thickness:9.5f}"
                     f"{element.infinite[0]:4d}{element.infinite[1]:3d}")
    return lines


def integration_points(slots, analysis):
    """Nine points for a quadrilateral with side nodes, four without; three for a triangle, and one where a
    three-node triangle needs no capacity matrix."""
    has_side_nodes = any(slots[4:])
    if slots[3]:
        return 9 if has_side_nodes else 4
    return 3 if has_side_nodes or analysis == 2 else 1


def pole_section(problem):
    if problem.pole is None:
        return ["POLE 0"]
    return ["POLE 1", f"{problem.pole[0]:12.5f} {problem.pole[1]:12.5f}"]


def flux_section(problem):
    lines = [f"FLUX {len(problem.sections)}"]
    for i, corners in enumerate(problem.sections, start=1):
        lines.append(f"{i:4d}{len(corners) - 1:4d}")
        lines += [f"{k:6d} {a[0]:12.5f} {a[1]:12.5f} {b[0]:12.5f} {b[1]:12.5f}"
                  for k, (a, b) in enumerate(zip(corners, corners[1:]), start=1)]
    return lines


def heat_edge_section(problem):
    numbers = problem.mesh.numbers
    return [f"qBOUNDARY {len(problem.heat_edges)}"] + [
        f"{numbers[e.first]:6d} {numbers[e.second]:6d} {e.element:6d}   1 {e.flux:13.5f} {e.function:3d}"
        f" {e.modifier:3d}"
        for e in problem.heat_edges]
