"""What the analyses of the package cost on 1 and 2 workers of one thread, and the model that docs/scaling.md carries on.

    ./dev python && PYTHONPATH=build/python/python /usr/bin/python3 bench/scaling.py [--atoms N] [--frames N] [--repeats N]

Times are medians of runs in turn, so that what else the machine does falls on both alike.
"""

import argparse
import os
import signal
import statistics
import tempfile
import time
import warnings
from pathlib import Path

warnings.simplefilter("ignore")
os.environ["PYTHONWARNINGS"] = "ignore"

import distributed
import MDAnalysis
import numpy as np

import pathstat
from pathstat import frames as blocks

CUTOFF = 9.0


def write_run(folder, atoms, frames):
    """Walkers at the density of liquid water's oxygens, in a DCD."""
    random = np.random.default_rng(5)
    edge = (atoms / 0.0334) ** (1 / 3)
    universe = MDAnalysis.Universe.empty(atoms, trajectory=True)
    universe.add_TopologyAttr("name", ["OW"] * atoms)
    universe.dimensions = [edge, edge, edge, 90, 90, 90]
    places = random.uniform(0, edge, (atoms, 3)).astype(np.float32)
    universe.atoms.positions = places
    topology, trajectory = folder / "run.gro", folder / "run.dcd"
    universe.atoms.write(str(topology))
    with MDAnalysis.Writer(str(trajectory), atoms) as writer:
        for _ in range(frames):
            places += random.normal(0, 0.1, places.shape).astype(np.float32)
            universe.atoms.positions = places
            writer.write(universe.atoms)
    return MDAnalysis.Universe(str(topology), str(trajectory))


def seconds(work):
    begun = time.perf_counter()
    work()
    return time.perf_counter() - begun


def analyses(universe):
    return {
        "g(r)": lambda: pathstat.RDF(universe.atoms, nbins=450, range=(0, CUTOFF)),
        "displacement": lambda: pathstat.MSD(universe.atoms),
    }


def measure_parts(universe):
    """Seconds of each part of the work, on one thread."""
    pathstat.set_threads(1)
    atoms, frames = len(universe.atoms), len(universe.trajectory)
    some = range(min(frames, 32))
    indices = universe.atoms.indices
    positions, cells = blocks.read_block(universe, some, indices, "positions")
    read = statistics.median(seconds(lambda: blocks.read_block(universe, some, indices, "positions")) for _ in range(5))
    box = pathstat.box_vectors(cells)
    count = seconds(lambda: pathstat.pair_counts(positions, box=box, cutoff=CUTOFF, bins=450))
    track = np.ascontiguousarray(np.random.default_rng(1).normal(size=(frames, 256, 3)).cumsum(axis=0))
    correlate = statistics.median(seconds(lambda: pathstat.msd(track)) for _ in range(5))
    sums = [np.zeros((frames, 10)) for _ in range(200)]
    join = seconds(lambda: sum(sums[1:], sums[0])) / len(sums)
    return {
        "read, µs per atom and frame": 1e6 * read / (atoms * len(some)),
        "pairs to 9 Å, µs per atom and frame": 1e6 * count / (atoms * len(some)),
        f"displacement at all lags of {frames} frames, µs per atom and frame": 1e6 * correlate / (256 * frames),
        f"join, µs per block of {frames} lags": 1e6 * join,
    }


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--atoms", type=int, default=20_000)
    parser.add_argument("--frames", type=int, default=512)
    parser.add_argument("--repeats", type=int, default=3)
    asked = parser.parse_args()
    with tempfile.TemporaryDirectory() as place:
        universe = write_run(Path(place), asked.atoms, asked.frames)
        print(f"{asked.atoms} atoms x {asked.frames} frames")
        for name, value in measure_parts(universe).items():
            print(f"{name}: {value:.3g}")
        times, results = {}, {}
        clusters = {n: distributed.LocalCluster(n_workers=n, threads_per_worker=1, dashboard_address=None) for n in (1, 2)}
        clients = {n: distributed.Client(cluster) for n, cluster in clusters.items()}
        for client in clients.values():
            client.run(lambda: __import__("pathstat").set_threads(1))
        tasks = 500
        spent = seconds(lambda: clients[2].gather(clients[2].map(int, range(tasks), pure=False)))
        print(f"engine, ms per task: {1e3 * spent / tasks:.2f}")
        for _ in range(asked.repeats):
            for name, make in analyses(universe).items():
                for workers, client in clients.items():
                    run = make()
                    times.setdefault((name, workers), []).append(seconds(lambda: run.run(client=client)))
                    results[name, workers] = run.results
        for name in analyses(universe):
            one, two = (statistics.median(times[name, workers]) for workers in (1, 2))
            same = all(np.array_equal(a, vars(results[name, 2])[key]) for key, a in vars(results[name, 1]).items())
            print(f"{name}: 1 worker {one:.2f} s, 2 workers {two:.2f} s, ratio {one / two:.2f}, same bits: {same}")
        for name, make in analyses(universe).items():
            killed = []

            def kill(stage, done, total):
                if done == total // 2 and not killed:
                    killed.append(stage)
                    os.kill(next(iter(clients[2].run(os.getpid).values())), signal.SIGKILL)

            blocks.watch(kill)
            run = make()
            spent = seconds(lambda: run.run(client=clients[2]))
            blocks.watch(None)
            same = all(np.array_equal(a, vars(results[name, 1])[key]) for key, a in vars(run.results).items())
            print(f"{name} with a worker killed in the middle: {spent:.2f} s, same bits: {same}")
        for client, cluster in zip(clients.values(), clusters.values()):
            client.close()
            cluster.close()


if __name__ == "__main__":
    main()
