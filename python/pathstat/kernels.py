"""The kernels of pathstat over NumPy arrays.

Arrays of 64-bit floats in C order are taken as they stand; NumPy makes a copy of others. Every kernel lets other threads
of Python run, uses all processors (`set_threads`), gives the same bits for any number of them, and the long ones stop
between their pieces on Ctrl-C. Wrong shapes and values raise ValueError.
"""

from __future__ import annotations

from typing import Any, Dict, NamedTuple, Optional, Sequence, Tuple

import numpy as np
from numpy.typing import ArrayLike, NDArray

from . import _kernels

Floats = NDArray[np.float64]

#: The velocity of light in the spectra of pathstat, cm/ps.
LIGHT_CM_PER_PS = 0.03

_ENSEMBLES = {"NVE": 1, "NVT": 2, "NPT": 3, "NPH": 4}
_ENERGIES = {
    "NVE": ("potential_energy", "kinetic_energy"),
    "NVT": ("total_energy", "potential_energy"),
    "NPT": ("enthalpy",),
    "NPH": ("kinetic_energy",),
}
_AT_CONSTANT_VOLUME = {"thermal_pressure": 803, "isometric_heat_capacity": 806}
_AT_CONSTANT_PRESSURE = {
    "adiabatic_compressibility": 801,
    "isothermal_compressibility": 802,
    "thermal_pressure": 803,
    "gruneisen": 804,
    "isobaric_heat_capacity": 805,
    "isometric_heat_capacity": 806,
    "expansivity": 807,
    "isoenthalpic_joule_thomson": 808,
    "isothermal_joule_thomson": 809,
    "velocity_of_sound": 810,
}
_DIELECTRIC = 901


class Distribution(NamedTuple):
    """A radial distribution: distances at the middle of the bins (Å), g(r), and the pairs of each bin in all frames."""

    r: Floats
    g: Floats
    counts: Floats


class Spectrum(NamedTuple):
    """Wavenumbers (1/cm) or wave numbers (1/Å), and the values there."""

    k: Floats
    values: Floats


def set_threads(count: int) -> None:
    """Sets the number of threads of all kernels; below 1 is taken as 1."""
    _kernels.set_threads(count)


def threads() -> int:
    """The number of threads of all kernels."""
    return _kernels.threads()


def box_vectors(dimensions: Optional[ArrayLike]) -> Optional[Floats]:
    """The vectors of a cell as rows, from lengths (Å) and angles (degrees): a along x, b in the xy plane.

    `dimensions` has the shape (6,) or (frames, 6); (3, 3) and (frames, 3, 3) are vectors already. None stays None.
    """
    if dimensions is None:
        return None
    given = np.asarray(dimensions, dtype=float)
    if given.shape[-2:] == (3, 3):
        return given
    if given.shape[-1] != 6:
        raise ValueError("a cell has six lengths and angles, or three vectors")
    a, b, c = (given[..., k] for k in range(3))
    cosines = np.cos(np.radians(given[..., 3:]))
    # Right angles are right to the last bit.
    cosines = np.where(given[..., 3:] == 90, 0.0, cosines)
    alpha, beta, gamma = (cosines[..., k] for k in range(3))
    sine = np.sqrt(1 - gamma**2)
    vectors = np.zeros(given.shape[:-1] + (3, 3))
    vectors[..., 0, 0] = a
    vectors[..., 1, 0], vectors[..., 1, 1] = b * gamma, b * sine
    vectors[..., 2, 0] = c * beta
    vectors[..., 2, 1] = c * (alpha - beta * gamma) / sine
    vectors[..., 2, 2] = np.sqrt(c**2 - vectors[..., 2, 0] ** 2 - vectors[..., 2, 1] ** 2)
    return vectors


def cell_volumes(vectors: Any) -> Floats:
    """Volumes (Å³) of cells given by their vectors as rows: one for (3, 3), an array for (frames, 3, 3)."""
    return np.abs((vectors[..., 0, :] * np.cross(vectors[..., 1, :], vectors[..., 2, :])).sum(axis=-1))


def grid_points(vectors: Any, spacing: float) -> Sequence[int]:
    """Points of a grid over the first of the cells along its vectors, at least one, as near to the spacing (Å) as can be."""
    if not spacing > 0:
        raise ValueError("spacing must be above 0")
    lengths = np.linalg.norm(vectors.reshape(-1, 3, 3)[0], axis=1)
    return [int(n) for n in np.maximum(1, np.rint(lengths / spacing))]


def pair_counts(
    positions: ArrayLike,
    others: Optional[ArrayLike] = None,
    *,
    box: Optional[ArrayLike] = None,
    cutoff: float,
    bins: int,
) -> Floats:
    """Pairs by distance, shape (frames, bins).

    Bin k holds the distances from k to k + 1 times cutoff / bins. In a periodic box (as `box_vectors` takes it) all
    images within the cutoff count, not the nearest alone. Without `others`, each pair counts twice, and an atom's own
    images count once each.

    positions, others: (frames, atoms, 3) or (atoms, 3), Å.
    """
    return _kernels.pair_counts(positions, others, box=box_vectors(box), cutoff=cutoff, bins=bins)


def rdf(
    positions: ArrayLike,
    others: Optional[ArrayLike] = None,
    *,
    box: ArrayLike,
    cutoff: float,
    bins: int,
) -> Distribution:
    """The radial distribution g(r) of a periodic system.

    Each frame's counts are divided by N₁ N₂ pairs, without `others` N², and by the shell 4 π r² dr at the middle of the
    bin, multiplied with the mean volume of the frames so far, and averaged over the frames.
    """
    counts = pair_counts(positions, others, box=box, cutoff=cutoff, bins=bins)
    first = np.shape(positions)[-2]
    pairs = float(first) * (first if others is None else np.shape(others)[-2])
    volumes = np.broadcast_to(cell_volumes(box_vectors(box)), len(counts))
    spacing = cutoff / bins
    places = np.arange(1, bins + 1, dtype=float)
    norm = 1.0 / (pairs * spacing * (4 * np.pi) * spacing * spacing) / ((places - 1) * places + 0.25)
    g = np.zeros(bins)
    mean = 0.0
    for frame, (found, volume) in enumerate(zip(counts, volumes), start=1):
        mean += (volume - mean) / frame
        g += (found * (norm * mean) - g) / frame
    return Distribution((places - 0.5) * spacing, g, counts.sum(axis=0))


def structure_factor(
    g: ArrayLike, spacing: float, density: float, *, like: bool = True, k_interval: float = 0.05
) -> Spectrum:
    """S(k) = B + ρ ∫ (g(r) − 1) 4 π r² sin(kr)/(kr) dr, with B = 1 for one set of atoms (`like`), else 0.

    g: at (k + 1/2) × spacing, Å. density: 1/Å³. k_interval: wanted spacing of k, 1/Å.
    """
    values = np.asarray(g, dtype=float)
    if values.ndim != 1:
        raise ValueError("g must have one dimension")
    if not (spacing > 0 and k_interval > 0):
        raise ValueError("spacing and k_interval must be above 0")
    points = max(2, int(np.pi / (k_interval * spacing)))
    function = np.zeros(points)
    known = min(points, len(values))
    function[:known] = values[:known] - 1
    transformed = _kernels.radial_transform(function, spacing)
    k = np.arange(points) * (np.pi / (points * spacing))
    return Spectrum(k, transformed * density + (1.0 if like else 0.0))


def _lags(vectors: ArrayLike, max_lag: Optional[int]) -> Tuple[Floats, int]:
    array = np.asarray(vectors, dtype=float)
    if max_lag is None:
        max_lag = max(len(array) - 1, 0)
    return array, max_lag


def _correlation(
    vectors: ArrayLike, max_lag: Optional[int], origin_step: int, components: bool, of_velocities: bool
) -> Floats:
    array, lag = _lags(vectors, max_lag)
    sums = _kernels.correlation_sums(
        array, max_lag=lag, origin_step=origin_step, of_velocities=of_velocities, components=components
    )
    pairs = (len(array) - 1 - np.arange(lag + 1)) // origin_step + 1
    means = sums / (pairs * array.shape[1])[:, None]
    if not components:
        return means[:, 0]
    if of_velocities:
        means[:, 3:6] /= 2
    return means


def msd(
    positions: ArrayLike, max_lag: Optional[int] = None, *, origin_step: int = 1, components: bool = False
) -> Floats:
    """Mean square displacement (Å²) by lag, from 0 to max_lag frames: over all atoms and all pairs of frames whose first
    is a multiple of origin_step. With components, the columns are XX, YY, ZZ, XY, XZ, YZ and the total.

    positions: (frames, atoms, 3), Å, not folded back into a cell. The program leaves the last frame of its range out of
    all pairs; `positions[:-1]` gives its numbers. Every value is that of the definition to 1e-10.
    """
    return _correlation(positions, max_lag, origin_step, components, False)


def vac(
    velocities: ArrayLike, max_lag: Optional[int] = None, *, origin_step: int = 1, components: bool = False
) -> Floats:
    """Velocity autocorrelation ⟨v(0)·v(t)⟩ (Å²/ps²) by lag; the rest as for `msd`. XY is the mean of XY and YX."""
    return _correlation(velocities, max_lag, origin_step, components, True)


def dac(dipoles: ArrayLike, max_lag: Optional[int] = None, *, origin_step: int = 1, components: bool = False) -> Floats:
    """Autocorrelation of the total dipole (Debye²) by lag. dipoles: (frames, 3), as `dipoles` gives them."""
    array, lag = _lags(dipoles, max_lag)
    sums = _kernels.dipole_sums(array, max_lag=lag, origin_step=origin_step, components=components)
    pairs = (len(array) - 1 - np.arange(lag + 1)) // origin_step + 1
    means = sums / pairs[:, None]
    if not components:
        return means[:, 6]
    means[:, 3:6] /= 2
    return means


def power_spectrum(correlation: ArrayLike, spacing: float, points: Optional[int] = None) -> Spectrum:
    """The square of the cosine transform of a correlation function, up to 7000/cm.

    correlation: by lag, `spacing` ps apart. points: the length that is transformed; the function is cut or filled up
    with zeros. The unit is that of the function, times ps, squared.
    """
    values = np.asarray(correlation, dtype=float)
    if values.ndim != 1:
        raise ValueError("the correlation must have one dimension")
    if not spacing > 0:
        raise ValueError("spacing must be above 0")
    length = len(values) if points is None else points
    function = np.zeros(length)
    known = min(length, len(values))
    function[:known] = values[:known]
    step = 0.5 / (length * spacing * LIGHT_CM_PER_PS)
    shown = int(min(length, 7000.0 / step + 1))
    return Spectrum(np.arange(shown) * step, ((_kernels.cosine_transform(function) * spacing) ** 2)[:shown])


def line_fit(values: ArrayLike, spacing: float = 1.0, start: float = 0.0) -> Tuple[float, float]:
    """Slope and intercept of the straight line of least squares through evenly spaced values, the first at `start`."""
    slope, intercept = _kernels.line_fit(values, -1)
    return slope / spacing, intercept - slope / spacing * start


def fluctuations(
    ensemble: str,
    *,
    temperature: ArrayLike,
    volume: ArrayLike,
    pressure: ArrayLike = 0.0,
    mass: float = 0.0,
    atoms: int = 0,
    degrees_of_freedom: float = 0.0,
    dipole: Optional[ArrayLike] = None,
    **energies: ArrayLike,
) -> Dict[str, Any]:
    """Response properties from the fluctuations of a run, by name.

    ensemble: "NVE" (with potential_energy and kinetic_energy), "NVT" (total_energy, potential_energy), "NPT" (enthalpy)
    or "NPH" (kinetic_energy), in kcal/mol. temperature in K, volume in Å³ and pressure in GPa: a value a frame, or one
    for all. mass: of all atoms, atomic mass units. dipole: (frames, 3), Debye, gives the dielectric constant.

    Compressibilities are in 1/GPa, heat capacities in cal/(mol K) of the whole system, expansivity in 1/K, thermal
    pressure in GPa/K, Joule-Thomson coefficients in K/GPa and Å³, velocity of sound in m/s. A property with two ways to
    it is a tuple of two. Without energies, only the dielectric constant is given.
    """
    if ensemble not in _ENSEMBLES:
        raise ValueError(f"ensemble must be one of {', '.join(_ENSEMBLES)}, not {ensemble!r}")
    names = _ENERGIES[ensemble]
    if energies and set(energies) != set(names):
        raise ValueError(f"{ensemble} takes {' and '.join(names)}, not {', '.join(sorted(energies))}")
    if not energies and dipole is None:
        raise ValueError(f"{ensemble} takes {' and '.join(names)}, or a dipole")
    base = [np.asarray(pressure, float) * 1e9, np.asarray(volume, float), np.asarray(temperature, float)]
    result: Dict[str, Any] = {}

    def put(rows: Dict[str, int], columns: Sequence[Any]) -> None:
        table = np.array(np.broadcast_arrays(*(np.atleast_1d(column) for column in columns)))
        for name, row in rows.items():
            values = _kernels.fluctuation(
                row, _ENSEMBLES[ensemble], table, mass, atoms, degrees_of_freedom, table[1, 0]
            )
            result[name] = values[0] if len(values) == 1 else tuple(values)

    if energies:
        constant_volume = ensemble in ("NVE", "NVT")
        rows = _AT_CONSTANT_VOLUME if constant_volume else _AT_CONSTANT_PRESSURE
        put(rows, base + [np.asarray(energies[name], float) for name in names])
    if dipole is not None:
        put({"dielectric_constant": _DIELECTRIC}, base + list(np.asarray(dipole, float).T))
    return result


def dipoles(positions: ArrayLike, charges: ArrayLike, molecules: Optional[ArrayLike] = None) -> Floats:
    """Dipoles of frames, (frames, 3), Debye: the sum over the molecules of (C₊ − C₋) min(Q₊, |Q₋|), with Q the sums of a
    molecule's charges by sign and C the centres of these charges. A molecule of one sign adds nothing.

    positions: (frames, atoms, 3), Å, molecules whole. molecules: number of the molecule of each atom, from 0; None takes
    all charges as one group.
    """
    given = np.zeros(np.shape(positions)[-2], np.int32) if molecules is None else np.asarray(molecules, np.int32)
    return _kernels.dipoles(positions, charges, given)


def density(positions: ArrayLike, *, box: ArrayLike, spacing: float = 0.5, points: Optional[Sequence[int]] = None) -> Floats:
    """Mean number density (1/Å³) of atoms over frames on a grid over the cell, shape (nz, ny, nx).

    The grid moves with the cell: point (i, j, k) stands at i/nx, j/ny, k/nz of its vectors. points: nx, ny, nz; else from
    the first cell and the wanted spacing, Å.
    """
    vectors = box_vectors(box)
    if points is None:
        points = grid_points(vectors, spacing)
    counts = _kernels.grid_counts(positions, box=vectors, points=list(points))
    frames = 1 if np.ndim(positions) == 2 else len(positions)  # type: ignore[arg-type]
    return counts / (frames * cell_volumes(vectors).mean() / np.prod(points))


def summary(series: ArrayLike) -> Dict[str, Any]:
    """What a series says: mean, its standard error by blocking, deviation, drift over the run with its error,
    correlation time and effective number of samples (in units of the spacing), and a doubt ("too short", "drifting",
    "constant", "errors disagree") or "". Numbers that cannot be known are nan; values that are not finite are skipped."""
    return _kernels.statistics(series)
