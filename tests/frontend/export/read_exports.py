#!/usr/bin/env python3
"""Holds exported grids, tables and workbooks against the result files, by readers that share nothing with the program.

    read_exports.py grids|tables|workbook FILE.kdr
"""
import csv
import sys
import xml.etree.ElementTree as xml
import zipfile

import meshio
import numpy as np

SIDES = {"quad": 4, "quad8": 4, "triangle": 3, "triangle6": 3}


def section(data, keyword):
    """Rows of a section that holds one row per record."""
    at = next(i for i, line in enumerate(data) if line.split()[:1] == [keyword])
    return [line.split() for line in data[at + 1 : at + 1 + int(data[at].split()[1])]]


def rows(path):
    """Rows of a result file behind its rule."""
    lines = open(path).read().split("\n")
    rule = next(i for i, line in enumerate(lines) if line.startswith("=" * 14))
    return [[float(word) for word in line.split()] for line in lines[rule + 1 :] if line.strip()]


def area(x, y):
    x, y = np.asarray(x, dtype=float), np.asarray(y, dtype=float)
    return 0.5 * (np.dot(x, np.roll(y, -1)) - np.dot(y, np.roll(x, -1)))


def ring(element):
    """Nodes around an element of the data file, counter-clockwise."""
    slots = [int(word) for word in element[1:9]]
    corners = 4 if slots[3] else 3
    return [n - 1 for k in range(corners) for n in (slots[k], slots[4 + k]) if n]


def check_grid(stem, step, data):
    grid = meshio.read(f"{stem}.{step:02d}.vtu")
    nodes = np.array([[float(w) for w in row[1:3]] for row in section(data, "NODE")], dtype=np.float32)
    elements = section(data, "ELEMENT")
    assert np.array_equal(grid.points[:, :2], nodes)
    expected = np.array(rows(f"{stem}.t{step:02d}"), dtype=np.float32)
    assert np.array_equal(grid.point_data["Temperature"], expected[:, 1])
    assert np.array_equal(grid.point_data["HeatFlow"], expected[:, 2])
    properties, gradients = rows(f"{stem}.r{step:02d}"), rows(f"{stem}.g{step:02d}")
    covered = np.zeros(len(elements))
    kinds = set()
    for b, block in enumerate(grid.cells):
        field = {name: grid.cell_data[name][b] for name in grid.cell_data}
        kinds.add(block.type)
        for i, cell in enumerate(block.data):
            corners = SIDES[block.type]
            around = [n for k in range(corners) for n in (cell[k], *cell[corners + k : corners + k + 1])]
            size = area(grid.points[around, 0], grid.points[around, 1])
            assert size > 0, f"{block.type} of element {field['Element'][i]} is turned over"
            number = field["Element"][i]
            covered[number - 1] += size
            element = elements[number - 1]
            assert field["Material"][i] == int(element[9])
            assert field["Infinite"][i] == (1 if any(word != "0" for word in element[12:14]) else 0)
            points = [row for row in properties if row[0] == number]
            assert field["Null"][i] == (0 if any(row[3] for row in points) else 1)
            if len(points) in (3, 4):  # points of equal weight
                fluxes = [row[2:4] for row in gradients if row[0] == number]
                assert np.allclose(field["Flux"][i][:2], np.mean(fluxes, axis=0), rtol=1e-5, atol=1e-7)
                for name, column in (("Conductivity", 3), ("UnfrozenWater", 5), ("HeatCapacity", 6)):
                    assert np.isclose(field[name][i], np.mean([row[column] for row in points]), rtol=1e-5), name
    for number, element in enumerate(elements):
        around = ring(element)
        assert np.isclose(covered[number], area(nodes[around, 0], nodes[around, 1]), 1e-9)
    return kinds


def check_grids(stem, data):
    steady = data[next(i for i, l in enumerate(data) if l.startswith("ANALYSIS")) + 1].split()[0] == "1"
    times = {0: 0.0} if steady else {i + 1: float(r[2]) for i, r in enumerate(section(data, "TIME")) if r[3:] != ["0"]}
    sets = xml.parse(stem + ".pvd").getroot().findall("./Collection/DataSet")
    name = stem.split("/")[-1]
    expected = [(f"{name}.{step:02d}.vtu", np.float32(time)) for step, time in times.items()]
    assert [(s.get("file"), np.float32(s.get("timestep"))) for s in sets] == expected, expected
    kinds = set()
    for step in times:
        kinds |= check_grid(stem, step, data)
    print(" ".join(sorted(kinds)))


def table(path):
    with open(path, newline="") as file:
        assert file.readline().startswith("# Units are those of the data file")
        return list(csv.DictReader(file))


def check_tables(stem, data):
    nodes = table(stem + ".nodes.csv")
    steps = sorted({int(row["step"]) for row in nodes})
    for step in steps:
        expected = rows(f"{stem}.t{step:02d}")
        got = [row for row in nodes if int(row["step"]) == step]
        assert [[float(r["node"]), float(r["temperature"]), float(r["heat_flow"])] for r in got] == expected
        ins = sum(row[2] for row in expected if row[2] > 0)
        history = next(r for r in table(stem + ".histories.csv") if int(r["step"]) == step)
        assert np.isclose(float(history["heat_flow_in"]), ins, rtol=1e-5)
    step = steps[-1]
    points = [row for row in table(stem + ".points.csv") if int(row["step"]) == step]
    active = [r for r in zip(rows(f"{stem}.r{step:02d}"), rows(f"{stem}.g{step:02d}")) if r[0][3] != 0]
    columns = ("temperature", "conductivity", "unfrozen_water_slope", "unfrozen_water", "heat_capacity")
    columns += ("flux_x", "flux_y", "gradient_x", "gradient_y")
    assert [[float(row[c]) for c in ("element", "point") + columns] for row in points] == [r + g[2:] for r, g in active]
    corners = np.array([[float(w) for w in row[1:3]] for row in section(data, "NODE")])
    for row in points:  # a point lies inside its element
        element = section(data, "ELEMENT")[int(row["element"]) - 1]
        if any(word != "0" for word in element[12:14]):
            continue
        x, y = corners[ring(element)].T
        for k in range(len(x)):
            triangle = [x[k], x[k - 1], float(row["x"])], [y[k], y[k - 1], float(row["y"])]
            assert area(*triangle) < 0, row
    print(len(nodes), len(points))


def check_workbook(stem):
    book = zipfile.ZipFile(stem + ".xlsx")
    assert book.testzip() is None
    space = "{http://schemas.openxmlformats.org/spreadsheetml/2006/main}"
    names = [s.get("name") for s in xml.fromstring(book.read("xl/workbook.xml")).iter(space + "sheet")]
    sheet = xml.fromstring(book.read(f"xl/worksheets/sheet{names.index('Nodes') + 1}.xml"))
    found = [[float(c.findtext(space + "v")) for c in row] for row in list(sheet.iter(space + "row"))[1:]]
    expected = [[float(r[k]) for k in r] for r in table(stem + ".nodes.csv")]
    assert found == expected
    print(" ".join(names))


stem = sys.argv[2].rsplit(".", 1)[0]
lines = open(sys.argv[2]).read().split("\n")
{"grids": lambda: check_grids(stem, lines), "tables": lambda: check_tables(stem, lines),
 "workbook": lambda: check_workbook(stem)}[sys.argv[1]]()
