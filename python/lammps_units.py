"""What LAMMPS files mean by their numbers."""

import re
from dataclasses import dataclass


@dataclass(frozen=True)
class Units:
    """Factors from a unit style to angstrom, ps, angstrom/ps, kcal/mol and GPa, and the default time step in its unit."""
    length: float
    time: float
    velocity: float
    energy: float
    pressure: float
    default_step: float


KCAL_PER_EV = 23.060547830619
ATM = 1.01325e-4  # GPa
BAR = 1e-4

# Source: the LAMMPS manual, command `units`. The style lj has no sizes.
LAMMPS_UNITS = {
    "real": Units(1, 1e-3, 1e3, 1, ATM, 1.0),
    "metal": Units(1, 1, 1, KCAL_PER_EV, BAR, 0.001),
    "electron": Units(0.529177210903, 1e-3, 0.529177210903 / 1.03275e-3, 627.509474063, 1e-9, 0.001),
    "nano": Units(10, 1e3, 1e-2, 143.932642, 1e-3, 0.00045),
    "si": Units(1e10, 1e12, 1e-2, 1.43932642e20, 1e-9, 1e-8),
    "cgs": Units(1e8, 1e12, 1e-4, 1.43932642e13, 1e-10, 1e-8),
}

# What the comment behind `Atoms` calls the columns.
ATOM_STYLES = {
    "full": "id resid type charge x y z",
    "molecular": "id resid type x y z",
    "bond": "id resid type x y z",
    "angle": "id resid type x y z",
    "charge": "id type charge x y z",
    "atomic": "id type x y z",
}

HEAD_LINES = 4000


def lammps_facts(path):
    """What a LAMMPS data file, log or input says of units, time step and columns: `units`, `timestep`, `atom_style`."""
    facts = {}
    try:
        with open(path, encoding="latin-1") as file:
            first = file.readline()
            log = first.startswith("LAMMPS (")
            data = first.startswith("LAMMPS") and not log
            if data and (found := re.search(r"units = (\w+)", first)):
                facts["units"] = found.group(1)
            for number, line in enumerate(file):
                if data and number > HEAD_LINES and "Atoms" not in line:
                    continue
                words = line.split()
                if log and len(words) == 2 and words[0] in ("units", "timestep"):
                    facts[words[0]] = float(words[1]) if words[0] == "timestep" else words[1]
                elif words[:1] == ["Atoms"]:
                    if len(words) == 3 and words[1] == "#" and words[2] in ATOM_STYLES:
                        facts["atom_style"] = ATOM_STYLES[words[2]]
                    break
    except (OSError, ValueError):
        pass
    return facts
