"""Whole runs whose answers are known: the diffusion of many independent random walks, and the means of series of a known
correlation. What the summary states as errors has to be what these scatter by."""

import json
import os
import tempfile
import unittest

from imported import pathdesk  # first: it finds the right interpreter

import MDAnalysis
import numpy as np

FRAMES, SPACING = 2500, 0.5  # ps
GROUPS, WALKERS = 20, 10
STEP = 0.4  # of one frame along one axis, A
D = STEP ** 2 / (2 * SPACING)
# Series that a log can have, with the correlation from row to row.
SERIES = {"Total Energy": 0.0, "Potential Energy": 0.5, "Kinetic Energy": 0.9, "Temperature": 0.5, "Bond Energy": 0.9,
          "Angle Energy": 0.0, "Torsion Energy": 0.9}
HEADINGS = {"Bond Energy": "bond", "Angle Energy": "angle", "Torsion Energy": "torsion"}


def exact_error(phi, n):
    """Of the mean of n values of variance 1, each phi times the one before and noise."""
    return np.sqrt(((1 + phi) / (1 - phi) - 2 * phi * (1 - phi ** n) / (n * (1 - phi) ** 2)) / n)


class KnownAnswers(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.holder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.holder.cleanup)
        cls.random = np.random.default_rng(3)
        cls.write_walks()
        cls.write_log()
        lines = ["@import run top.gro run.trr --energies run.csv", "MSD_ATOMS SELECTED", "MSD_MAX_INTERVAL_NO 40",
                 "MIN_FIT_TIME 2", "MAX_FIT_TIME 20"]
        for group in range(GROUPS):
            lines += [f"@select atoms ids {group * WALKERS + 1}-{(group + 1) * WALKERS}", "MSD", "LINEAR_FIT"]
        lines += ["SELECT_PROPERTIES " + " ".join(f'"{name}"' for name in SERIES), "PROFILE"]
        with open(cls.path("run.script"), "w", encoding="utf-8") as file:
            file.write("\n".join(lines) + "\n")
        code, told, trouble = pathdesk("run", "run.script", "--format", "tsv", "--out", "out", "--workdir", "work",
                                       folder=cls.holder.name)
        assert code == 0, told + trouble
        with open(cls.path("out/summary.json"), encoding="utf-8") as file:
            cls.summary = json.load(file)

    @classmethod
    def path(cls, name):
        return os.path.join(cls.holder.name, name)

    @classmethod
    def write_walks(cls):
        atoms = GROUPS * WALKERS
        universe = MDAnalysis.Universe.empty(atoms, trajectory=True)
        for name, value in (("names", "AR"), ("resnames", "AR"), ("elements", "Ar")):
            universe.add_TopologyAttr(name, [value] * (1 if name == "resnames" else atoms))
        # Far apart, for no two to be bonded; a cell that none leaves, and in which no step is near half a cell.
        places = 10.0 * np.arange(atoms)[:, None] * [1, 0, 0] + 1000
        universe.dimensions = [4000, 4000, 4000, 90, 90, 90]
        universe.atoms.positions = places
        universe.atoms.write(cls.path("top.gro"))
        with MDAnalysis.Writer(cls.path("run.trr"), n_atoms=atoms) as writer:
            for frame in range(FRAMES):
                universe.atoms.positions = places
                universe.trajectory.ts.time, universe.trajectory.ts.frame = SPACING * frame, frame
                writer.write(universe.atoms)
                places = places + cls.random.normal(0, STEP, places.shape)

    @classmethod
    def write_log(cls):
        table = [SPACING * np.arange(FRAMES)]
        for phi in SERIES.values():
            values = cls.random.normal(0, 1, FRAMES)
            for k in range(1, FRAMES):
                values[k] = phi * values[k - 1] + np.sqrt(1 - phi * phi) * values[k]
            table.append(100 + values)
        names = ["time (ps)", *(HEADINGS.get(name, name) for name in SERIES)]
        np.savetxt(cls.path("run.csv"), np.transpose(table), delimiter=",", header=",".join(names))

    def test_diffusion_coefficients_scatter_by_their_errors_about_the_true_one(self):
        rows = [entry["diffusion coefficient"] for entry in self.summary["diffusion"]]
        self.assertEqual(len(rows), GROUPS)
        values, errors = (np.array([row[what] for row in rows]) for what in ("value", "error"))
        scatter = values.std(ddof=1)
        self.assertLess(abs(values.mean() - D), 3 * scatter / np.sqrt(GROUPS))
        # A deviation of so many values is known to 1/sqrt(2 (GROUPS - 1)), 16 %: three times that.
        self.assertAlmostEqual(np.sqrt((errors ** 2).mean()) / scatter, 1, delta=0.5)
        self.assertLess(scatter, 0.1 * D)
        within = np.mean(np.abs(values - D) < errors)
        self.assertTrue(0.4 <= within <= 0.95, within)

    def test_means_of_correlated_series_have_their_exact_errors(self):
        rows = {entry["name"]: entry for entry in self.summary["series"]}
        self.assertEqual(set(rows), set(SERIES))
        ratios, deviations = [], []
        for name, phi in SERIES.items():
            exact = exact_error(phi, FRAMES)
            ratios.append(rows[name]["mean"]["error"] / exact)
            deviations.append((rows[name]["mean"]["value"] - 100) / exact)
            with self.subTest(name):
                self.assertAlmostEqual(ratios[-1], 1, delta=0.35)
                self.assertLess(abs(deviations[-1]), 3.5)
                self.assertAlmostEqual(rows[name]["correlation time"]["value"], SPACING * 0.5 * (1 + phi) / (1 - phi),
                                       delta=0.35 * SPACING * 0.5 * (1 + phi) / (1 - phi))
        self.assertAlmostEqual(np.mean(ratios), 1, delta=0.15)
        self.assertLess(np.mean(np.square(deviations)), 2.64)  # chi square of 7: 1 % lies above


if __name__ == "__main__":
    unittest.main()
