"""Analyses over MDAnalysis universes: `RDF(group).run().results.rdf`, on this machine or on a cluster.

`run(start, stop, step)` takes the frames of a slice, negative numbers among them. With `client=`, a
`dask.distributed.Client`, the work is done by its workers, which open the files of the universe by themselves, and the
results have the same bits.
"""

from __future__ import annotations

import tempfile
from pathlib import Path
from types import SimpleNamespace
from typing import Any, BinaryIO, Dict, Optional, Sequence, Tuple

import numpy as np

from . import _kernels, kernels
from .frames import FRAMES_IN_BLOCK, Source, atoms_in_block, frames_in_block, map_blocks, pieces, read_block, save_whole

__all__ = ["RDF", "MSD", "VAC", "Dielectric", "Density", "Results"]


class Results(SimpleNamespace):
    """What an analysis has found, by name."""


class Analysis:
    """What all analyses share. `results` is there behind `run`."""

    #: Names of the results that `plot` and `to_frame` show: the abscissa, and what stands over it.
    curves: Tuple[str, ...] = ()
    labels: Tuple[str, str] = ("", "")

    def __init__(self, group: Any) -> None:
        if len(group) == 0:
            raise ValueError("the group has no atoms")
        self.universe = group.universe
        self.results = Results()

    def run(
        self,
        start: Optional[int] = None,
        stop: Optional[int] = None,
        step: Optional[int] = None,
        *,
        client: Any = None,
    ) -> Any:
        trajectory = self.universe.trajectory
        first, end, stride = trajectory.check_slice_indices(start, stop, step)
        self.frames = np.arange(first, end, stride)
        if len(self.frames) == 0:
            raise ValueError("there is no frame in this range")
        self.start, self.stop, self.step = first, end, stride
        self.n_frames = len(self.frames)
        self.times = self.frames * trajectory.dt + trajectory[0].time
        trajectory[0]
        self.results = Results()
        self._compute(client)
        trajectory[0]
        return self

    def _compute(self, client: Any) -> None:
        raise NotImplementedError

    def _by_frames(self, client: Any, task: Any, *arguments: Any) -> Any:
        blocks = pieces(self.frames, frames_in_block(len(arguments[0])))
        return map_blocks(client, self.universe, task, blocks, arguments)

    def _columns(self) -> Dict[str, np.ndarray]:
        if not self.curves or not hasattr(self.results, self.curves[0]):
            raise ValueError("there are no results to show; call run() first")
        return {name: getattr(self.results, name) for name in self.curves}

    def plot(self, ax: Any = None) -> Any:
        """Draws the curve by matplotlib, into `ax` if one is given, and returns the axes."""
        columns = self._columns()
        if ax is None:
            import matplotlib.pyplot

            ax = matplotlib.pyplot.figure().add_subplot()
        abscissa, *ordinates = columns.items()
        for name, values in ordinates:
            ax.plot(abscissa[1], values, label=name)
        ax.set_xlabel(self.labels[0])
        ax.set_ylabel(self.labels[1])
        return ax

    def to_frame(self) -> Any:
        """The curve as a pandas.DataFrame."""
        import pandas

        return pandas.DataFrame(self._columns())


def _cells(cells: np.ndarray) -> Any:
    if not (cells[:, :3] > 0).all():
        raise ValueError("a frame has no cell, and this analysis needs one")
    return kernels.box_vectors(cells)


def _count_pairs(
    universe: Any, frames: Any, first: np.ndarray, second: Optional[np.ndarray], cutoff: float, bins: int
) -> Tuple[np.ndarray, np.ndarray]:
    positions, cells = read_block(universe, frames, first, "positions")
    others = None if second is None else read_block(universe, frames, second, "positions")[0]
    vectors = _cells(cells)
    counts = kernels.pair_counts(positions, others, box=vectors, cutoff=cutoff, bins=bins)
    # Counts are whole numbers, whose sums are exact.
    return counts.sum(axis=0), kernels.cell_volumes(vectors)


class RDF(Analysis):
    """Radial distribution of one group, or between two, over all periodic images within the range.

    Normalised by the mean volume of the frames, and for one group by N² pairs; an atom's own images count, atoms that two
    groups share are pairs at distance 0.

    results: bins (Å, the middle of each), edges, count (pairs in all frames), rdf.
    """

    curves = ("bins", "rdf")
    labels = ("r (Å)", "g(r)")

    def __init__(self, g1: Any, g2: Any = None, nbins: int = 150, range: Tuple[float, float] = (0.0, 15.0)) -> None:
        super().__init__(g1)
        if g2 is not None and g2.universe is not self.universe:
            raise ValueError("the groups are of different universes")
        if g2 is not None and len(g2) == 0:
            raise ValueError("the second group has no atoms")
        if range[0] != 0 or not range[1] > 0:
            raise ValueError("the range must run from 0 to a distance above it")
        self.first = g1.indices.copy()
        self.second = None if g2 is None or np.array_equal(g1.indices, g2.indices) else g2.indices.copy()
        self.nbins, self.range = nbins, (0.0, float(range[1]))

    def _compute(self, client: Any) -> None:
        count = np.zeros(self.nbins)
        volumes = []
        arguments = (self.first, self.second, self.range[1], self.nbins)
        for counts, block in self._by_frames(client, _count_pairs, *arguments):
            count += counts
            volumes.append(block)
        edges = np.linspace(0.0, self.range[1], self.nbins + 1)
        spacing = self.range[1] / self.nbins
        middle = (np.arange(self.nbins) + 0.5) * spacing
        pairs = float(len(self.first)) * len(self.first if self.second is None else self.second)
        volume = np.concatenate(volumes).mean()
        rdf = count * volume / (pairs * self.n_frames * 4 * np.pi * middle**2 * spacing)
        self.results = Results(bins=middle, edges=edges, count=count, rdf=rdf)


def _leave_vectors(
    universe: Any, block: Tuple[str, Any], indices: np.ndarray, what: str, atoms_in_block: int
) -> None:
    """Leaves a file of a block of frames, in which one block of atoms stands behind the other. Holds one frame at a time."""
    path, frames = Path(block[0]), block[1]
    if path.exists():
        return

    def write(file: BinaryIO) -> None:
        shape = (len(frames) * len(indices) * 3,)
        np.lib.format.write_array_header_1_0(file, {"descr": "<f8", "fortran_order": False, "shape": shape})
        begin = file.tell()
        for k, frame in enumerate(frames):
            vectors = read_block(universe, [frame], indices, what)[0][0]
            for first in range(0, len(indices), atoms_in_block):
                part = vectors[first : first + atoms_in_block]
                file.seek(begin + 24 * (first * len(frames) + k * len(part)))
                file.write(part.astype("<f8").tobytes())

    save_whole(path, write)


def _correlate(universe: Any, block: Any, options: Dict[str, Any]) -> np.ndarray:
    """Sums over pairs of frames of a block of atoms: an array, or its place in files by frames."""
    if isinstance(block, np.ndarray):
        return _kernels.correlation_sums(block, **options)
    paths, first, atoms, all_atoms = block
    parts = []
    for path in paths:
        values = np.load(path, mmap_mode="r")
        frames = len(values) // (3 * all_atoms)
        begin = 3 * first * frames
        parts.append(values[begin : begin + 3 * atoms * frames].reshape(frames, atoms, 3))
    return _kernels.correlation_sums(parts[0] if len(parts) == 1 else np.concatenate(parts), **options)


class _Correlation(Analysis):
    what = ""
    of_velocities = False
    curve = ""

    def __init__(
        self,
        group: Any,
        max_lag: Optional[int] = None,
        origin_step: int = 1,
        components: bool = False,
        folder: Optional[str] = None,
    ) -> None:
        super().__init__(group)
        self.group = group.indices.copy()
        self.max_lag, self.origin_step, self.components, self.folder = max_lag, origin_step, components, folder

    def _compute(self, client: Any) -> None:
        longest = self.n_frames - 1
        lag = longest if self.max_lag is None else self.max_lag
        options = dict(
            max_lag=lag, origin_step=self.origin_step, of_velocities=self.of_velocities, components=self.components
        )
        if client is None:
            vectors = read_block(self.universe, self.frames, self.group, self.what)[0]
            width = atoms_in_block(self.n_frames)
            parts = [vectors[:, first : first + width] for first in range(0, len(self.group), width)]
            total = self._join(map_blocks(None, self.universe, _correlate, parts, (options,)))
        else:
            total = self._compute_there(client, options)
        pairs = (longest - np.arange(lag + 1)) // self.origin_step + 1
        means = total / (pairs * len(self.group))[:, None]
        if self.of_velocities and self.components:
            means[:, 3:6] /= 2
        spacing = self.universe.trajectory.dt * self.step
        values = means if self.components else means[:, 0]
        self.results = Results(lags=np.arange(lag + 1) * spacing, **{self.curve: values})

    def _compute_there(self, client: Any, options: Dict[str, Any]) -> np.ndarray:
        width, all_atoms = atoms_in_block(self.n_frames), len(self.group)
        with tempfile.TemporaryDirectory() as own:
            base = Path(own if self.folder is None else self.folder)
            fingerprint = Source.of(self.universe).fingerprint(self.frames, self.group, self.what, FRAMES_IN_BLOCK, width)
            folder = base / f"pathstat-{fingerprint}"
            folder.mkdir(parents=True, exist_ok=True)
            blocks = [(str(folder / f"{n}.npy"), part) for n, part in enumerate(pieces(self.frames, FRAMES_IN_BLOCK))]
            for _ in map_blocks(client, self.universe, _leave_vectors, blocks, (self.group, self.what, width)):
                pass
            paths = [path for path, _ in blocks]
            parts = [
                (paths, first, min(width, all_atoms - first), all_atoms) for first in range(0, all_atoms, width)
            ]
            return self._join(map_blocks(client, self.universe, _correlate, parts, (options,)))

    @staticmethod
    def _join(sums: Any) -> np.ndarray:
        total = next(sums)
        for block in sums:
            total = total + block
        return total


class MSD(_Correlation):
    """Mean square displacement over all pairs of frames; coordinates must not be folded back into the cell.

    max_lag: in frames of the range, all by default. folder: where workers leave their blocks and find those of an earlier
    run, a folder that all see; without it, one that is removed at the end. results: lags (ps), msd (Å²), and `fit`.
    """

    what, of_velocities, curve = "positions", False, "msd"
    curves = ("lags", "msd")
    labels = ("t (ps)", "mean square displacement (Å²)")

    def fit(self, first: float, last: float) -> Dict[str, float]:
        """The line of least squares between two lags (ps), and the diffusion coefficient in Å²/ps and cm²/s."""
        lags = self._columns()["lags"]
        msd = self.results.msd[:, 6] if self.results.msd.ndim == 2 else self.results.msd
        inside = np.flatnonzero((lags >= first) & (lags <= last))
        if len(inside) < 2:
            raise ValueError("fewer than two lags lie between these times")
        slope, intercept = kernels.line_fit(msd[inside], lags[1] - lags[0], lags[inside[0]])
        return {"slope": slope, "intercept": intercept, "D": slope / 6, "D_cm2_per_s": slope / 6 * 1e-4}


class VAC(_Correlation):
    """Velocity autocorrelation over all pairs of frames. results: lags (ps), vac (Å²/ps²); `spectrum` gives its power
    spectrum."""

    what, of_velocities, curve = "velocities", True, "vac"
    curves = ("lags", "vac")
    labels = ("t (ps)", "velocity autocorrelation (Å²/ps²)")

    def spectrum(self, points: Optional[int] = None) -> kernels.Spectrum:
        lags = self._columns()["lags"]
        vac = self.results.vac[:, 6] if self.results.vac.ndim == 2 else self.results.vac
        return kernels.power_spectrum(vac, lags[1] - lags[0], points)


def _sum_dipoles(
    universe: Any, frames: Any, indices: np.ndarray, charges: np.ndarray, molecules: np.ndarray
) -> Tuple[np.ndarray, np.ndarray]:
    positions, cells = read_block(universe, frames, indices, "positions")
    return kernels.dipoles(positions, charges, molecules), kernels.cell_volumes(_cells(cells))


class Dielectric(Analysis):
    """Static dielectric constant from the fluctuation of the total dipole, 1 + 4π (⟨M²⟩ − ⟨M⟩²) / (3 V k T).

    Molecules are those of the topology (fragments by bonds, else residues), and must be whole. results: dipoles (Debye, a
    row a frame), eps, volume (Å³, the mean).
    """

    def __init__(self, group: Any, temperature: float = 300.0) -> None:
        super().__init__(group)
        if not temperature > 0:
            raise ValueError("the temperature must be above 0")
        self.group, self.charges, self.temperature = group.indices.copy(), np.array(group.charges, float), temperature
        try:
            numbers = group.fragindices
        except (AttributeError, ValueError, LookupError):
            numbers = group.resindices
        self.molecules = np.unique(numbers, return_inverse=True)[1].astype(np.int32)

    def _compute(self, client: Any) -> None:
        found = list(self._by_frames(client, _sum_dipoles, self.group, self.charges, self.molecules))
        dipoles = np.concatenate([block[0] for block in found])
        volumes = np.concatenate([block[1] for block in found])
        response = kernels.fluctuations("NVT", temperature=self.temperature, volume=volumes, dipole=dipoles)
        self.results = Results(dipoles=dipoles, eps=response["dielectric_constant"], volume=volumes.mean())


def _count_atoms(universe: Any, frames: Any, indices: np.ndarray, points: Sequence[int]) -> Tuple[np.ndarray, np.ndarray]:
    positions, cells = read_block(universe, frames, indices, "positions")
    vectors = _cells(cells)
    return _kernels.grid_counts(positions, box=vectors, points=list(points)), kernels.cell_volumes(vectors)


class Density(Analysis):
    """Mean number density of atoms on a grid that moves with the cell. results: density (1/Å³), shape (nz, ny, nx)."""

    def __init__(self, group: Any, spacing: float = 0.5, points: Optional[Sequence[int]] = None) -> None:
        super().__init__(group)
        if points is None and not spacing > 0:
            raise ValueError("spacing must be above 0")
        self.group, self.spacing, self.points = group.indices.copy(), spacing, points

    def _compute(self, client: Any) -> None:
        points = self.points
        if points is None:
            _, cells = read_block(self.universe, self.frames[:1], self.group[:1], "positions")
            points = kernels.grid_points(_cells(cells), self.spacing)
        found = list(self._by_frames(client, _count_atoms, self.group, points))
        counts = sum(block[0] for block in found)
        volume = np.concatenate([block[1] for block in found]).mean()
        self.results = Results(density=counts / (self.n_frames * volume / np.prod(points)), counts=counts)
