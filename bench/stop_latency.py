#!/usr/bin/env python3
"""Presses Stop at many moments of a run and tells the longest time until the program has ended.

    bench/stop_latency.py [--size 1000] [--solver sparse] [--every 0.35] [--until 10] BUILD

BUILD is a folder with kaldra-run and make-square, for instance build/release/bin.
"""
import argparse
import pathlib
import signal
import subprocess
import tempfile
import time


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--size", type=int, default=1000)
    parser.add_argument("--solver", choices=["skyline", "sparse"], default="sparse")
    parser.add_argument("--every", type=float, default=0.35)
    parser.add_argument("--until", type=float, default=10)
    parser.add_argument("build", type=pathlib.Path)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([options.build.resolve() / "make-square", "steady", str(options.size), "square.kdr"],
                       cwd=folder, check=True)
        delays = []
        moment = options.every
        while moment < options.until:
            process = subprocess.Popen([(options.build / "kaldra-run").resolve(), "-q", "--solver", options.solver,
                                        "square.kdr"], cwd=folder)
            time.sleep(moment)
            if process.poll() is not None:
                break
            pressed = time.perf_counter()
            process.send_signal(signal.SIGINT)
            status = process.wait()
            delay = time.perf_counter() - pressed
            if status == 0 and delay < 0.2:
                break  # it was about to end
            if status not in (128 + signal.SIGINT, -signal.SIGINT):
                raise SystemExit(f"exit {status} after Stop at {moment:.2f} s")
            delays.append((delay, moment))
            moment += options.every
    longest, when = max(delays)
    print(f"{len(delays)} stops, {options.solver}, N = {options.size}: "
          f"the longest took {longest:.2f} s, pressed {when:.2f} s after the start")


if __name__ == "__main__":
    main()
