"""Whole commands of long runs beside numpy, gmx and another build of the programs, in one run.

    ./dev bench && /usr/bin/python3 bench/beside_others.py [--other PATHDESK] [--repeats N] [--longest SECONDS]

Times are medians of runs in turn, each the second of two, so that what else the machine does falls on all alike.
pathdesk and gmx read files; numpy has its vectors in memory already. What takes longer than the longest time is not
waited for.
"""

import argparse
import os
import shutil
import statistics
import subprocess
import tempfile
import time
import warnings
from pathlib import Path

warnings.simplefilter("ignore")

import MDAnalysis
import numpy as np

HERE = Path(__file__).resolve().parent.parent
SPACING_PS = 1.0


def write_run(folder, atoms, frames):
    """Walkers at the density of a dense gas, with velocities, as gro and trr. Returns positions and velocities."""
    random = np.random.default_rng(5)
    edge = (atoms * 50.0) ** (1 / 3)
    universe = MDAnalysis.Universe.empty(atoms, n_residues=atoms, atom_resindex=np.arange(atoms), trajectory=True,
                                         velocities=True)
    for name, values in (("names", ["AR"] * atoms), ("resnames", ["AR"] * atoms), ("elements", ["Ar"] * atoms),
                         ("resids", np.arange(1, atoms + 1))):
        universe.add_TopologyAttr(name, values)
    box = [edge, edge, edge, 90, 90, 90]
    steps = random.normal(0, 0.1, (frames, atoms, 3)).astype(np.float32)
    steps[0] = random.uniform(0, edge, (atoms, 3))
    positions = np.cumsum(steps, axis=0, dtype=np.float64).astype(np.float32)
    velocities = random.normal(0, 1, positions.shape).astype(np.float32)
    universe.dimensions = box
    universe.atoms.positions = positions[0]
    universe.atoms.velocities = velocities[0]
    universe.atoms.write(str(folder / "run.gro"))
    (folder / "run.ndx").write_text("[ all ]\n" + "\n".join(map(str, range(1, atoms + 1))) + "\n")
    with MDAnalysis.Writer(str(folder / "run.trr"), atoms) as writer:
        for frame in range(frames):
            universe.atoms.positions = positions[frame]
            universe.atoms.velocities = velocities[frame]
            universe.trajectory.ts.time = frame * SPACING_PS
            universe.trajectory.ts.frame = frame
            universe.dimensions = box
            writer.write(universe.atoms)
    return positions, velocities


def correlated(series, lags):
    """Sums over origins of the products of a series, frames first, with itself, by transforms."""
    frames = len(series)
    spectrum = np.fft.rfft(series, 2 * frames, axis=0)
    return np.fft.irfft(spectrum * spectrum.conj(), axis=0)[:lags]


def numpy_displacement(positions, lags):
    frames = len(positions)
    pairs = frames - np.arange(lags)
    total = np.zeros(lags)
    for atom in range(positions.shape[1]):
        track = positions[:, atom].astype(float)
        squares = np.append((track**2).sum(axis=1), 0)
        ends = 2 * squares.sum() - np.append(0, np.cumsum(squares[: lags - 1] + squares[:-1][::-1][: lags - 1]))
        total += (ends - 2 * correlated(track, lags).sum(axis=1)) / pairs
    return total / positions.shape[1]


def numpy_velocities(velocities, lags):
    pairs = len(velocities) - np.arange(lags)
    total = np.zeros(lags)
    for atom in range(velocities.shape[1]):
        total += correlated(velocities[:, atom].astype(float), lags).sum(axis=1) / pairs
    return total / velocities.shape[1]


def command(words, folder, longest, **environment):
    """Seconds that a command takes; None if it is not here, fails or takes too long."""
    begun = time.perf_counter()
    try:
        done = subprocess.run(words, cwd=folder, text=True, capture_output=True, timeout=longest,
                              env={**os.environ, **environment})
    except (FileNotFoundError, subprocess.TimeoutExpired):
        return None
    if done.returncode != 0:
        print(f"{' '.join(map(str, words))}: {done.stderr.strip().splitlines()[-1:]}")
        return None
    return time.perf_counter() - begun


def pathdesk(program, folder, lines, longest):
    script = folder / "work.script"
    script.write_text("TRAJECTORY run.trj\n" + lines)
    return command([program, "run", script, "--format", "tsv", "--out", "out"], folder, longest)


def computed(work):
    begun = time.perf_counter()
    work()
    return time.perf_counter() - begun


def gmx(folder, tool, longest, *words):
    return command(["gmx", "-quiet", tool, "-f", "run.trr", "-o", "gmx_out.xvg", *words], folder, longest,
                   GMX_MAXBACKUP="-1")


def rows(positions, velocities):
    """Work by name: lines of a script, numpy's work, and gmx's tool with its words."""
    frames, atoms = positions.shape[:2]
    run = f"{atoms:,} atoms, {frames:,} frames"
    run_words = ("-s", "run.gro", "-sel", "all")

    def msd(lags):
        return (f"displacement, {run}, {lags - 1:,} lags", f"MSD_MAX_INTERVAL_NO {lags - 1}\nMSD\n",
                lambda: numpy_displacement(positions, lags),
                ("msd", *run_words, "-trestart", SPACING_PS, "-maxtau", (lags - 1) * SPACING_PS))

    if frames > 1000:
        yield msd(frames - 1)
        yield msd(1001)
        yield (f"velocities, {run}, {frames - 2:,} lags", f"VAC_MAX_INTERVAL_NO {frames - 2}\nVAC\n",
               lambda: numpy_velocities(velocities, frames - 1),
               ("velacc", "-n", "run.ndx", "-nonormalize", "-acflen", frames - 1))
    else:
        yield msd(101)
        yield (f"g(r), {run}, 9 Å, 450 bins", "RDF_CUTOFF 9\nRDF_INTERVAL 0.02\nRDF\n", None,
               ("rdf", *run_words, "-ref", "all", "-bin", 0.002, "-rmax", 0.9))
    yield f"start, {run}", "", None, None


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", default=HERE / "build/bench/bin/pathdesk", help="pathdesk; that of the benchmarks")
    parser.add_argument("--other", help="pathdesk of another build")
    parser.add_argument("--repeats", type=int, default=5)
    parser.add_argument("--longest", type=float, default=60.0)
    options = parser.parse_args()
    print(f"{'seconds':50s} {'pathdesk':>9s} {'other':>9s} {'numpy':>9s} {'gmx':>9s}")
    for atoms, frames in ((500, 20_000), (11_000, 201)):
        folder = Path(tempfile.mkdtemp())
        try:
            positions, velocities = write_run(folder, atoms, frames)
            subprocess.run([options.program, "import", "run.gro", "run.trr", "-o", "run"], cwd=folder, check=True,
                           stdout=subprocess.DEVNULL)
            os.sync()  # what the runs are written with does not go on while they are read
            for name, lines, by_numpy, by_gmx in rows(positions, velocities):
                ways = [lambda: pathdesk(options.program, folder, lines, options.longest)]
                ways.append(lambda: options.other and pathdesk(options.other, folder, lines, options.longest))
                ways.append(lambda: by_numpy and computed(by_numpy))
                ways.append(lambda: by_gmx and gmx(folder, by_gmx[0], options.longest, *map(str, by_gmx[1:])))
                measured = [[] for _ in ways]
                for _ in range(options.repeats):
                    for way, times in zip(ways, measured):
                        # Twice, for the memory that another program has left is slow at first. What is not there
                        # or takes too long once is not tried again.
                        times.append(way() and way() if None not in times else None)
                medians = [None if None in times else statistics.median(times) for times in measured]
                print(f"{name:50s} " + " ".join(f"{'-' if t is None else format(t, '9.3f'):>9s}" for t in medians),
                      flush=True)
        finally:
            shutil.rmtree(folder)


if __name__ == "__main__":
    main()
