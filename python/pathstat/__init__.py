"""Analysis of molecular dynamics: kernels over NumPy arrays, analyses over MDAnalysis universes, and the whole program.

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
from .program import Analysis, AnalysisError, AnalysisWarning

__all__ = [
    "Analysis",
    "AnalysisError",
    "AnalysisWarning",
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
