#!/usr/bin/env python3
"""Runs problems that are large in one thing each, at growing sizes, and prints a table of time and memory.

    bench/limits.py [--only NAME]... [--small] PROGRAM

PROGRAM is kaldra-run. The problems are made here. A row gives the seconds of a run, its processor seconds, its peak
memory, what its memory grew by between a quarter of its time and its end, and the power of the size with which its
processor seconds grew since the row before.
--small takes a tenth of each size. The table belongs to docs/limits.md.
"""
import argparse
import math
import os
import pathlib
import subprocess
import tempfile
import threading
import time

HEADER = ["FILEINFO", "KALDRA 4.0", "TITLE", "limits", "", "", ""]


def section(keyword, rows):
    return [f"{keyword} {len(rows)}"] + rows


def function(number, points):
    return f"{number} {len(points)} 0 0\nfunction\n" + "\n".join(f"{x:.7g} {y:.7g}" for x, y in points)


CONDUCTIVITY = [function(1, [(-100, 2), (0, 2.1), (100, 2)])]
WATER = [function(1, [(-100, 0), (-5, 0.05), (0, 1), (100, 1)])]


def square(columns, rows, material=lambda e: 1, base=2.0):
    """Nodes and quadrilaterals of unit size; the bottom is held at `base` degrees, the top at -6."""
    nodes = []
    for j in range(rows + 1):
        held = f"{base} 1" if j == 0 else "-6 1" if j == rows else "0 0"
        nodes += [f"{j * (columns + 1) + i + 1} {i} {j} {held} 0 0 1 2" for i in range(columns + 1)]
    elements = []
    for j in range(rows):
        for i in range(columns):
            low = j * (columns + 1) + i + 1
            e = len(elements)
            elements.append(f"{e + 1} {low + columns + 2} {low + columns + 1} {low} {low + 1} 0 0 0 0 "
                            f"{material(e)} 4 1")
    return nodes, elements


def write(path, mesh, *, times=(), iterations=20, tolerance=0.01, latent=0, K=CONDUCTIVITY, S=WATER, materials=None,
          flux=()):
    nodes, elements = mesh
    lines = HEADER + ["ANALYSIS", f"{2 if times else 1} 1 {latent} 1 0", "CONVERGE", f"{iterations} {tolerance} 4"]
    lines += section("TIME", list(times)) + section("MATERIAL", materials or ["1 1 1 2 2 0.3"])
    lines += section("KFUNCTION", K) + section("SFUNCTION", S) + ["MFUNCTION 0", "BFUNCTION 0"]
    lines += section("NODE", nodes) + section("ELEMENT", elements) + ["POLE 0"]
    lines += section("FLUX", list(flux)) + ["qBOUNDARY 0"]
    path.write_text("\n".join(lines) + "\n")


def steps(path, count, every):
    write(path, square(2, 4), latent=300,
          times=[f"{n} 0.5 {n * 0.5} {int(n % every == 0)}" for n in range(1, count + 1)])


def few_saved(path, count):
    steps(path, count, 1000)


def all_saved(path, count):
    steps(path, count, 1)


def iterations(path, count):
    write(path, square(2, 4), iterations=count, tolerance=0)


def nodes(path, count):
    side = round(math.sqrt(count)) - 1
    write(path, square(side, side), iterations=3, tolerance=100)


def points(path, count):
    K = [function(n, [(-100 + 200 * i / (count - 1), 2 + 0.01 * math.sin(i * 0.1 + n)) for i in range(count)])
         for n in range(1, 256)]
    materials = [f"{n} {n} 1 2 2 0.3" for n in range(1, 256)]
    write(path, square(32, 32, lambda e: e % 255 + 1), K=K, materials=materials, latent=300,
          times=[f"{n} 0.5 {n * 0.5} 1" for n in range(1, 6)])


def sections(path, count):
    lines = [f"{n} 1\n1 -1 {100 * n / (count + 1):.4f} 101 {100 * n / (count + 1):.4f}" for n in range(1, count + 1)]
    write(path, square(100, 100), flux=lines)


RESTART = "steps before a restart at the last"

CASES = {  # what grows, its sizes, its maker
    "steps, one in 1,000 saved": ([5000, 10000, 20000], few_saved),
    "steps, all saved": ([5000, 10000, 20000], all_saved),
    "iterations of one step": ([25000, 50000, 100000], iterations),
    "nodes": ([250000, 500000, 1000000], nodes),
    "points in each of 255 functions": ([2500, 5000, 10000], points),
    "flux sections across 10,000 elements": ([250, 500, 1000], sections),
}


class MemoryCurve(threading.Thread):
    """Resident and peak memory of a process in MB, twenty times a second. The peak that the system tells at its end
    would hold this program's own, from before the process became another."""

    def __init__(self, process):
        super().__init__(daemon=True)
        self.status = pathlib.Path(f"/proc/{process.pid}/status")
        self.curve = []
        self.peak = math.nan
        self.ended = threading.Event()
        self.start()

    def run(self):
        while not self.ended.wait(0.05):
            figures = dict(line.split(":", 1) for line in self.status.read_text().splitlines())
            if "VmRSS" in figures:
                self.curve.append(int(figures["VmRSS"].split()[0]) / 1024)
                self.peak = int(figures["VmHWM"].split()[0]) / 1024

    def growth(self):
        self.ended.set()
        self.join()
        return self.curve[-1] - self.curve[len(self.curve) // 4] if len(self.curve) >= 8 else math.nan


def run(program, folder, *options):
    """Seconds, processor seconds, peak MB and growth in MB of a run."""
    begun = time.perf_counter()
    process = subprocess.Popen([program, "-q", *options, "case.kdr"], cwd=folder, stderr=subprocess.PIPE, text=True)
    memory = MemoryCurve(process)
    errors = process.stderr.read()
    os.waitid(os.P_PID, process.pid, os.WEXITED | os.WNOWAIT)
    seconds = time.perf_counter() - begun
    growth = memory.growth()
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        raise SystemExit(f"exit {process.returncode}: {errors}")
    return seconds, usage.ru_utime + usage.ru_stime, memory.peak, growth


def measure(program, make, size):
    """The figures of a run, and where it left the results of every step, of a restart behind the last but one."""
    with tempfile.TemporaryDirectory() as place:
        folder = pathlib.Path(place)
        make(folder / "case.kdr", size)
        first = run(program, folder)
        return [first, run(program, folder, "--start-step", str(size))] if make == all_saved else [first]


def row(name, size, figures, before):
    seconds, busy, peak, growth = figures
    power = math.log(busy / before[1]) / math.log(size / before[0]) if before else math.nan
    cells = [name, f"{size:,}", f"{seconds:.2f}", f"{busy:.2f}", f"{peak:.0f}", f"{growth:.1f}", f"{power:.1f}"]
    return "| " + " | ".join(cell.replace("nan", "") for cell in cells) + " |"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program", metavar="PROGRAM")
    parser.add_argument("--only", action="append", metavar="NAME", help="a case whose name begins so")
    parser.add_argument("--small", action="store_true", help="a tenth of each size")
    options = parser.parse_args()
    program = str(pathlib.Path(options.program).resolve())
    print("| What grows | Size | Seconds | Busy | Peak MB | Growth MB | Power |\n|---|---|---|---|---|---|---|")
    for name, (sizes, make) in CASES.items():
        if options.only and not any(name.startswith(only) for only in options.only):
            continue
        before = {}
        for size in [size // 10 for size in sizes] if options.small else sizes:
            for title, figures in zip([name, RESTART], measure(program, make, size)):
                print(row(title, size, figures, before.get(title)), flush=True)
                before[title] = size, figures[1]


if __name__ == "__main__":
    main()
