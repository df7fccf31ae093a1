"""What the files are that a user gave, by the readers that MDAnalysis has for them, and what is wrong with them in one line."""

import os
import shlex

from lammps_units import lammps_facts


class Refused(Exception):
    """What the user asked for cannot be done; the text says why."""


# Endings that MDAnalysis knows under another name.
TRAJECTORY_ENDINGS = {".dump": "LAMMPSDUMP", ".lammpstrj": "LAMMPSDUMP", ".nc": "NCDF"}
# Files of numbers by time, which are neither atoms nor coordinates.
ENERGY_ENDINGS = (".log", ".edr", ".xvg", ".csv")
# What the readers and parsers of MDAnalysis raise on a file that they do not understand.
UNREADABLE = (OSError, EOFError, ValueError, TypeError, NotImplementedError, LookupError, ArithmeticError, AttributeError,
              StopIteration, RuntimeError, AssertionError)


def first_line(path):
    from MDAnalysis.lib.util import anyopen
    try:
        with anyopen(path, "rb") as file:
            return file.read(256).split(b"\n")[0].decode("latin-1").strip()
    except (OSError, EOFError) as problem:
        if os.path.exists(path) and os.path.getsize(path) == 0:
            raise Refused(f"{path} is an empty file")
        raise Refused(f"{path} cannot be read: {getattr(problem, 'strerror', None) or problem}")


def ending(path):
    root, end = os.path.splitext(path)
    return (os.path.splitext(root)[1] if end.lower() in (".gz", ".bz2") else end).lower()


def trajectory_format(path, asked):
    if asked:
        return asked
    if first_line(path).startswith("ITEM:"):
        return "LAMMPSDUMP"
    return TRAJECTORY_ENDINGS.get(ending(path))


def topology_arguments(path, asked):
    """What MDAnalysis has to be told of a topology: the columns of a LAMMPS data file stand in a comment that it passes."""
    arguments = {"topology_format": asked} if asked else {}
    kind = asked or ending(path)
    if kind in (".data", "DATA", ".lmp", ".lammps"):
        arguments["topology_format"] = "DATA"
        style = lammps_facts(path).get("atom_style")
        if style:
            arguments["atom_style"] = style
    elif not asked and first_line(path).startswith("ITEM:"):
        arguments["topology_format"] = "LAMMPSDUMP"
    elif kind == ".top" and not first_line(path).startswith("%"):
        arguments["topology_format"] = "ITP"  # of GROMACS; those of Amber begin with %VERSION
    return arguments


# ---- readers of MDAnalysis --------------------------------------------------------------------------------------

def reader_of(path, asked):
    """The class that reads the coordinates of a file, or None."""
    from MDAnalysis.core._get_readers import get_reader_for
    try:
        return get_reader_for(path, format=trajectory_format(path, asked))
    except ValueError:
        return None


def names_atoms(path, asked=None):
    """True for a file of which MDAnalysis reads more of the atoms than how many there are."""
    from MDAnalysis.core._get_readers import get_parser_for
    from MDAnalysis.topology.MinimalParser import MinimalParser
    try:
        parser = get_parser_for(path, format=topology_arguments(path, asked).get("topology_format"))
    except ValueError:
        return False
    return parser is not MinimalParser and getattr(parser, "format", "") != "LAMMPSDUMP"


def holds_energies(path):
    return ending(path) in ENERGY_ENDINGS or first_line(path).startswith("LAMMPS (")


# ---- what is wrong ----------------------------------------------------------------------------------------------

def why(problem, path):
    """What a library says of a file, in one short line without the name of the file."""
    most = 160
    if isinstance(problem, (StopIteration, EOFError)):
        return "it ends too early"
    line = " ".join(str(problem).replace(path, "the file").split()) or type(problem).__name__
    return line if len(line) <= most else line[:most].rsplit(" ", 1)[0] + " ..."


def refuse_unfit_files(options):
    """Refuses what cannot be a topology or a trajectory, and files in the wrong order."""
    topology, trajectories = options.topology, options.trajectories
    if options.topology_format is None:
        known = names_atoms(topology) or reader_of(topology, None)
        if not known and holds_energies(topology):
            raise Refused(f"{topology} holds energies and no atoms: name the topology first, and this file behind --energies")
        if not known:
            raise Refused(f"{topology} is of no kind that MDAnalysis reads atoms from; --topology-format tells one that it"
                          " does not know by its ending")
        meant = [path for path in trajectories if names_atoms(path)]
        if meant and not names_atoms(topology):
            others = [path for path in (topology, *trajectories) if path != meant[0]]
            raise Refused(f"the topology comes first: import {shlex.join([meant[0], *others])}")
    for path in trajectories or [topology]:
        if reader_of(path, options.format):
            continue
        if not trajectories:
            raise Refused(f"{path} holds no coordinates: name its trajectory behind it")
        if names_atoms(path):
            raise Refused(f"{path} holds atoms and no coordinates: a trajectory belongs in its place")
        if holds_energies(path):
            raise Refused(f"{path} holds energies and no coordinates: name it behind --energies")
        raise Refused(f"{path} is of no kind that MDAnalysis reads coordinates from; --trajectory-format tells one that it"
                      " does not know by its ending")
