"""Energies, temperatures and pressures of a run's log, by the time of each row."""

import csv
import os
import re
import shutil
import subprocess
import tempfile

import numpy as np

from lammps_units import BAR, KCAL_PER_EV

ENERGY_UNITS = {"kcal/mol": 1.0, "kJ/mol": 1 / 4.184, "eV": KCAL_PER_EV}
# Factors of units that a heading may have behind its name, to kcal/mol, GPa, K, A^3.
HEADING_UNITS = {**ENERGY_UNITS, "GPa": 1.0, "MPa": 1e-3, "bar": BAR, "atm": 1.01325e-4, "Pa": 1e-9, "K": 1.0, "nm^3": 1e3,
                 "A^3": 1.0, "Å^3": 1.0, "Å³": 1.0, "ps": 1.0, "fs": 1e-3, "ns": 1e3}
ENERGIES = {"total", "potential", "kinetic", "bond", "angle", "torsion", "inversion", "vdw", "coulomb", "nonbond", "valence"}

# What programs call a series; letters and digits alone count.
NAMES = {
    "step": ("step", "steps"), "time": ("time", "timeps", "t"),
    "total": ("totaleng", "toteng", "etotal", "totalenergy", "total", "totenergy"),
    "potential": ("poteng", "pe", "potential", "potentialenergy", "epot", "epotential"),
    "kinetic": ("kineng", "ke", "kinetic", "kineticen", "kineticenergy", "ekin", "ekinetic"),
    "temperature": ("temp", "temperature", "t_k"),
    "pressure": ("press", "pressure", "pres"), "volume": ("vol", "volume"),
    "bond": ("ebond", "bond"), "angle": ("eangle", "angle"), "torsion": ("edihed", "properdih", "dihedral", "torsion"),
    "inversion": ("eimp", "improperdih", "improper", "inversion"),
    "vdw": ("evdwl", "vdw", "vanderwaals"), "coulomb": ("coulombenergy", "coulomb", "elec"),
    "valence": ("emol",), "nonbond": ("epair",),
    "pressure_xx": ("pxx", "presxx"), "pressure_yy": ("pyy", "presyy"), "pressure_zz": ("pzz", "preszz"),
    "pressure_yz": ("pyz", "presyz"), "pressure_xz": ("pxz", "presxz"), "pressure_xy": ("pxy", "presxy"),
    # Parts that add up to one series.
    "coulomb_part": ("ecoul", "elong", "coulombsr", "coulrecip", "coulomb14"), "vdw_part": ("ljsr", "lj14", "dispercorr"),
}
KNOWN = {word: name for name, words in NAMES.items() for word in words}


def known_name(heading):
    return KNOWN.get(re.sub(r"[^a-z0-9]", "", heading.lower()))


class Columns:
    """Series of a log, looked up by the time of a frame."""

    def __init__(self, table, source):
        times = table.pop("time")
        order = np.unique(times, return_index=True)[1]
        self.times = times[order]
        self.names = tuple(table)
        self.rows = np.stack([table[name][order] for name in self.names], axis=1)
        self.used = np.zeros(len(self.times), dtype=bool)
        self.unmatched = 0
        self.frames = 0
        self.source = source
        gaps = np.diff(self.times)
        self.near = min(1e-3, 0.1 * gaps.min()) if len(gaps) else 1e-3

    def at(self, time):
        self.frames += 1
        place = int(np.searchsorted(self.times, time))
        best = min((k for k in (place - 1, place) if 0 <= k < len(self.times)), key=lambda k: abs(self.times[k] - time))
        if abs(self.times[best] - time) > max(self.near, 1e-6 * abs(time)):
            self.unmatched += 1
            return np.full(len(self.names), np.nan)
        self.used[best] = True
        return self.rows[best]

    def tell_rest(self, tell):
        name = os.path.basename(self.source)
        tell(f"{name}: {', '.join(self.names)} of {self.frames - self.unmatched} of {self.frames} frames, by their times.")
        if self.unmatched:
            tell(f"{name}: {self.unmatched} frames have no row of their time; they have no such values.")
        if not self.used.all():
            tell(f"{name}: {(~self.used).sum()} of {len(self.used)} rows match no frame.")


def gathered(headings, rows, scale):
    """Columns by our names; parts of one series are added. @param scale(name, heading) the factor of a column"""
    table = {}
    for heading, values in zip(headings, np.array(rows, dtype=float).T):
        name = known_name(heading) or known_name(re.split(r"[(\[/]", heading)[0])
        if name is None:
            continue
        values = values * scale(name.removesuffix("_part"), heading)
        if name.endswith("_part"):
            name = name.removesuffix("_part")
            table[name] = table.get(name, 0) + values
        else:
            table.setdefault(name, values)
    return table


def thermo_sections(lines):
    """The names and rows of each section of a LAMMPS log: tables, blocks of `name = value` behind each step (thermo_style
    multi), and lists (thermo_style yaml)."""
    sections, headings, rows, block = [], None, [], None
    for line in lines:
        words = line.split()
        if words[:1] == ["keywords:"]:
            words = line.split(":", 1)[1].strip(" []\n").replace(",", " ").replace("'", " ").replace('"', " ").split()
        elif line.lstrip().startswith("- [") and headings:
            words = line.strip(" -[]\n").rstrip(",]").replace(",", " ").split()
        if found := re.match(r"-+ Step\s+(\d+) -", line):
            block = {"Step": found.group(1)}
            sections.append((block, block))
            headings = None
        elif block is not None and (pairs := re.findall(r"(\S+)\s*=\s*(\S+)", line)):
            block.update(pairs)
        elif {"Step", "Time"} & set(words) and len(words) > 1 and all(re.fullmatch(r"[A-Za-z]\S*", word) for word in words):
            headings, rows, block = words, [], None
            sections.append((headings, rows))
        elif headings and (numbers := numbers_of(words)) and len(numbers) == len(headings):
            rows.append(numbers)
        elif words and not words[0].startswith(("WARNING", "data:")):
            headings = block = None
    return joined_blocks(sections)


def numbers_of(words):
    try:
        return [float(word) for word in words]
    except ValueError:
        return []


def joined_blocks(sections):
    """Blocks of one step each that follow one another become one section, if they have the same names."""
    joined = []
    for names, rows in sections:
        if isinstance(names, dict):
            numbers = numbers_of(names.values())
            if not numbers:  # a value that is no number
                continue
            if joined and joined[-1][0] == list(names) and joined[-1][1] and joined[-1][1][-1][0] < numbers[0]:
                joined[-1][1].append(numbers)
                continue
            names, rows = list(names), [numbers]
        joined.append((names, rows))
    return joined


def read_lammps(path, units, time_factor, energy):
    """All sections of a log. One that begins again at an earlier step takes the place of what stood behind that step."""
    factors = {"pressure": units.pressure, "volume": units.length ** 3, "temperature": 1.0, "step": 1.0, "time": units.time}

    def scale(name, _heading):
        return factors["pressure"] if name.startswith("pressure") else energy if name in ENERGIES else factors[name]

    with open(path, encoding="latin-1") as file:
        sections = thermo_sections(file)
    tables = [gathered(headings, rows, scale) for headings, rows in sections if rows]
    for table in tables:
        if "step" not in table:
            table["step"] = table["time"] / time_factor
    for later in range(1, len(tables)):
        for table in tables[:later]:
            keep = table["step"] < tables[later]["step"][0]
            for name in table:
                table[name] = table[name][keep]
    tables = [table for table in tables if len(table["step"])]
    names = [name for name in dict.fromkeys(name for table in tables for name in table) if name not in ("step", "time")]
    joined = {name: np.concatenate([table.get(name, np.full(len(table["step"]), np.nan)) for table in tables]) for name in names}
    joined["time"] = np.concatenate([table["step"] for table in tables]) * time_factor if tables else np.empty(0)
    return joined


def read_xvg(path, energy):
    headings, rows = {}, []
    time_unit = 1.0
    with open(path, encoding="latin-1") as file:
        for line in file:
            if line.startswith("@"):
                if found := re.match(r'@\s+s(\d+)\s+legend\s+"(.*)"', line):
                    headings[int(found.group(1))] = found.group(2)
                elif re.match(r"@\s+xaxis", line) and "(ns)" in line:
                    time_unit = 1e3
            elif not line.startswith(("#", "&")) and line.strip():
                rows.append([float(word) for word in line.split()])
    energy = energy if energy else ENERGY_UNITS["kJ/mol"]

    def scale(name, _heading):
        if name == "time":
            return time_unit
        return energy if name in ENERGIES else 1.0 if name == "temperature" else 1e3 if name == "volume" else BAR
    return gathered(["time", *(headings.get(k, "") for k in range(len(headings)))], rows, scale)


def read_edr(path, energy):
    """Through gmx, where it is."""
    gmx = shutil.which("gmx")
    if not gmx:
        raise ValueError("gmx is not there to read .edr; give the .xvg that gmx energy makes of it")
    with tempfile.TemporaryDirectory() as folder:
        out = os.path.join(folder, "energy.xvg")
        terms = "\n".join(str(k) for k in range(1, 100)) + "\n\n"
        subprocess.run([gmx, "energy", "-f", path, "-o", out], input=terms, text=True, capture_output=True, check=True)
        return read_xvg(out, energy)


def read_csv(path, lammps_scale, energy):
    with open(path, encoding="utf-8-sig", newline="") as file:
        lines = [line for line in file if line.strip()]
    plain = [line for line in lines if not line.startswith("#")]
    mark = next((mark for mark in ",;\t" if plain and mark in plain[0]), ",")
    rows = list(csv.reader(plain, delimiter=mark))
    if rows and numbers_of(rows[0]):  # the names stand in the last of the comments
        names = [line.lstrip("# ") for line in lines if line.startswith("#")][-1:]
        rows = [*csv.reader(names, delimiter=mark), *rows]
    headings = [word.strip() for word in rows[0]]

    def scale(name, heading):
        unit = re.search(r"[(\[/]\s*([^)\]]+?)\s*[)\]]?$", heading)
        if unit and unit.group(1) in HEADING_UNITS:
            return HEADING_UNITS[unit.group(1)]
        return energy or 1.0 if name in ENERGIES else 1.0
    table = gathered(headings, [row for row in rows[1:] if len(row) == len(headings)], scale)
    if "time" not in table and "step" in table:
        table["time"] = table["step"] * lammps_scale()[1]
    table.pop("step", None)
    return table


def read_energies(path, asked_units, lammps_scale):
    """@param lammps_scale() units of LAMMPS and its time step in ps, for files that have steps and no times"""
    energy = ENERGY_UNITS[asked_units] if asked_units else None
    end = os.path.splitext(path)[1].lower()
    if end == ".xvg":
        table = read_xvg(path, energy)
    elif end == ".edr":
        table = read_edr(path, energy)
    elif end == ".csv":
        table = read_csv(path, lammps_scale, energy)
    else:
        units, step = lammps_scale()
        table = read_lammps(path, units, step, energy or units.energy)
    if "time" not in table or len(table["time"]) == 0 or len(table) == 1:
        raise ValueError("it has no rows of energies with a time or a step")
    return Columns(table, path)
