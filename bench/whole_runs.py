#!/usr/bin/env python3
"""Times whole runs: every build in turn, medians of several rounds, with peak memory and the growth over N.

    bench/whole_runs.py [--sizes 100 316] [--rounds 3] [--processors 2] BUILD...

BUILD is a folder with kaldra-run, for instance build/release/bin; the first one also has make-square, which writes the
problems. A processor count below the machine's keeps the runs on so many processors. Machines are shared: compare the
builds of one call, not the seconds of two.
"""
import argparse
import math
import os
import pathlib
import shutil
import statistics
import subprocess
import tempfile
import time

EMBANKMENT = pathlib.Path(__file__).parent.parent / "examples/road-embankment/road-embankment.kdr"


def run(program, data_file, processors):
    """Seconds and peak MB of one run; every result file is written into a fresh folder."""
    with tempfile.TemporaryDirectory() as folder:
        copy = pathlib.Path(folder) / data_file.name
        os.link(data_file, copy) if data_file.stat().st_dev == copy.parent.stat().st_dev else shutil.copy(data_file, copy)
        begun = time.perf_counter()
        process = subprocess.Popen([program, "-q", copy.name], cwd=folder,
                                   preexec_fn=lambda: os.sched_setaffinity(0, processors))
        _, status, usage = os.wait4(process.pid, 0)
        seconds = time.perf_counter() - begun
        process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode != 0:
            raise SystemExit(f"{program} gave {process.returncode} for {data_file.name}")
        return seconds, usage.ru_maxrss / 1024


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--sizes", type=int, nargs="+", default=[100, 316])
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--processors", type=int, default=len(os.sched_getaffinity(0)))
    parser.add_argument("builds", nargs="+", type=pathlib.Path)
    options = parser.parse_args()
    processors = sorted(os.sched_getaffinity(0))[:options.processors]

    print("| Problem | N |" + "".join(f" {build} |" for build in options.builds))
    print("|---|---|" + "---|" * len(options.builds))
    with tempfile.TemporaryDirectory() as folder:
        last = {}
        problems = [("embankment", 0)]
        problems += [(kind, n) for kind in ("steady", "linear", "freezing") for n in options.sizes]
        for kind, n in problems:
            data_file = EMBANKMENT if n == 0 else pathlib.Path(folder) / f"{kind}-{n}.kdr"
            if n > 0:
                subprocess.run([options.builds[0] / "make-square", kind, str(n), data_file], check=True)
            results = [[] for _ in options.builds]
            for _ in range(options.rounds):
                for build, result in zip(options.builds, results):
                    result.append(run((build / "kaldra-run").resolve(), data_file, processors))
            cells = []
            for i, result in enumerate(results):
                seconds = statistics.median(r[0] for r in result)
                memory = max(r[1] for r in result)
                cell = f" {seconds:.3g} s, {memory:.0f} MB"
                before = last.get((kind, i))
                if before and n > before[0]:
                    cell += f", N^{math.log(seconds / before[1]) / math.log(n / before[0]):.2f}"
                last[kind, i] = (n, seconds)
                cells.append(cell + " |")
            print(f"| {kind} | {n or ''} |" + "".join(cells), flush=True)
            if n > 0:
                data_file.unlink()


if __name__ == "__main__":
    main()
