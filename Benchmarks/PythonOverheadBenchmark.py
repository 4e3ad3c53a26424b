#!/usr/bin/python3
"""What the Python module costs over arbo: the same extraction and supply areas on the large phantom, through
the arbo program and through lumoarbo, alternately in one run; prints the times side by side and their ratio
against the goal of 1.05.

    PYTHONPATH=build/Wrapping/Python build/Benchmarks/PythonOverheadBenchmark build/Apps/arbo/arbo [rounds]

arbo's times include what the command line needs around the work (process start, reading the masks, writing
the tree and label image); the module gets the arrays in memory, so a ratio near 1 means no hidden copies or
conversions on the Python side.
"""

import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import lumoarbo

THREADS = 2


def timed(work):
    started = time.perf_counter()
    result = work()
    return time.perf_counter() - started, result


def main(arbo, rounds=3):
    with tempfile.TemporaryDirectory() as folder:
        folder = Path(folder)
        subprocess.run([arbo, "--quiet", "phantom", "--out", folder, "--size", "large", "--seed", "1"], check=True)
        liver = lumoarbo.phantom("large", 1)
        print("large phantom: %d x %d x %d voxels (z, y, x), %d rounds, %d threads"
              % (liver.organ.shape + (rounds, THREADS)))

        def through_arbo():
            extract, _ = timed(lambda: subprocess.run(
                [arbo, "--quiet", "extract", folder / "portal.nrrd", "-o", folder / "arbo.ves"], check=True))
            supply, _ = timed(lambda: subprocess.run(
                [arbo, "--quiet", "supply", folder / "organ.nrrd", folder / "arbo.ves", "-o", folder / "areas.nrrd",
                 "--mode", "portal-segments", "--threads", str(THREADS)], check=True, stdout=subprocess.DEVNULL))
            return extract, supply

        def through_module():
            extract, tree = timed(lambda: lumoarbo.extract(liver.portal, **liver.geometry))
            supply, _ = timed(lambda: lumoarbo.supply(liver.organ, tree, mode="portal-segments", threads=THREADS,
                                                      **liver.geometry))
            return extract, supply, tree

        arbo_times, module_times = [], []
        for _ in range(rounds):
            arbo_times.append(through_arbo())
            extract, supply, tree = through_module()
            module_times.append((extract, supply))
        # The two roads must have done the same work.
        tree.write(folder / "module.ves")
        if (folder / "module.ves").read_bytes() != (folder / "arbo.ves").read_bytes():
            sys.exit("PythonOverheadBenchmark: the module's tree differs from arbo's")

        print("%-22s %12s %12s %8s" % ("median of the rounds", "arbo (s)", "module (s)", "ratio"))
        rows = [("extract", 0), ("supply", 1)]
        for name, index in rows:
            a = statistics.median(t[index] for t in arbo_times)
            m = statistics.median(t[index] for t in module_times)
            print("%-22s %12.3f %12.3f %8.3f" % (name, a, m, m / a))
        a = statistics.median(sum(t) for t in arbo_times)
        m = statistics.median(sum(t) for t in module_times)
        ratio = m / a
        print("%-22s %12.3f %12.3f %8.3f" % ("extract + supply", a, m, ratio))
        print("goal: module / arbo <= 1.05: %.3f, %s" % (ratio, "met" if ratio <= 1.05 else "NOT met"))


if __name__ == "__main__":
    arguments = [a for a in sys.argv[1:] if not a.startswith("--benchmark")]
    if not arguments:
        sys.exit(__doc__)
    main(arguments[0], int(arguments[1]) if len(arguments) > 1 else 3)
