#!/usr/bin/env python3
"""Reads a topology and its trajectories with MDAnalysis and sends them to pathdesk as blocks on standard output.

A block is a tag of 8 ASCII characters, its length as a little-endian 64-bit integer, and that many bytes. In order:

    counts    i64: atoms, bonds, frames that will come (an estimate), 1 if the cell changes
    text      one line for the user, wherever it may stand
    ids       i32, one an atom, distinct and not negative
    names, types, elements, residues    words, one an atom, each ended by a line feed; left out where there are none
    resids    i32, one an atom; left out where there are none
    masses, charges    f64, one an atom; left out where there are none
    bonds     i32 pairs of places from 0; left out where there are none
    series    words: the names of the values of each frame
    frame     f64: time in ps, the cell a, b, c in angstrom and alpha, beta, gamma in degrees (zeros without one), the
              values of each series (NaN where there is none)
    xyz       f32: x, y, z of each atom in angstrom, behind each `frame`
    velocity  f32: the same in angstrom/ps, behind `xyz` of frames that have velocities
    end       empty; or `error`, one line of why there is no more
"""

import argparse
import functools
import os
import struct
import sys
import warnings

from import_files import UNREADABLE, Refused, reader_of, refuse_unfit_files, topology_arguments, trajectory_format, why
from lammps_units import LAMMPS_UNITS, lammps_facts

warnings.showwarning = lambda *_, **__: None  # what a user has to know is told in other words
SYSTEM_PYTHON = "/usr/bin/python3"

try:
    import numpy as np
    import MDAnalysis
    from MDAnalysis.exceptions import NoDataError, SelectionError
    from MDAnalysis.lib.util import anyopen
    from MDAnalysis.coordinates.XDR import XDRBaseReader
    from MDAnalysis.topology import guessers, tables

    # The places of frames in a file are found anew by each run: nothing is left beside files that are only read.
    XDRBaseReader._load_offsets = lambda reader: reader._read_offsets(store=False)
except ImportError:
    MDAnalysis = None
    # The distribution's package belongs to its own interpreter, which need not be the first one of the path.
    if os.path.realpath(sys.executable) != os.path.realpath(SYSTEM_PYTHON) and os.path.exists(SYSTEM_PYTHON):
        os.execv(SYSTEM_PYTHON, [SYSTEM_PYTHON, *sys.argv])


class Sender:
    def __init__(self, stream):
        self.stream = stream

    def block(self, tag, payload=b""):
        self.stream.write(struct.pack("<8sq", tag.encode("ascii").ljust(8), len(payload)))
        self.stream.write(payload)

    def text(self, line):
        self.block("text", line.encode("utf-8", "replace"))

    def array(self, tag, values, kind):
        self.block(tag, np.ascontiguousarray(values, dtype=kind).tobytes())

    def words(self, tag, values):
        self.block(tag, "".join("".join(str(word).split()) + "\n" for word in values).encode("utf-8", "replace"))


# ---- what a topology holds --------------------------------------------------------------------------------------

class Topology:
    """The columns of the chosen atoms; None where the topology has nothing and nothing can be guessed."""

    def __init__(self, atoms, tell):
        self.atoms = atoms
        self.tell = tell
        self.ids = self.distinct_ids()
        self.names = self.column("names")
        self.types = self.column("types")
        self.residues = self.column("resnames")
        self.resids = self.column("resids")
        self.charges = self.column("charges")
        self.masses_are_stated = True
        self.masses = self.known_masses()
        self.elements = self.known_elements()
        self.bonds = self.inner_bonds()
        if set(self.elements) == {"X"}:
            tell("The topology tells no element of any atom: all are X, without masses, charges or bonds of their own;"
                 " name a topology in front of the trajectory, such as tpr, prmtop, psf, data, gro or pdb.")
        elif self.charges is None:
            tell("The topology has no charges: they count as 0, and dipoles mean nothing.")

    def column(self, name):
        try:
            return getattr(self.atoms, name)
        except (NoDataError, AttributeError):
            return None

    def distinct_ids(self):
        ids = self.column("ids")
        if ids is not None:
            ids = np.asarray(ids)
            if ids.min() == 0:
                ids = ids + 1  # places, as where a format has no numbers of its own
            if ids.min() > 0 and ids.max() < 2**31 and len(np.unique(ids)) == len(ids):
                return ids
        return np.arange(1, len(self.atoms) + 1)

    def known_masses(self):
        masses = self.column("masses")
        if masses is None or not np.isfinite(masses).all() or (np.asarray(masses) <= 0).all():
            return None
        if self.guessed("masses"):
            self.masses_are_stated = False
            if len(set(masses)) == 1 and masses[0] == 1:
                return None  # what stands where nothing is known
            self.tell("Masses are guessed from the types and names of atoms.")
        return np.asarray(masses, dtype=float)

    def guessed(self, name):
        attribute = getattr(self.atoms.universe._topology, name, None)
        return bool(getattr(attribute, "_guessed", False))

    def known_elements(self):
        """Symbols; X for what is no element."""
        stated = self.column("elements")
        symbols = [str(word).strip() for word in stated] if stated is not None else [""] * len(self.atoms)
        missing = [k for k, symbol in enumerate(symbols) if not symbol]
        if not missing:
            return symbols
        known_names = [name for name, mass in tables.masses.items() if name.isalpha() and mass > 0]
        by_mass = self.masses is not None and self.masses_are_stated
        guesses, by = {}, set()
        for k in missing:
            key = (self.atom_word(k), float(self.masses[k]) if by_mass else None, self.is_alone(k))
            if key not in guesses:
                guesses[key] = self.guess(key, known_names)
            symbols[k], how = guesses[key]
            by.add(how)
        if all(symbol == "X" for symbol in symbols):
            return symbols
        told = sorted({f"{word} {symbol}" if word else symbol for (word, *_), (symbol, _) in guesses.items()})
        self.tell(f"Elements are guessed from {' and '.join(sorted(by))}: {', '.join(told[:12])}"
                  + (" ..." if len(told) > 12 else ""))
        return symbols

    def atom_word(self, k):
        for column in (self.names, self.types):
            if column is not None and str(column[k]) and not str(column[k]).isdigit():
                return str(column[k])
        return str(self.types[k]) if self.types is not None else ""

    def is_alone(self, k):
        """True for an atom whose residue has its name, as ions and noble gases have."""
        letters = ["".join(filter(str.isalpha, str(word))).upper()
                   for word in (self.atom_word(k), self.residues[k] if self.residues is not None else "")]
        return letters[0] == letters[1]

    @staticmethod
    def guess(key, known_names):
        """The element of an atom: of its mass if that is stated, which leaves no doubt, else of its name, which is a
        symbol as a whole where the atom is alone: CA is calcium there and a carbon elsewhere."""
        word, mass, is_alone = key
        if mass:
            symbol = min(known_names, key=lambda name: abs(tables.masses[name] - mass))
            if abs(tables.masses[symbol] - mass) < 0.02 * mass + 0.05:
                return symbol.capitalize(), "masses"
        letters = "".join(filter(str.isalpha, word))
        if is_alone and letters.upper() in map(str.upper, known_names):
            return letters.capitalize(), "names"
        symbol = guessers.guess_atom_element(word) if word else ""
        return (symbol.capitalize(), "names") if symbol.upper() in map(str.upper, known_names) else ("X", "names")

    def inner_bonds(self):
        try:
            pairs = np.asarray(self.atoms.universe.bonds.indices)
        except (NoDataError, AttributeError):
            return None
        if len(pairs) == 0:
            return None
        place = np.full(len(self.atoms.universe.atoms), -1, dtype=np.int64)
        place[self.atoms.indices] = np.arange(len(self.atoms))
        pairs = place[pairs]
        return np.unique(np.sort(pairs[(pairs >= 0).all(axis=1)], axis=1), axis=0)

    def send(self, sender):
        sender.array("ids", self.ids, "<i4")
        for tag, words in (("names", self.names), ("types", self.types), ("elements", self.elements),
                           ("residues", self.residues)):
            if words is not None:
                sender.words(tag, words)
        for tag, values, kind in (("resids", self.resids, "<i4"), ("masses", self.masses, "<f8"),
                                  ("charges", self.charges, "<f8"), ("bonds", self.bonds, "<i4")):
            if values is not None:
                sender.array(tag, values, kind)


# ---- frames -----------------------------------------------------------------------------------------------------

class Clock:
    """Times in ps of the frames of several files, one after the other, always growing.

    A file that begins again before the end of the one before and goes on behind it repeats some frames, which are
    passed; one that begins at its own zero is moved behind the end of the one before.
    """

    def __init__(self, spacing):
        self.spacing = spacing  # of the user; None: as the files say
        self.last = None
        self.gap = None
        self.shift = 0.0
        self.count = 0

    def begin(self, first, end):
        """Another file, with the times of its first and last frame. @return what there is to tell"""
        self.shift = 0.0
        if self.spacing is not None or self.last is None or first > self.last:
            return None
        if end > self.last:
            return "it begins before the end of the file before: frames that both have are taken once"
        self.shift = self.last + (self.gap or 1.0) - first
        return f"its times begin again: they are moved by {self.shift:g} ps"

    def accept(self, time):
        """@return the time of a frame, or None for one that was there before"""
        time = self.count * self.spacing if self.spacing is not None else time + self.shift
        if self.last is not None and time <= self.last:
            return None
        if self.last is not None:
            self.gap = time - self.last
        self.last = time
        self.count += 1
        return time


class Frames:
    """The chosen frames of all files, in order."""

    def __init__(self, universe, options, facts, tell):
        self.universe = universe
        self.options = options
        self.facts = facts
        self.tell = tell
        self.lammps = False
        self.time_factor = self.velocity_factor = self.length_factor = 1.0
        self.passed = self.without_positions = 0
        self.opened = None
        self.lengths = {}  # of each file, in frames
        self.file_cell = None  # for frames that have none of their own

    def open(self, path):
        if self.opened == path:
            return self.universe.trajectory
        self.opened = path
        if trajectory_format(path, self.options.format) == "LAMMPSDUMP":
            import lammps_dump  # puts its reader in the place of the one of this format
        kind = reader_of(path, self.options.format)
        atoms = len(self.universe.atoms)
        try:
            # Some formats have to be told the number of atoms; NetCDF knows it, and would complain in its own words.
            reader = kind(path, **({} if kind.format[0] == "NCDF" else {"n_atoms": atoms}))
        except UNREADABLE as problem:
            raise Refused(f"{path} cannot be read: {why(problem, path)}")
        if reader.n_atoms != atoms:
            raise Refused(f"{path} has {reader.n_atoms} atoms and {self.options.topology} has {atoms}: both have to be of"
                          " the same atoms")
        self.universe.trajectory = reader
        self.file_cell = cell_of_head(path) if "PDB" in reader.format else None
        if getattr(reader, "format", "") == "LAMMPSDUMP":
            self.use_lammps_units()
        return reader

    def use_lammps_units(self):
        self.lammps = True
        units, self.time_factor = self.lammps_scale()
        self.length_factor = units.length
        self.velocity_factor = units.velocity

    @functools.cache
    def lammps_scale(self):
        """@return the units of LAMMPS, and a time step of it in ps"""
        name = self.options.lammps_units or self.facts.get("units")
        if name is None:
            name = "real"
            self.tell("No file says what units LAMMPS used: they are taken for real (--lammps-units)")
        units = LAMMPS_UNITS.get(name)
        if units is None:
            raise Refused(f"lengths and times of LAMMPS units {name} have no size of their own; scale the files first")
        step = self.options.timestep or self.facts.get("timestep")
        if step is None:
            step = units.default_step
            self.tell(f"No file says how long a time step is: it is taken for {step * units.time:g} ps (--timestep)")
        return units, step * units.time

    def cell(self, ts):
        if ts.dimensions is not None:
            return np.asarray(ts.dimensions, dtype=float)
        return np.zeros(6) if self.file_cell is None else self.file_cell

    def time(self, ts):
        return ts.data["step"] * self.time_factor if self.lammps and "step" in ts.data else ts.time

    def wanted(self, number):
        """True for a frame to be taken; numbers count over all files, from 1."""
        o = self.options
        return number >= o.first and (o.last is None or number <= o.last) and (number - o.first) % o.step == 0

    def first_and_last_of_all(self, paths):
        """@return number of frames in all, and whether the cell changes"""
        cells = []
        for path in paths:
            reader = self.open(path)
            self.lengths[path] = self.whole_frames(reader, path)
            cells += [self.cell(reader[0]), self.cell(reader[self.lengths[path] - 1])]
        total = sum(self.lengths[path] for path in paths)
        end = min(total, self.options.last or total)
        chosen = max(0, (end - self.options.first) // self.options.step + 1)
        return chosen, bool(np.abs(np.diff(cells, axis=0)).max() > 0)

    def whole_frames(self, reader, path):
        """The number of frames; the last one of a run that was stopped may be cut off."""
        length = len(reader)
        for whole in (length, length - 1):
            try:
                if whole > 0 and reader[whole - 1].has_positions is not None:
                    break
            except UNREADABLE as problem:
                trouble = why(problem, path)
        else:
            raise Refused(f"{path}: " + ("no frame is whole" if length < 2 else f"frame {length - 1} cannot be read: {trouble}"))
        if whole < length:
            self.tell(f"{os.path.basename(path)} is cut off in frame {length}: the {whole} before it are taken.")
        return whole

    def __iter__(self):
        clock = Clock(self.options.dt)
        number = 0
        for path in self.options.trajectories:
            reader = self.open(path)
            length = self.lengths[path]
            first, end = self.time(reader[0]), self.time(reader[length - 1])
            told = clock.begin(first, end)
            if told:
                self.tell(f"{os.path.basename(path)}: {told}")
            for ts in self.chosen(reader, path, number, length):
                if not ts.has_positions:
                    self.without_positions += 1
                    continue
                time = clock.accept(self.time(ts))
                if time is None:
                    self.passed += 1
                else:
                    yield time, ts
            number += length

    def chosen(self, reader, path, before, length):
        """The wanted frames of a file before which others have so many."""
        o = self.options
        start = o.first - 1 - before
        if start < 0:
            start = start % o.step
        stop = length if o.last is None else min(length, o.last - before)
        for place in range(start, stop, o.step):
            try:
                ts = reader[place] if place == start or o.step > 1 else reader.next()
            except UNREADABLE as problem:
                raise Refused(f"{path}: frame {place + 1} cannot be read: {why(problem, path)}")
            yield ts


def cell_of_head(path):
    """The cell that stands in front of all models of a PDB file, which MDAnalysis reads from behind `MODEL` on."""
    with anyopen(path, "rt") as file:
        for line in file:
            if line.startswith(("MODEL", "ATOM", "HETATM")):
                return None
            if line.startswith("CRYST1"):
                numbers = np.array([line[at:end] for at, end in ((6, 15), (15, 24), (24, 33), (33, 40), (40, 47), (47, 54))], dtype=float)
                return None if (numbers[:3] == 1).all() else numbers  # one angstrom stands for no cell
    return None


def send_frames(sender, frames, atoms, columns):
    everything = len(atoms) == len(atoms.universe.atoms)
    chosen = slice(None) if everything else atoms.indices
    lengths = np.array([1.0, 1.0, 1.0, 0.0, 0.0, 0.0]) * frames.length_factor + np.array([0, 0, 0, 1.0, 1.0, 1.0])
    for time, ts in frames:
        head = np.concatenate(([time], frames.cell(ts) * lengths, columns.at(time)))
        sender.array("frame", head, "<f8")
        positions = ts.positions[chosen]
        sender.array("xyz", positions if frames.length_factor == 1 else positions * frames.length_factor, "<f4")
        if ts.has_velocities:
            velocities = ts.velocities[chosen]
            if frames.velocity_factor != 1:
                velocities = velocities.astype(np.float64) * frames.velocity_factor
            sender.array("velocity", velocities, "<f4")
    if frames.passed:
        frames.tell(f"{frames.passed} frames that two files have are taken once.")
    if frames.without_positions:
        frames.tell(f"{frames.without_positions} frames have no positions and are left out.")


class NoColumns:
    """Series of a run without a log."""

    names = ()

    @staticmethod
    def at(_time):
        return np.empty(0)

    @staticmethod
    def tell_rest(_tell):
        pass


# ---- the whole --------------------------------------------------------------------------------------------------

def arguments():
    parser = argparse.ArgumentParser(allow_abbrev=False)
    parser.add_argument("topology")
    parser.add_argument("trajectories", nargs="*")
    parser.add_argument("--format")
    parser.add_argument("--topology-format")
    parser.add_argument("--select")
    parser.add_argument("--first", type=int, default=1)
    parser.add_argument("--last", type=int)
    parser.add_argument("--step", type=int, default=1)
    parser.add_argument("--dt", type=float)
    parser.add_argument("--timestep", type=float)
    parser.add_argument("--lammps-units")
    parser.add_argument("--energies")
    parser.add_argument("--energy-units")
    return parser.parse_args()


def choose_atoms(universe, selection, tell):
    if not selection:
        return universe.atoms
    try:
        atoms = universe.select_atoms(selection)
    except (SelectionError, ValueError, AttributeError) as problem:
        raise Refused(f"--select {selection}: {problem}")
    if len(atoms) == 0:
        raise Refused(f"--select {selection}: no atom is meant")
    tell(f"{len(atoms)} of {len(universe.atoms)} atoms are taken.")
    return atoms


def send_all(sender, options):
    if MDAnalysis is None:
        raise Refused("MDAnalysis is missing; install the package python3-mdanalysis")
    facts = {}
    for path in (options.topology, options.energies):
        if path:
            facts.update(lammps_facts(path))
    refuse_unfit_files(options)
    try:
        universe = MDAnalysis.Universe(options.topology, **topology_arguments(options.topology, options.topology_format))
    except UNREADABLE as problem:
        raise Refused(f"{options.topology} cannot be read: {why(problem, options.topology)}")
    if not options.trajectories:
        options.trajectories = [options.topology]
    atoms = choose_atoms(universe, options.select, sender.text)
    frames = Frames(universe, options, facts, sender.text)
    count, changes = frames.first_and_last_of_all(options.trajectories)
    columns = NoColumns()
    if options.energies:
        from energy_series import read_energies
        try:
            columns = read_energies(options.energies, options.energy_units, frames.lammps_scale)
        except UNREADABLE as problem:
            raise Refused(f"{options.energies} cannot be read as energies: {why(problem, options.energies)}")
    topology = Topology(atoms, sender.text)
    sender.array("counts", [len(atoms), 0 if topology.bonds is None else len(topology.bonds), count, changes], "<i8")
    topology.send(sender)
    sender.words("series", columns.names)
    send_frames(sender, frames, atoms, columns)
    columns.tell_rest(sender.text)
    sender.block("end")


def main():
    options = arguments()
    sender = Sender(os.fdopen(os.dup(1), "wb", buffering=1 << 20))
    os.dup2(2, 1)  # what libraries print is no part of the blocks
    try:
        send_all(sender, options)
    except (BrokenPipeError, KeyboardInterrupt):
        os._exit(1)  # nobody listens any more
    except Exception as problem:  # whatever a file brings about becomes one line
        line = str(problem) if isinstance(problem, Refused) else f"{type(problem).__name__}: {problem}"
        sender.block("error", " ".join(line.split()).encode("utf-8", "replace"))
    try:
        sender.stream.flush()
    except BrokenPipeError:
        os._exit(1)
    return 0


if __name__ == "__main__":
    sys.exit(main())
