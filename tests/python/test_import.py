"""Runs of other programs come in as their files have them: against MDAnalysis where it reads plain numbers, and against walks
whose every step is known."""

import bz2
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

from imported import Imported, Refused, pathdesk  # first: it finds the right interpreter

import MDAnalysis
import numpy as np
from MDAnalysis.analysis.rdf import InterRDF
from MDAnalysis.lib.mdamath import triclinic_box, triclinic_vectors

EXAMPLES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "examples")
GROMACS = os.path.join(EXAMPLES, "gromacs", "water.")
LAMMPS = os.path.join(EXAMPLES, "lammps", "water")
KCAL = 1 / 418.4  # of one amu A^2/ps^2


def turned(cell):
    """The rotation that takes a cell (rows) into one with c on z and b in the yz plane."""
    z = cell[2] / np.linalg.norm(cell[2])
    x = np.cross(cell[1], cell[2])
    x /= np.linalg.norm(x)
    return np.array([x, np.cross(z, x), z])


def nearest(difference, cell):
    """The shortest image, by trying all that can be."""
    steps = np.array(np.meshgrid(*3 * [[-1, 0, 1]])).reshape(3, -1).T @ cell
    rounded = difference - np.round(difference @ np.linalg.inv(cell)) @ cell
    images = rounded[..., None, :] + steps
    best = np.argmin((images ** 2).sum(-1), axis=-1)
    return np.take_along_axis(images, best[..., None, None], axis=-2)[..., 0, :]


class Walk:
    """Rigid molecules of three atoms that walk at random in a cell that changes, each atom wrapped by itself."""

    def __init__(self, cells, molecules=20, seed=1):
        random = np.random.default_rng(seed)
        self.cells = np.array(cells)
        frames, atoms = len(cells), 3 * molecules
        offsets = np.array([[0, 0, 0], [0.76, 0.59, 0], [-0.76, 0.59, 0]])
        wrapped = random.random((molecules, 3)) @ self.cells[0]
        place = wrapped.copy()
        self.true = np.empty((frames, atoms, 3))
        self.wrapped = np.empty((frames, atoms, 3))
        for k, cell in enumerate(self.cells):
            if k > 0:
                step = random.normal(0, 0.8, (molecules, 3))
                place, wrapped = place + step, self.wrap(wrapped + step, cell)
            # The whole molecule stands at its first atom, as that is seen in the cell, and where that went.
            self.true[k] = (place[:, None] + offsets).reshape(-1, 3)
            self.wrapped[k] = self.wrap((wrapped[:, None] + offsets).reshape(-1, 3), cell)
        self.velocities = random.normal(0, 3, self.true.shape)
        self.universe = MDAnalysis.Universe.empty(atoms, n_residues=molecules, atom_resindex=np.arange(atoms) // 3,
                                                  trajectory=True, velocities=True)
        for name, values in (("names", ["OW", "HW1", "HW2"] * molecules), ("types", ["O", "H", "H"] * molecules),
                             ("resnames", ["SOL"] * molecules), ("resids", np.arange(1, molecules + 1)),
                             ("masses", [15.9994, 1.008, 1.008] * molecules), ("charges", [-0.8, 0.4, 0.4] * molecules),
                             ("elements", ["O", "H", "H"] * molecules)):
            self.universe.add_TopologyAttr(name, values)
        self.universe.add_TopologyAttr("bonds", [(3 * k, 3 * k + h) for k in range(molecules) for h in (1, 2)])

    @staticmethod
    def wrap(places, cell):
        fractions = places @ np.linalg.inv(cell)
        return (fractions - np.floor(fractions)) @ cell

    def write(self, path, **options):
        ts = self.universe.trajectory.ts
        options |= {"dcd": {"dt": 0.5}, "nc": {"velocities": True}}.get(path.rsplit(".", 1)[1], {})
        with MDAnalysis.Writer(path, n_atoms=len(self.universe.atoms), **options) as writer:
            for k, cell in enumerate(self.cells):
                ts.positions, ts.velocities, ts.dimensions = self.wrapped[k], self.velocities[k], triclinic_box(*cell)
                ts.time, ts.frame = 0.5 * k, k
                ts.data["step"] = 500 * k
                writer.write(self.universe)

    def write_topology(self, path):
        ts = self.universe.trajectory.ts
        ts.positions, ts.dimensions = self.wrapped[0], triclinic_box(*self.cells[0])
        self.universe.atoms.write(path)


def breathing(box, frames=60):
    """Cells of a run at constant pressure: lengths in which the size wavers."""
    base = triclinic_vectors(np.array(box, dtype=float)).astype(float)
    return [base * (1 + 0.02 * np.sin(0.7 * k)) for k in range(frames)]


BOXES = {"orthorhombic": [14, 15, 16, 90, 90, 90], "triclinic": [15, 16, 17, 75, 80, 65],
         "octahedron": [16, 16, 16, 70.53, 109.47, 70.53]}


class Case(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.folder = holder.name

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, text):
        """@return the path of a file of this text"""
        with open(self.path(name), "w", encoding="utf-8") as file:
            file.write(text)
        return self.path(name)

    def goes_well(self, code, told, trouble):
        self.assertEqual((code, trouble), (0, ""), told + trouble)
        return told


class Walks(Case):
    """Formats that MDAnalysis can write, in cells that change."""

    formats = {"dcd": (1e-3, False), "xtc": (1.5e-2, False), "trr": (1e-3, True), "nc": (1e-3, True)}

    def check(self, run, walk, tolerance, velocities):
        turns = [turned(cell) for cell in walk.cells]
        for k, (cell, turn) in enumerate(zip(walk.cells, turns)):
            np.testing.assert_allclose(run.cells[k], cell @ turn.T, atol=2e-3)
            moved = (run.xyz[k] @ turn) - (run.xyz[0] @ turns[0])
            # Every atom of the toroidal view, by its definition.
            np.testing.assert_allclose(moved, walk.true[k] - walk.true[0], atol=tolerance, err_msg=f"frame {k}")
            if velocities:
                np.testing.assert_allclose(run.velocities[k] @ turn, walk.velocities[k], atol=2e-3)
        whole = run.xyz.reshape(len(run.xyz), -1, 3, 3)
        lengths = np.linalg.norm(whole[:, :, 1:] - whole[:, :, :1], axis=-1)
        np.testing.assert_allclose(lengths, np.hypot(0.76, 0.59), atol=2 * tolerance)
        self.assertEqual(len(run.velocities), len(walk.cells) if velocities else 0)
        np.testing.assert_allclose(run.value("volume"), [np.linalg.det(cell) for cell in walk.cells], rtol=1e-4)

    def test_walks_are_followed_out_of_any_cell_in_any_format(self):
        pairs = (("orthorhombic", "xtc"), ("triclinic", "dcd"), ("triclinic", "nc"), ("octahedron", "trr"))
        for shape, ending in pairs:
            with self.subTest(shape=shape, format=ending):
                walk = Walk(breathing(BOXES[shape]))
                walk.write_topology(self.path("top.pdb"))
                walk.write(self.path("walk." + ending))
                run = Imported(self.folder, self.path("top.pdb"), self.path("walk." + ending))
                self.check(run, walk, *self.formats[ending])
                np.testing.assert_allclose(run.times, 0.5 * np.arange(len(walk.cells)), atol=1e-4)

    def full_topologies(self, walk):
        """Files of atoms, charges and bonds as the programs that read them write them, for waters in the order O, H, H."""
        waters = len(walk.true[0]) // 3
        atoms = range(3 * waters)
        bonds = [(3 * k, 3 * k + h) for k in range(waters) for h in (1, 2)]

        def section(flag, form, values, width, per_line):
            cells = [f"{value:{width}}" for value in values]
            lines = ["".join(cells[k:k + per_line]) for k in range(0, len(cells), per_line)] or [""]
            return [f"%FLAG {flag}", f"%FORMAT({form})", *lines]

        pointers = [3 * waters, 2, 2 * waters] + 8 * [0] + [waters] + [0] * 19
        prmtop = ["%VERSION  VERSION_STAMP = V0001.000  DATE = 01/01/26  00:00:00",
                  *section("TITLE", "20a4", ["waters"], "<4", 20), *section("POINTERS", "10I8", pointers, "8d", 10),
                  *section("ATOM_NAME", "20a4", ["O", "H1", "H2"] * waters, "<4", 20),
                  *section("CHARGE", "5E16.8", [-0.8 * 18.2223, 0.4 * 18.2223, 0.4 * 18.2223] * waters, "16.8E", 5),
                  *section("ATOMIC_NUMBER", "10I8", [8, 1, 1] * waters, "8d", 10),
                  *section("MASS", "5E16.8", [15.9994, 1.008, 1.008] * waters, "16.8E", 5),
                  *section("ATOM_TYPE_INDEX", "10I8", [1, 2, 2] * waters, "8d", 10),
                  *section("RESIDUE_LABEL", "20a4", ["WAT"] * waters, "<4", 20),
                  *section("RESIDUE_POINTER", "10I8", range(1, 3 * waters, 3), "8d", 10),
                  *section("BONDS_INC_HYDROGEN", "10I8", [n for a, b in bonds for n in (3 * a, 3 * b, 1)], "8d", 10),
                  *(line for flag in ("BONDS_WITHOUT", "ANGLES_INC", "ANGLES_WITHOUT", "DIHEDRALS_INC", "DIHEDRALS_WITHOUT")
                    for line in section(flag + "_HYDROGEN", "10I8", [], "8d", 10)),
                  *section("AMBER_ATOM_TYPE", "20a4", ["OW", "HW", "HW"] * waters, "<4", 20)]
        kinds = (("OW", "OT", -0.8, 15.9994), ("HW1", "HT", 0.4, 1.008), ("HW2", "HT", 0.4, 1.008))
        psf = ["PSF", "", "       1 !NTITLE", " REMARKS waters", "", f"{3 * waters:8d} !NATOM"]
        for k in atoms:
            name, kind, charge, mass = kinds[k % 3]
            psf.append(f"{k + 1:8d} WAT  {k // 3 + 1:<4d} TIP3 {name:<4s} {kind:<4s} {charge:10.6f}     {mass:9.4f}           0")
        psf += ["", f"{len(bonds):8d} !NBOND: bonds"]
        psf += ["".join(f"{n + 1:8d}" for bond in bonds[k:k + 4] for n in bond) for k in range(0, len(bonds), 4)]
        data = ["LAMMPS data file via write_data, version 2 Aug 2023, timestep = 0, units = metal", "", f"{3 * waters} atoms",
                "2 atom types", f"{len(bonds)} bonds", "1 bond types", ""]
        a, b, c = walk.cells[0]
        data += [f"0 {a[0]} xlo xhi", f"0 {b[1]} ylo yhi", f"0 {c[2]} zlo zhi", f"{b[0]} {c[0]} {c[1]} xy xz yz", "", "Masses",
                 "", "1 15.9994", "2 1.008", "", "Atoms # full", ""]
        data += [f"{k + 1} {k // 3 + 1} {1 if k % 3 == 0 else 2} {kinds[k % 3][2]} {x} {y} {z} 0 0 0"
                 for k, (x, y, z) in sorted(enumerate(walk.wrapped[0]), key=lambda row: (row[0] * 37) % 61)]
        data += ["", "Bonds", "", *(f"{n + 1} 1 {a + 1} {b + 1}" for n, (a, b) in enumerate(bonds))]
        for ending, lines in (("prmtop", prmtop), ("psf", psf), ("data", data)):
            self.write("top." + ending, "\n".join(lines) + "\n")
        return bonds

    def test_topologies_give_their_elements_masses_charges_and_bonds(self):
        walk = Walk(breathing(BOXES["triclinic"], 12))
        bonds = self.full_topologies(walk)
        for ending in ("nc", "dcd", "trr"):
            walk.write(self.path("walk." + ending))
        for top, ending, residue in (("prmtop", "nc", "WAT"), ("psf", "dcd", "TIP3"), ("data", "trr", None)):
            with self.subTest(topology=top):
                run = Imported(self.folder, self.path("top." + top), self.path("walk." + ending))
                self.check(run, walk, *self.formats[ending])
                self.assertEqual(run.model["Element"], ["O", "H", "H"] * 20)
                np.testing.assert_allclose(run.model["Charge"], [-0.8, 0.4, 0.4] * 20, atol=1e-6)
                np.testing.assert_allclose(run.model["Mass"], [15.9994, 1.008, 1.008] * 20, atol=1e-4)
                self.assertEqual({*map(tuple, np.sort(run.model["Bond"].reshape(-1, 2) - 1, axis=1))}, set(bonds))
                self.assertNotIn("Masses are guessed", run.told)
                self.assertNotIn("by distance", run.told)
                if residue:
                    self.assertEqual(set(run.model["Residue"]), {residue})

    def test_dumps_in_any_convention_and_order_are_followed(self):
        """Cells that tilt, and whose origin wanders, as at constant pressure; rows stand as the processors had them."""
        walk = Walk(breathing(BOXES["triclinic"], 20))
        self.full_topologies(walk)
        random = np.random.default_rng(2)
        origins = random.normal(0, 0.3, (20, 3)).cumsum(axis=0)
        fractions = walk.wrapped @ np.linalg.inv(walk.cells)
        images = np.round((walk.true - walk.wrapped) @ np.linalg.inv(walk.cells))
        self.assertTrue(images.any())
        columns = {"x y z": walk.wrapped + origins[:, None], "xs ys zs": fractions, "xsu ysu zsu": fractions + images,
                   "xu yu zu": walk.wrapped + images @ walk.cells + origins[:, None]}
        # In the cell, the walk is that of the toroidal view, with its origin; places that are unwrapped already stay.
        moving = walk.true + origins[:, None]
        for names, places in columns.items():
            expected = columns["xu yu zu"] if "u" in names else moving
            with self.subTest(names):
                with open(self.path("walk.dump"), "w", encoding="ascii") as file:
                    for k, cell in enumerate(walk.cells):
                        (lx, _, _), (xy, ly, _), (xz, yz, lz) = cell
                        low = origins[k] + [min(0, xy, xz, xy + xz), min(0, yz), 0]
                        high = origins[k] + [lx + max(0, xy, xz, xy + xz), ly + max(0, yz), lz]
                        file.write(f"ITEM: TIMESTEP\n{250 * k}\nITEM: NUMBER OF ATOMS\n60\nITEM: BOX BOUNDS xy xz yz pp pp pp\n"
                                   + "".join(f"{a:.9e} {b:.9e} {t:.9e}\n" for a, b, t in zip(low, high, (xy, xz, yz)))
                                   + f"ITEM: ATOMS id type {names} vx vy vz\n")
                        for i in random.permutation(60):
                            row = [*places[k, i], *walk.velocities[k, i]]
                            file.write(f"{i + 1} {1 if i % 3 == 0 else 2} " + " ".join(f"{v:.7f}" for v in row) + "\n")
                run = Imported(self.folder, self.path("top.data"), self.path("walk.dump"), "--timestep", "0.002")
                np.testing.assert_allclose(run.times, 0.5 * np.arange(20), atol=1e-6)  # units metal, of the data file
                for k, cell in enumerate(walk.cells):
                    turn = turned(cell)
                    moved = run.xyz[k] @ turn - run.xyz[0] @ turned(walk.cells[0])
                    np.testing.assert_allclose(moved, expected[k] - expected[0], atol=2e-3, err_msg=f"frame {k}")
                    np.testing.assert_allclose(run.cells[k], cell @ turn.T, atol=1e-3)
                    np.testing.assert_allclose(run.velocities[k] @ turn, walk.velocities[k], atol=1e-4)

    def test_one_cell_in_front_of_all_models_of_a_pdb_is_that_of_each(self):
        walk = Walk([triclinic_vectors(np.array(BOXES["triclinic"], dtype=float)).astype(float)] * 12)
        walk.write(self.path("walk.pdb"), multiframe=True)
        with open(self.path("walk.pdb"), encoding="ascii") as file:
            self.assertEqual(file.read().count("CRYST1"), 1)
        run = Imported(self.folder, self.path("walk.pdb"))
        self.check(run, walk, 3e-3, False)

    def test_sites_without_mass_are_no_element(self):
        """A GRO file of four-site water, an ion and argon, of which only names are known."""
        names = [("SOL", "OW"), ("SOL", "HW1"), ("SOL", "HW2"), ("SOL", "MW"), ("SOL", "CA"), ("CA", "CA"), ("Ar", "AR")]
        rows = [f"{k:5d}{residue:<5}{name:>5}{k + 1:5d}{0.1 * k:8.3f}{0:8.3f}{0:8.3f}"
                for k, (residue, name) in enumerate(names)]
        run = Imported(self.folder, self.write("four.gro", "\n".join(["four sites", "7", *rows, "   2.0 2.0 2.0"]) + "\n"))
        self.assertEqual(run.model["Element"], ["O", "H", "H", "X", "C", "Ca", "Ar"])
        self.assertIn("Elements are guessed from names", run.told)

    def test_as_is_leaves_places_in_the_cell(self):
        walk = Walk(breathing(BOXES["triclinic"], 5))
        walk.write_topology(self.path("top.pdb"))
        walk.write(self.path("walk.dcd"))
        run = Imported(self.folder, self.path("top.pdb"), self.path("walk.dcd"), "--as-is")
        for k, cell in enumerate(walk.cells):
            np.testing.assert_allclose(run.xyz[k] @ turned(cell), walk.wrapped[k], atol=1e-3)

    def test_whole_molecules_stay_at_images_of_their_places(self):
        walk = Walk(breathing(BOXES["triclinic"]))
        walk.write_topology(self.path("top.pdb"))
        walk.write(self.path("walk.trr"))
        run = Imported(self.folder, self.path("top.pdb"), self.path("walk.trr"), "--whole")
        for k, cell in enumerate(walk.cells):
            places = run.xyz[k] @ turned(cell)
            np.testing.assert_allclose(places[::3], walk.wrapped[k, ::3], atol=1e-3)
            images = (places - walk.wrapped[k]) @ np.linalg.inv(cell)
            np.testing.assert_allclose(images, np.round(images), atol=1e-3)
        hydrogens = run.xyz.reshape(len(run.xyz), -1, 3, 3)
        lengths = np.linalg.norm(hydrogens[:, :, 1:] - hydrogens[:, :, :1], axis=-1)
        np.testing.assert_allclose(lengths, np.hypot(0.76, 0.59), atol=2e-3)
        self.assertIn("stand where the run has them", run.told)

    def test_frames_and_atoms_can_be_chosen(self):
        walk = Walk(breathing(BOXES["orthorhombic"], 30))
        walk.write_topology(self.path("top.pdb"))
        walk.write(self.path("walk.trr"))
        run = Imported(self.folder, self.path("top.pdb"), self.path("walk.trr"), "--first", 4, "--last", 20, "--step", 5,
                       "--select", "name OW", "--as-is")
        np.testing.assert_allclose(run.times, [1.5, 4, 6.5, 9])
        np.testing.assert_allclose(run.xyz, walk.wrapped[3:20:5, ::3], atol=1e-3)
        self.assertEqual(run.model["Element"], ["O"] * 20)
        self.assertEqual(list(run.ids), list(range(1, 61, 3)))

    def test_files_follow_one_another(self):
        walk = Walk(breathing(BOXES["orthorhombic"], 20))
        walk.write_topology(self.path("top.pdb"))
        walk.write(self.path("all.trr"))
        reader = MDAnalysis.Universe(self.path("top.pdb"), self.path("all.trr"))
        for name, frames in (("one.trr", slice(0, 12)), ("two.trr", slice(9, 20))):
            with MDAnalysis.Writer(self.path(name), n_atoms=60) as writer:
                for _ in reader.trajectory[frames]:
                    writer.write(reader)
        run = Imported(self.folder, self.path("top.pdb"), self.path("one.trr"), self.path("two.trr"))
        np.testing.assert_allclose(run.times, 0.5 * np.arange(20))
        self.check(run, walk, 1e-3, True)
        again = Imported(self.folder, self.path("top.pdb"), self.path("one.trr"), self.path("one.trr"), "--as-is")
        np.testing.assert_allclose(again.times, 0.5 * np.arange(24))
        self.assertIn("moved by 6 ps", again.told)

    def test_a_run_without_cell_or_velocities_has_neither(self):
        walk = Walk(breathing(BOXES["orthorhombic"], 3))
        ts = walk.universe.trajectory.ts
        with MDAnalysis.Writer(self.path("walk.xyz"), n_atoms=60) as writer:
            for k in range(3):
                ts.positions, ts.dimensions = walk.true[k], None
                writer.write(walk.universe)
        run = Imported(self.folder, self.path("walk.xyz"), "--dt", 2.5)
        np.testing.assert_allclose(run.times, [0, 2.5, 5])
        np.testing.assert_allclose(run.xyz, walk.true, atol=1e-4)
        self.assertEqual(run.flags[0], 0)
        self.assertTrue(np.isnan(run.value("kinetic")).all() and np.isnan(run.value("volume")).all())
        self.assertEqual(len(run.model["Bond"]), 80)  # by distance


class RealRuns(Case):
    def test_gromacs_runs_are_as_the_files_have_them(self):
        for ending, tolerance in (("xtc", 0.011), ("trr", 1e-4)):
            with self.subTest(ending):
                run = Imported(self.folder, GROMACS + "tpr", GROMACS + ending)
                file = MDAnalysis.Universe(GROMACS + "tpr", GROMACS + ending)
                self.assertEqual(len(run.times), len(file.trajectory))
                for k, ts in enumerate(file.trajectory):
                    cell = triclinic_vectors(ts.dimensions).astype(float)
                    self.assertAlmostEqual(run.times[k], ts.time, places=4)
                    np.testing.assert_allclose(run.cells[k], cell, atol=1e-4)
                    # Distances between atoms are those of the file; the first frame is the file's.
                    ours, theirs = np.diff(run.xyz[k], axis=0), np.diff(ts.positions.astype(float), axis=0)
                    inner = np.arange(647) % 3 != 2
                    self.assertLess(np.abs(nearest(ours - theirs, cell)[inner]).max(), 1e-3)
                    if k > 0:
                        moved = nearest(ts.positions[::3] - before[::3], cell)
                        np.testing.assert_allclose((run.xyz[k] - run.xyz[k - 1])[::3], moved, atol=1e-3)
                    before = ts.positions.astype(float)
                    if ending == "trr":
                        np.testing.assert_allclose(run.velocities[k], ts.velocities, atol=1e-4)
                bonds = np.sort(run.model["Bond"].reshape(-1, 2) - 1, axis=1)
                self.assertEqual({*map(tuple, bonds)}, {*map(tuple, np.sort(file.bonds.indices, axis=1))})
                np.testing.assert_allclose(run.model["Charge"], file.atoms.charges, atol=1e-6)
                np.testing.assert_allclose(run.model["Mass"], file.atoms.masses, rtol=1e-5)
                water = run.xyz.reshape(len(run.xyz), -1, 3, 3)
                np.testing.assert_allclose(np.linalg.norm(water[:, :, 1:] - water[:, :, :1], axis=-1), 1, atol=2 * tolerance)

    def test_kinetic_energy_and_temperature_follow_from_velocities(self):
        run = Imported(self.folder, GROMACS + "tpr", GROMACS + "trr", "--constraints", 648)
        kinetic = (run.model["Mass"][:, None] * run.velocities ** 2).sum((1, 2)) / 2 * KCAL
        np.testing.assert_allclose(run.value("kinetic"), kinetic, rtol=1e-6)
        np.testing.assert_allclose(run.value("temperature"), 2 * kinetic / (0.0019872043 * (3 * 648 - 3 - 648)), rtol=1e-6)
        for name in ("total", "potential", "pressure", "coulomb", "xx"):
            self.assertTrue(np.isnan(run.value(name)).all(), name)

    def test_energies_of_logs_go_to_the_frames_of_their_times(self):
        run = Imported(self.folder, GROMACS + "tpr", GROMACS + "xtc", "--energies", GROMACS + "xvg", "--step", 10)
        with open(GROMACS + "xvg", encoding="utf-8") as file:
            rows = np.array([line.split() for line in file if line[0] not in "#@"], dtype=float)[::10]
        for column, (name, factor) in enumerate((("potential", 1 / 4.184), ("kinetic", 1 / 4.184), ("total", 1 / 4.184),
                                                 ("temperature", 1), ("pressure", 1e-4), ("volume", 1e3)), 1):
            np.testing.assert_allclose(run.value(name), rows[:, column] * factor, rtol=1e-6)
        self.assertTrue(np.isnan(run.value("coulomb")).all())
        run = Imported(self.folder, LAMMPS + ".data", LAMMPS + ".dump.bz2", "--energies", LAMMPS + ".log")
        with open(LAMMPS + ".log", encoding="utf-8") as file:
            lines = file.read().split("Step Temp PotEng")[1].splitlines()[1:21]
        rows = np.array([line.split() for line in lines], dtype=float)
        for column, name, factor in ((1, "temperature", 1), (2, "potential", 1), (4, "total", 1), (8, "pressure", 1.01325e-4),
                                     (9, "volume", 1), (10, "xx", 1.01325e-4), (13, "yz", 1.01325e-4), (15, "xy", 1.01325e-4)):
            np.testing.assert_allclose(run.value(name), rows[:, column] * factor, rtol=1e-6, err_msg=name)
        np.testing.assert_allclose(run.value("coulomb"), rows[:, 6] + rows[:, 7], rtol=1e-6)

    def test_logs_of_every_form_and_unit_are_read(self):
        """The same five rows at 0.1 ps from each other, in kcal/mol, K and GPa."""
        energy, heat, pressure = -1000.5 + np.arange(5), 300.25 + np.arange(5), 0.101325 * np.arange(1, 6)
        step, time, atm = 100 * np.arange(5), 0.1 * np.arange(5), pressure / 1.01325e-4
        table = zip(step, heat, energy, atm)
        log = "LAMMPS (2 Aug 2023)\nunits real\ntimestep 1.0\n"
        multi = "".join(f"------------ Step {s:14d} ----- CPU =      {s / 7:.4f} (sec) -------------\n"
                        f"TotEng   = {e:14.4f} KinEng   =        0.1000 Temp     = {t:14.4f}\nPress    = {p:14.4f} \n"
                        for s, t, e, p in zip(step, heat, energy, atm))
        columns = {"plain.log": log + "   Step   Temp   TotEng   Press   Volume\n" + "".join(f"{s} {t} {e} {p} 5\n" for s, t, e, p in table)
                   + "Loop time of 3.1 on 1 procs for 400 steps with 648 atoms\n",
                   "multi.log": log + multi + "Loop time of 3 on 1 procs\n",
                   "yaml.log": log + "---\nkeywords: ['Step', 'Temp', 'TotEng', 'Press', ]\ndata:\n"
                   + "".join(f"  - [{s}, {t}, {e}, {p}, ]\n" for s, t, e, p in zip(step, heat, energy, atm)) + "...\n",
                   "time.log": log + "Time Temp TotEng Press\n" + "".join(f"{s} {t} {e} {p}\n" for s, t, e, p in zip(step, heat, energy, atm)),
                   # A run that was begun again from step 200, and of other columns before.
                   "two.log": log + "Step Temp\n" + "".join(f"{s} {0 * s + 300.25 + s / 100}\n" for s in (0, 100, 200, 300))
                   + "Loop time of 1\nStep Temp TotEng Press\n" + "".join(f"{s} {t} {e} {p}\n" for s, t, e, p in list(zip(step, heat, energy, atm))[2:]),
                   "kj.csv": "time (ps),Total Energy (kJ/mol),Temperature (K),Pressure (bar)\n"
                   + "".join(f"{s},{e * 4.184},{t},{p * 1e4}\n" for s, t, e, p in zip(time, heat, energy, pressure)),
                   "step.csv": "# Step,Temp [K],TotEng,Press (atm)\n" + "".join(f"{s},{t},{e / 23.060547830619},{p}\n" for s, t, e, p in zip(step, heat, energy, atm)),
                   "ns.xvg": '@ xaxis label "Time (ns)"\n@ s0 legend "Total Energy"\n@ s1 legend "Temperature"\n@ s2 legend "Pressure"\n'
                   + "".join(f"{s / 1000} {e * 4.184} {t} {p * 1e4}\n" for s, t, e, p in zip(time, heat, energy, pressure))}
        words = (GROMACS + "tpr", GROMACS + "xtc", "--last", 5, "--timestep", 1)
        for name, text in columns.items():
            with self.subTest(name):
                units = ("--energy-units", "eV") if name == "step.csv" else ()
                run = Imported(self.folder, *words, "--energies", self.write(name, text), *units)
                there = slice(2, None) if name == "two.log" else slice(None)
                np.testing.assert_allclose(run.value("temperature"), heat, rtol=1e-6)
                np.testing.assert_allclose(run.value("total")[there], energy[there], rtol=1e-6)
                np.testing.assert_allclose(run.value("pressure")[there], pressure[there], rtol=1e-5)
                self.assertEqual(np.isnan(run.value("total")).sum(), 2 if name == "two.log" else 0)
                self.assertTrue(np.isnan(run.value("potential")).all())

    def dumps(self):
        """Wrapped and unwrapped places, velocities and cell origins and lengths of each frame of the dumps."""
        def frames(path, columns):
            with bz2.open(path, "rt") as file:
                lines = file.read().splitlines()
            for at in range(0, len(lines), 657):
                bounds = np.array([line.split() for line in lines[at + 5:at + 8]], dtype=float)
                names = lines[at + 8].split()[2:]
                table = np.array([line.split() for line in lines[at + 9:at + 657]], dtype=float)
                yield table[np.argsort(table[:, 0])][:, [names.index(c) for c in columns]], bounds
        wrapped = list(frames(LAMMPS + ".dump.bz2", ["x", "y", "z", "vx", "vy", "vz"]))
        unwrapped = list(frames(LAMMPS + "_unwrapped.dump.bz2", ["xu", "yu", "zu"]))
        places = np.array([frame[0] for frame in wrapped])
        lengths = np.array([bounds[:, 1] - bounds[:, 0] for _, bounds in wrapped])
        return places[..., :3], places[..., 3:], np.array([frame[0] for frame in unwrapped]), lengths

    def test_lammps_displacements_are_those_of_its_own_unwrapped_output(self):
        wrapped, velocities, unwrapped, lengths = self.dumps()
        run = Imported(self.folder, LAMMPS + ".data", LAMMPS + ".dump.bz2", "--lammps-units", "real", "--timestep", "1.0")
        np.testing.assert_allclose(run.times, 0.02 * np.arange(20), atol=1e-9)
        np.testing.assert_allclose(run.velocities, 1000 * velocities, atol=2e-3)
        np.testing.assert_allclose(np.diagonal(run.cells, axis1=1, axis2=2), lengths, atol=1e-4)
        # The engine counts cells of the size that they have in a frame; the toroidal view leaves their growth out.
        images = np.round((unwrapped - wrapped) / lengths[:, None])
        growth = np.diff(lengths, axis=0)[:, None] * images[:-1]
        expected = np.concatenate(([0 * wrapped[0]], np.cumsum(np.diff(unwrapped, axis=0) - growth, axis=0)))
        oxygens = slice(0, None, 3)
        np.testing.assert_allclose((run.xyz - run.xyz[0])[:, oxygens], expected[:, oxygens], atol=2e-3)
        np.testing.assert_allclose((run.xyz[:, oxygens] - wrapped[:, oxygens])[0], 0, atol=1e-4)
        stays = (images == 0).all((0, 2))
        self.assertGreater(stays.sum(), 100)
        np.testing.assert_allclose((run.xyz - run.xyz[0])[:, stays & (np.arange(648) % 3 == 0)],
                                   (unwrapped - unwrapped[0])[:, stays & (np.arange(648) % 3 == 0)], atol=2e-3)
        self.assertEqual(run.model["Element"], ["O", "H", "H"] * 216)
        np.testing.assert_allclose(run.model["Charge"], [-0.8476, 0.4238, 0.4238] * 216)
        self.assertEqual(len(run.model["Bond"]), 2 * 432)


class Analyses(Case):
    def test_a_pair_of_files_becomes_a_report(self):
        self.goes_well(*pathdesk("analyse", GROMACS + "tpr", GROMACS + "trr", "--out", self.path("out"), "--first", 1,
                                 "--format", "tsv,html"))
        made = os.listdir(self.path("out"))
        for name in ("analyse.script", "report.html", "water.trj", "water.qfx"):
            self.assertIn(name, made)
        with open(self.path("out/analyse.script"), encoding="utf-8") as file:
            script = file.read()
        for line in ('SELECT_PROPERTIES "Kinetic Energy" Temperature Volume Density "Cell Parameters"', "LINEAR_FIT", "VAC",
                     "POWER_SPECTRUM", "RDF_TYPE H H", "RDF_TYPE H O", "RDF_TYPE O O"):
            self.assertIn(line + "\n", script)

    def test_neighbours_of_a_cell_that_varies_are_those_that_the_run_has(self):
        told = self.goes_well(*pathdesk("analyse", GROMACS + "tpr", GROMACS + "xtc", "--out", self.path("out"), "--format", "tsv"))
        self.assertIn("g(r) and densities need --whole", told)
        found = np.loadtxt(self.path("out/rdf-O-O.tsv"), comments=("#", "x", "r"), delimiter="\t")
        oxygens = MDAnalysis.Universe(GROMACS + "tpr", GROMACS + "xtc").select_atoms("name OW*")
        expected = InterRDF(oxygens, oxygens, nbins=len(found), range=(0, 0.05 * len(found)), exclusion_block=(1, 1)).run()
        np.testing.assert_allclose(found[:, 0], expected.results.bins, atol=1e-4)
        np.testing.assert_allclose(found[:, 1], expected.results.rdf, rtol=2e-3, atol=1e-4)

    def test_files_may_be_called_anything(self):
        for name in ("my run", "it's #1", 'say "it\'s"', "$HOME", "two\nlines"):
            with self.subTest(name):
                for ending in ("tpr", "xtc", "xvg"):
                    shutil.copy(GROMACS + ending, self.path(f"{name}.{ending}"))
                words = ("--last", 4, "--format", "tsv", "--energies", name + ".xvg", "--out", "theirs")
                self.goes_well(*pathdesk("analyse", name + ".tpr", name + ".xtc", *words, folder=self.folder))
                made = next(file[:-4] for file in os.listdir(self.path("theirs")) if file.endswith(".trj"))
                for ending in ("trj", "qfx"):
                    os.rename(self.path(f"theirs/{made}.{ending}"), self.path(f"{name}.{ending}"))
                told = self.goes_well(*pathdesk("analyse", name + ".trj", "--format", "tsv", "--out", "ours", folder=self.folder))
                self.assertIn("Temperature: mean", told)

    def test_options_and_files_that_do_not_belong_together_are_one_line(self):
        Imported(self.folder, GROMACS + "tpr", GROMACS + "xtc", "--last", 2)
        own = self.path("run.trj")
        for words, pattern in (((own, "--energies", "log", "--dt", 1), "--energies, --dt: only for files of other programs, and .*run.trj is"),
                               ((self.path("rum.trj"),), "rum.trj cannot be loaded: did you mean run.trj[?]"),
                               ((self.path("run.qfx"), own), "run.qfx is of this program, and analysed alone"),
                               ((GROMACS + "tpr", GROMACS + "xvg"), "name it behind --energies")):
            code, told, trouble = pathdesk("analyse", *words, "--out", self.path("out"))
            self.assertNotEqual(code, 0)
            self.assertRegex(trouble, pattern)
            self.assertEqual(len(trouble.splitlines()), 1, trouble)
            self.assertFalse(os.path.exists(self.path("out")))

    def run_script(self, *lines):
        self.write("some.script", "\n".join(lines) + "\n")
        return pathdesk("run", "some.script", "--workdir", "work", "--format", "tsv", folder=self.folder)

    def test_what_the_files_do_not_have_cannot_be_selected(self):
        """Neither energies nor velocities: the cell alone is left, and no zero stands for the rest."""
        code, told, trouble = self.run_script(f"@import run {GROMACS}tpr {GROMACS}xtc", "@request SELECT_PROPERTIES",
                                              'SELECT_PROPERTIES Temperature "Total Energy" Hamiltonian Pressure Volume',
                                              "PROFILE")
        self.assertEqual(code, 0)
        listed = told[told.index("SELECT_PROPERTIES ="):].split("\n\n")[0]
        self.assertIn("Volume", listed)
        self.assertNotRegex(listed, "Energy|Temperature|Pressure|Stress|Hamiltonian|ENERGY")
        for name in ("Temperature", "Total Energy", "Hamiltonian", "Pressure"):
            self.assertIn(f"{name} cannot be selected", trouble)
        self.assertEqual([name for name in os.listdir(self.path("out")) if name.endswith(".tsv") and "Profile" in name],
                         ["Profile-of-Volume.tsv"])
        code, told, _ = pathdesk("info", self.path("work/run.trj"))
        self.assertRegex(told, "absent +total energy, .*temperature, pressure")
        self.assertNotIn("nan", told)

    def test_values_that_only_some_frames_have_can_be_selected(self):
        self.write("late.csv", "time (ps),temperature (K)\n" + "".join(f"{0.1 * k:.1f},{290 + k}\n" for k in range(2, 6)))
        told = self.goes_well(*self.run_script(f"@import run {GROMACS}tpr {GROMACS}xtc --last 6 --energies late.csv",
                                               "SELECT_PROPERTIES Temperature", "PROFILE"))
        self.assertIn("Temperature: mean 293.5", told)

    def test_a_script_brings_files_in_once(self):
        for ending in ("tpr", "xtc", "xvg"):
            shutil.copy(GROMACS + ending, self.path("my run." + ending))
        line = "@import water 'my run.tpr' 'my run.xtc' --energies 'my run.xvg'"
        lines = (line, "SELECT_PROPERTIES Temperature", "PROFILE")
        done, at_hand = "are whole", "is newer than the files it was made of"
        for number, (expected, change) in enumerate((
                (done, None), (at_hand, None), (done, lambda: os.utime(self.path("my run.xvg"))),
                (done, lambda: os.remove(self.path("work/water.qfx"))), (at_hand, None))):
            if change:
                change()
            told = self.goes_well(*self.run_script(*lines))
            self.assertIn(expected, told, number)
            self.assertIn("Temperature: mean", told)
        code, told, trouble = self.run_script(line + " --last 20", *lines[1:])
        self.assertIn(done, told, "another line")
        self.assertEqual(sorted(os.listdir(self.path("work")))[-3:], ["water.import", "water.qfx", "water.trj"])

    def test_a_line_brings_in_another_model_under_the_same_name(self):
        line = f"@import run {GROMACS}tpr {GROMACS}xtc --last 3"
        told = self.goes_well(*self.run_script(line, "@show model", line + ' --select "name OW"', "@show model",
                                               "TRAJECTORY run"))
        atoms = len(MDAnalysis.Universe(GROMACS + "tpr").atoms)
        self.assertRegex(told, rf"(?s)atoms +{atoms}\b.*atoms +{atoms // 3}\b.*run.trj is loaded again")

    def test_a_line_that_fails_ends_the_script(self):
        code, told, trouble = self.run_script("@import run no.gro", "@show model")
        self.assertEqual((code, trouble.count("\n")), (1, 1), trouble)
        self.assertRegex(trouble, "some.script:1: .*no.gro does not exist")
        self.assertFalse([name for name in os.listdir(self.path("work")) if name.startswith("run")])


class Refusals(Case):
    """What is wrong is one line, and nothing is left behind."""

    def refused(self, *words, environment=None):
        program = os.environ["PATHDESK_PROGRAM"]
        done = subprocess.run([program, "import", "-o", self.path("out"), *words], capture_output=True, text=True,
                              env={**os.environ, **(environment or {})}, timeout=120)
        self.assertEqual(done.returncode, 1, done.stdout + done.stderr)
        self.assertEqual([name for name in os.listdir(self.folder) if name.startswith("out")], [])
        self.assertEqual(len(done.stderr.splitlines()), 1, done.stderr)
        return done.stderr

    def script(self, body):
        """A script that stands in the place of the one that reads."""
        return self.write("import_frames.py", "import struct, sys, time\n"
                          "def block(tag, body=b'', length=None):\n"
                          "    size = len(body) if length is None else length\n"
                          "    sys.stdout.buffer.write(struct.pack('=8sq', tag.ljust(8).encode(), size) + body)\n"
                          "    sys.stdout.buffer.flush()\n" + body)

    def test_files_that_are_not_there_or_do_not_fit(self):
        walk = Walk(breathing(BOXES["orthorhombic"], 2))
        for ending in ("dcd", "nc", "xyz"):
            walk.write(self.path("walk." + ending))
        tpr, xtc, xvg, log = GROMACS + "tpr", GROMACS + "xtc", GROMACS + "xvg", LAMMPS + ".log"
        self.write("empty.xtc", "")
        self.write("notes.txt", "some words\n")
        cases = (((tpr, self.path("walk.dcd")), "walk.dcd has 60 atoms and .*water.tpr has 648"),
                 ((tpr, self.path("walk.nc")), "walk.nc has 60 atoms and .*water.tpr has 648"),
                 ((self.path("walk.xyz"), xtc), "water.xtc has 648 atoms and .*walk.xyz has 60"),
                 ((xtc, tpr), "the topology comes first: import .*water.tpr .*water.xtc$"),
                 ((LAMMPS + ".dump.bz2", LAMMPS + ".data"), "the topology comes first: import .*water.data .*water.dump.bz2$"),
                 ((log, LAMMPS + ".dump.bz2"), "water.log holds energies and no atoms: name the topology first"),
                 ((GROMACS + "edr",), "water.edr holds energies and no atoms"),
                 ((tpr, xvg), "water.xvg holds energies and no coordinates: name it behind --energies"),
                 ((tpr,), "water.tpr holds no coordinates: name its trajectory behind it"),
                 ((tpr, xtc, tpr), "water.tpr holds atoms and no coordinates"),
                 ((tpr, self.path("notes.txt")), "notes.txt is of no kind that MDAnalysis reads coordinates from"),
                 ((self.path("notes.txt"), xtc), "notes.txt is of no kind that MDAnalysis reads atoms from"),
                 ((tpr, self.path("empty.xtc")), "empty.xtc is an empty file"),
                 ((tpr, self.path("wakl.dcd")), "wakl.dcd does not exist; did you mean walk.dcd[?]"),
                 ((self.path("none.tpr"),), "none.tpr does not exist$"),
                 ((tpr, self.path("no/such.xtc")), "such.xtc does not exist: there is no folder .*/no$"),
                 ((self.folder, xtc), "is a folder"),
                 ((tpr, xtc, "--energies", self.path("none.xvg")), "none.xvg does not exist$"),
                 ((tpr, xtc, "--energies", self.path("notes.txt")), "notes.txt cannot be read as energies: it has no rows"),
                 ((tpr, xtc, "--select", "name Xe"), "no atom"),
                 ((tpr, xtc, "--select", "nam OW"), "(?i)selection"))
        for words, pattern in cases:
            with self.subTest(pattern):
                complaint = self.refused(*words).strip()
                self.assertRegex(complaint, pattern)
                self.assertLess(len(complaint), 400)

    def test_a_run_that_was_stopped_gives_its_whole_frames(self):
        for ending in ("xtc", "trr"):
            file = MDAnalysis.Universe(GROMACS + "tpr", GROMACS + ending)
            with open(GROMACS + ending, "rb") as whole, open(self.path("cut." + ending), "wb") as cut:
                cut.write(whole.read(os.path.getsize(GROMACS + ending) * 5 // 9))
            run = Imported(self.folder, GROMACS + "tpr", self.path("cut." + ending), "--as-is")
            count = len(run.times)
            self.assertTrue(0.5 < count / len(file.trajectory) < 0.6, count)
            self.assertIn(f"cut.{ending} is cut off in frame {count + 1}: the {count} before it are taken.", run.told)
            np.testing.assert_allclose(run.xyz[-1], file.trajectory[count - 1].positions, atol=1e-4)

    def test_atoms_that_nothing_is_known_of_are_told_in_one_line(self):
        run = Imported(self.folder, LAMMPS + ".dump.bz2")
        self.assertEqual(run.told.count("all are X, without masses, charges or bonds"), 1)
        self.assertNotIn("guessed", run.told)
        self.assertTrue(len(run.velocities) and np.isnan(run.value("kinetic")).all(), "energies of unknown masses")

    def test_without_mdanalysis_the_package_is_named(self):
        os.mkdir(self.path("MDAnalysis"))
        self.write("MDAnalysis/__init__.py", "raise ImportError")
        complaint = self.refused(GROMACS + "tpr", GROMACS + "xtc", environment={"PYTHONPATH": self.folder})
        self.assertIn("install the package python3-mdanalysis", complaint)

    def test_blocks_that_cannot_be_true(self):
        counts = "block('counts', struct.pack('=4q', {}))\n"
        two = counts.format("2, 1, 1, 0")
        elements = two + "block('elements', b'O\\nH\\n')\n"
        frame = elements + "block('series')\nblock('frame', struct.pack('=7d', 0, 0, 0, 0, 0, 0, 0))\n"
        cases = {"": "ended early", counts.format("0, 0, 1, 0"): "no atoms", counts.format("1 << 60, 0, 1, 0"): "too many",
                 "block('counts', b'123')\n": "counts", "block('ids', length=-1)\n": "-1 bytes",
                 "block('ids', length=1 << 60)\n": "bytes", "block('nonsense')\n": "nonsense",
                 "block('ids')\n": "before the counts", two + "block('ids', struct.pack('=2i', 5, 5))\n": "distinct",
                 two + "block('ids', struct.pack('=2i', -5, 5))\n": "negative",
                 two + "block('bonds', struct.pack('=2i', 0, 2))\n": "leads to no atom",
                 two + "block('bonds', struct.pack('=2i', 1, 1))\n": "leads to no atom",
                 two + "block('elements', b'O\\nQq\\n')\n": "Qq", two + "block('names', b'O\\n')\n": "1 names of 2",
                 two + "block('masses', struct.pack('=2d', 1, float('nan')))\n": "masses",
                 two + "block('series', b'beauty\\n')\n": "beauty", elements + "block('end')\n": "no frame",
                 frame + "block('xyz', bytes(12))\n": "xyz", frame + "block('end')\n": "no coordinates",
                 frame + "block('xyz', struct.pack('=6f', 1, 2, 3, 4, 5, float('inf')))\n": "no numbers",
                 elements + "block('xyz', bytes(24))\n": "xyz", elements + "block('frame', bytes(8))\n": "frame",
                 frame + "block('xyz', bytes(24))\nblock('names', b'a\\nb\\n')\n": "between frames",
                 frame + "block('xyz', b'12345', length=24)\n": "ended early"}
        for body, part in cases.items():
            with self.subTest(body):
                self.assertIn(part, self.refused(self.script(body), environment={"PATHSTAT_SCRIPTS": self.folder}))

    def test_an_interrupt_leaves_nothing(self):
        top = self.script("block('counts', struct.pack('=4q', 1, 0, 9, 0))\nblock('elements', b'O\\n')\nblock('series')\n"
                          "for k in range(3):\n"
                          "    block('frame', struct.pack('=7d', k, 0, 0, 0, 0, 0, 0)); block('xyz', bytes(12))\n"
                          "time.sleep(100)\n")
        process = subprocess.Popen([os.environ["PATHDESK_PROGRAM"], "import", "-o", self.path("out"), top],
                                   env={**os.environ, "PATHSTAT_SCRIPTS": self.folder}, stderr=subprocess.PIPE, text=True)
        limit = time.monotonic() + 60
        while not os.path.exists(self.path("out.trj.part")) and time.monotonic() < limit:
            time.sleep(0.02)
        process.send_signal(signal.SIGINT)
        complaint = process.communicate(timeout=30)[1]
        self.assertEqual(process.returncode, 130)
        self.assertIn("interrupted", complaint)
        self.assertEqual([name for name in os.listdir(self.folder) if name.startswith("out")], [])


if __name__ == "__main__":
    unittest.main()
