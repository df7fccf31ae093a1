"""Analyses of universes against MDAnalysis's own and NumPy, and the same bits from the workers of a cluster."""

import contextlib
import io
import os
import pickle
import signal
import tempfile
import unittest
import warnings
from pathlib import Path
from unittest import mock

import numpy as np

import pathstat
import pathstat.__main__ as command_line

try:
    import MDAnalysis
    from MDAnalysis.analysis.msd import EinsteinMSD
    from MDAnalysis.analysis.rdf import InterRDF
except ImportError:
    raise unittest.SkipTest("MDAnalysis is not there")
try:
    import distributed
except ImportError:
    distributed = None

warnings.simplefilter("ignore")
RANDOM = np.random.default_rng(11)
FRAMES, WATERS = 70, 60


def write_run(folder):
    """Waters that wander in a cell that breathes, with velocities, in files that MDAnalysis reads."""
    universe = MDAnalysis.Universe.empty(
        3 * WATERS, n_residues=WATERS, atom_resindex=np.repeat(np.arange(WATERS), 3), trajectory=True, velocities=True
    )
    universe.add_TopologyAttr("name", ["O", "H", "H"] * WATERS)
    universe.add_TopologyAttr("resname", ["WAT"] * WATERS)
    shape = np.array([[0, 0, 0], [0.8, 0.6, 0], [-0.8, 0.6, 0]])
    centres = RANDOM.uniform(0, 15, (WATERS, 3))
    universe.dimensions = [15, 15, 15, 90, 90, 90]
    universe.atoms.positions = (centres[:, None] + shape).reshape(-1, 3)
    topology, trajectory = str(folder / "run.gro"), str(folder / "run.trr")
    universe.atoms.write(topology)
    with MDAnalysis.Writer(trajectory, universe.atoms.n_atoms) as writer:
        for frame in range(FRAMES):
            centres += RANDOM.normal(0, 0.3, centres.shape)
            universe.atoms.positions = (centres[:, None] + shape).reshape(-1, 3)
            universe.atoms.velocities = RANDOM.normal(0, 4, (3 * WATERS, 3))
            edge = 15 + 0.2 * np.sin(frame)
            universe.dimensions = [edge, edge, edge, 90, 90, 90]
            universe.trajectory.ts.time, universe.trajectory.ts.frame = 0.5 * frame, frame
            writer.write(universe.atoms)
    return topology, trajectory


class Run(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.universe = MDAnalysis.Universe(*write_run(Path(cls.folder.name)))
        cls.oxygen = cls.universe.select_atoms("name O*")
        cls.hydrogen = cls.universe.select_atoms("name H*")
        cls.charged = cls.universe.atoms
        cls.universe.add_TopologyAttr("charges", np.tile([-0.8, 0.4, 0.4], WATERS))

    @classmethod
    def tearDownClass(cls):
        cls.universe.trajectory.close()
        cls.folder.cleanup()


class Here(Run):
    def test_rdf_is_that_of_mdanalysis(self):
        # Within half of the cell, where the nearest image is the only one.
        theirs = InterRDF(self.oxygen, self.hydrogen, nbins=40, range=(0, 7.2)).run(5, 60, 3)
        ours = pathstat.RDF(self.oxygen, self.hydrogen, nbins=40, range=(0, 7.2)).run(5, 60, 3)
        # Their single precision puts a pair at the edge of a bin elsewhere now and then.
        self.assertLessEqual(np.abs(ours.results.count - theirs.results.count).sum(), 6)
        np.testing.assert_allclose(ours.results.rdf[8:], theirs.results.rdf[8:], rtol=0.02)
        np.testing.assert_allclose(ours.results.bins, theirs.results.bins)
        self.assertEqual(ours.n_frames, 19)

    def test_displacement_is_that_of_mdanalysis(self):
        theirs = EinsteinMSD(self.universe, select="name O*", fft=False).run()
        ours = pathstat.MSD(self.oxygen).run()
        np.testing.assert_allclose(ours.results.msd, theirs.results.timeseries, rtol=1e-9, atol=1e-9)
        np.testing.assert_allclose(ours.results.lags, 0.5 * np.arange(FRAMES), rtol=1e-6)
        fit = ours.fit(2, 15)
        self.assertAlmostEqual(fit["D"], 0.3**2 * 2 / 2, delta=0.03)
        self.assertAlmostEqual(fit["D_cm2_per_s"], fit["D"] * 1e-4)

    def test_velocities_dipoles_and_densities(self):
        vac = pathstat.VAC(self.oxygen, max_lag=5).run()
        self.assertAlmostEqual(vac.results.vac[0] / 48, 1, delta=0.1)
        self.assertLess(abs(vac.results.vac[3]), 2)
        self.assertEqual(len(vac.spectrum(50).k), len(vac.spectrum(50).values))
        dielectric = pathstat.Dielectric(self.charged, temperature=300).run()
        per_water = np.array([0, 0.48, 0]) * 4.802
        np.testing.assert_allclose(dielectric.results.dipoles, np.tile(WATERS * per_water, (FRAMES, 1)), atol=1e-2)
        self.assertAlmostEqual(dielectric.results.eps, 1, delta=1e-2)
        density = pathstat.Density(self.oxygen, points=(3, 3, 3)).run(-10)
        self.assertEqual(density.results.counts.sum(), 10 * WATERS)
        self.assertEqual(density.n_frames, 10)

    def test_mistakes_are_exceptions(self):
        empty = self.universe.select_atoms("name X")
        for wrong in (
            lambda: pathstat.RDF(empty),
            lambda: pathstat.RDF(self.oxygen, range=(1, 5)),
            lambda: pathstat.MSD(self.oxygen).run(50, 50),
            lambda: pathstat.MSD(self.oxygen).run(0, 1),
            lambda: pathstat.MSD(self.oxygen, max_lag=500).run(),
            lambda: pathstat.MSD(self.oxygen).plot(),
            lambda: pathstat.Dielectric(self.charged, temperature=0),
        ):
            with self.assertRaises(ValueError):
                wrong()

    def test_results_are_drawn_listed_and_pickled(self):
        run = pathstat.RDF(self.oxygen, nbins=20, range=(0, 6)).run(0, 5)
        again = pickle.loads(pickle.dumps(run.results))
        np.testing.assert_array_equal(again.rdf, run.results.rdf)
        try:
            import matplotlib

            matplotlib.use("Agg")
        except ImportError:
            return
        self.assertEqual(run.plot().get_xlabel(), "r (Å)")


@unittest.skipIf(distributed is None, "dask.distributed is not there")
class OnWorkers(Run):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.cluster = distributed.LocalCluster(
            n_workers=2, threads_per_worker=1, processes=True, dashboard_address=None, silence_logs=50,
            local_directory=cls.folder.name
        )
        cls.client = distributed.Client(cls.cluster)

    @classmethod
    def tearDownClass(cls):
        cls.client.close()
        cls.cluster.close()
        super().tearDownClass()

    def analyses(self, **options):
        return (
            pathstat.RDF(self.oxygen, self.hydrogen, nbins=40, range=(0, 7.0)),
            pathstat.MSD(self.charged, **options),
            pathstat.VAC(self.oxygen, max_lag=20, components=True, **options),
            pathstat.Dielectric(self.charged),
            pathstat.Density(self.oxygen, points=(4, 4, 4)),
        )

    @mock.patch.object(pathstat.frames, "ATOMS_IN_BLOCK", 50)
    def test_results_have_the_same_bits(self):
        for here, there in zip(self.analyses(), self.analyses()):
            here.run(2, None, 2)
            there.run(2, None, 2, client=self.client)
            for name, value in vars(here.results).items():
                np.testing.assert_array_equal(getattr(there.results, name), value, err_msg=name)

    @mock.patch.object(pathstat.frames, "ATOMS_IN_BLOCK", 20)
    def test_a_dead_worker_is_made_good_and_blocks_are_kept(self):
        killed = []

        def kill(stage, done, total):
            """Kills a worker behind the first block of each pass."""
            if done == 1 and stage not in killed:
                killed.append(stage)
                os.kill(next(iter(self.client.run(os.getpid).values())), signal.SIGKILL)

        self.addCleanup(pathstat.frames.watch, None)
        with tempfile.TemporaryDirectory() as folder:
            run = pathstat.MSD(self.charged, folder=folder)
            pathstat.frames.watch(kill)
            run.run(client=self.client)
            pathstat.frames.watch(None)
            self.assertEqual(killed, ["leave vectors", "correlate"])
            np.testing.assert_array_equal(run.results.msd, pathstat.MSD(self.charged).run().results.msd)
            blocks = sorted(Path(folder).rglob("*"))
            self.assertFalse([block for block in blocks if block.suffix == ".part"])
            made = [block.stat().st_mtime_ns for block in blocks if block.suffix == ".npy"]
            self.assertEqual(len(made), 3)
            pathstat.MSD(self.charged, folder=folder).run(client=self.client)
            self.assertEqual(made, [block.stat().st_mtime_ns for block in blocks if block.suffix == ".npy"])

    def test_a_universe_in_memory_cannot_be_opened_there(self):
        universe = MDAnalysis.Universe.empty(3, trajectory=True)
        with self.assertRaises(ValueError):
            pathstat.MSD(universe.atoms).run(client=self.client)


class CommandLine(Run):
    def scale(self, text):
        """Runs `pathstat scale` on settings. @return its exit code and what it said"""
        path = Path(self.folder.name, "run.yaml")
        path.write_text("topology: run.gro\ntrajectory: run.trr\n" + text)
        said = io.StringIO()
        with contextlib.redirect_stderr(said):
            code = command_line.main(["scale", str(path)])
        return code, said.getvalue()

    def test_tables_are_those_of_one_machine(self):
        workers = "workers: {count: 2}\n" if distributed else ""
        code, said = self.scale(
            workers + "frames: {start: 2, stop: -1}\nanalyses:\n- MSD: {group: name O*, max_lag: 9}\n- Density: {spacing: 4}\n"
            "- RDF: {g1: name O*, g2: name H*, nbins: 20, range: [0, 7]}\n- RDF: {group: name O*, nbins: 20, range: [0, 7]}\n"
        )
        self.assertEqual(code, 0, said)
        self.assertIn("3 of 3 blocks", said)
        results = Path(self.folder.name, "results")
        for name, analysis in (
            ("msd", pathstat.MSD(self.oxygen, max_lag=9)),
            ("rdf", pathstat.RDF(self.oxygen, self.hydrogen, nbins=20, range=(0, 7))),
            ("rdf-2", pathstat.RDF(self.oxygen, nbins=20, range=(0, 7))),
        ):
            analysis.run(2, -1)
            expected = np.column_stack([vars(analysis.results)[curve] for curve in analysis.curves])
            lines = [line for line in (results / f"{name}.tsv").read_text().splitlines() if line[0] != "#"]
            np.testing.assert_array_equal(np.loadtxt(lines[1:]), expected)
        density = pathstat.Density(self.charged, spacing=4).run(2, -1).results.density
        np.testing.assert_array_equal(np.load(results / "density.npz")["density"], density)

    def test_mistakes_are_told(self):
        for text, told in (
            ("", "names no analyses"),
            ("analyses: [MDS]\n", "there is no analysis MDS"),
            ("analyses: [{MSD: {maxlag: 3}}]\n", "there is no maxlag"),
            ("analyses: [{MSD: {group: nam OW}}]\n", "MSD: "),
            ("analyses: [{MSD: {group: name XX}}]\n", "no atoms"),
            ("analyses: [MSD]\nframes: {begin: 2}\n", "there is no begin"),
            ("analyses: [MSD]\nframes: {start: 900}\n", "no frame"),
            ("analyses: MSD\n", "must be a list"),
            ("analyses: [MSD\n", "run.yaml"),
            ("analyses: [MSD]\ntrajectory: none.xtc\n", "there is no file"),
        ):
            code, said = self.scale(text)
            self.assertEqual((code, told in said), (2, True), (text, said))


if __name__ == "__main__":
    unittest.main()
