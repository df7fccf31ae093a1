"""Analysis of molecular dynamics: kernels over NumPy arrays, and analyses over MDAnalysis universes.

Lengths are in Å, times in ps, velocities in Å/ps, energies in kcal/mol, charges in elementary charges, dipoles in Debye.
"""

from .analyses import MSD, RDF, VAC, Density, Dielectric, Results
from .kernels import (
    Distribution,
    Spectrum,
    box_vectors,
    dac,
    density,
    dipoles,
    fluctuations,
    line_fit,
    msd,
    pair_counts,
    power_spectrum,
    rdf,
    set_threads,
    structure_factor,
    summary,
    threads,
    vac,
)

__all__ = [
    "Density",
    "Dielectric",
    "Distribution",
    "MSD",
    "RDF",
    "Results",
    "VAC",
    "Spectrum",
    "box_vectors",
    "dac",
    "density",
    "dipoles",
    "fluctuations",
    "line_fit",
    "msd",
    "pair_counts",
    "power_spectrum",
    "rdf",
    "set_threads",
    "structure_factor",
    "summary",
    "threads",
    "vac",
]
