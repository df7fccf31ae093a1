"""The program from Python against `pathdesk run`, in the words of its users and with their mistakes."""

import os
import pickle
import signal
import subprocess
import sys
import tempfile
import threading
import time
import unittest
import warnings
from pathlib import Path

import numpy as np

import pathstat

EXAMPLES = Path(__file__).resolve().parents[2] / "examples"
ARGON = EXAMPLES / "argon" / "argon.trj"
WATER = EXAMPLES / "water" / "water.trj"


def table(path):
    """The columns of points of a TSV."""
    return np.genfromtxt([line for line in path.read_text().splitlines() if not line.startswith("#")][1:], delimiter="\t")


class Lines(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.analysis = pathstat.Analysis(ARGON)
        cls.addClassCleanup(cls.analysis.close)

    def test_numbers_of_a_run(self):
        script = f'TRAJECTORY "{ARGON}"\nMSD_MAX_INTERVAL_NO 40\nMSD\nSELECT_PROPERTIES Temperature\nPROFILE\n'
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder, "a.script")
            path.write_text(script)
            desk = pathstat.program.find_program()
            subprocess.run([desk, "run", "--format", "tsv", "--out", folder + "/out", path], check=True, capture_output=True)
            a = self.analysis
            a.msd_max_interval_no(40)
            a.select_properties("Temperature")
            for outcome in (a.MSD(), a.PROFILE()):
                self.assertEqual(len(outcome.graphs), 1)
                graph = next(iter(outcome.graphs.values()))
                expected = table(Path(folder, "out", graph.name + ".tsv"))
                np.testing.assert_array_equal(np.column_stack([graph[0].x, graph[0].y]), expected.astype(np.float32))
                self.assertIs(a.graphs[graph.heading.upper()], graph)

    def test_settings_show_what_they_are(self):
        self.analysis.rdf_cutoff(9.5)
        self.assertEqual(self.analysis.RDF_CUTOFF().values, [9.5])
        self.analysis.msd_anisotropic(True)
        self.assertIs(self.analysis.msd_anisotropic().value, True)
        self.assertEqual(self.analysis.msd_atoms().value, "ALL")
        self.analysis.msd_anisotropic(False)

    def test_frames_are_those_of_the_file(self):
        from_end, last = self.analysis.frame(-1), self.analysis.frame(self.analysis.frames)
        np.testing.assert_array_equal(from_end.positions, last.positions)
        first = self.analysis.frame(1)
        self.assertEqual(first.positions.shape, (len(self.analysis.atoms["names"]), 3))
        self.assertFalse(np.array_equal(first.positions, last.positions))
        self.assertEqual(set(self.analysis.atoms["elements"]), {18})
        for number in (0, self.analysis.frames + 1, -self.analysis.frames - 1):
            self.assertRaises(IndexError, self.analysis.frame, number)

    def test_mistakes_are_exceptions(self):
        a = self.analysis
        for call, told in (
            (lambda: a.last_frame_no(100000), "100000"),
            (lambda: a.run("PROFIEL"), "PROFILE"),
            (lambda: a.select("elemnt Ar"), "element"),
        ):
            with self.assertRaisesRegex(pathstat.AnalysisError, told):
                call()
        self.assertRaises(AttributeError, lambda: a.no_such_word)
        self.assertRaises(ValueError, a.run, "PROFILE\nPROFILE")
        self.assertRaises(ValueError, a.command, "STATISTICS_FILENAME", 'a"b')
        with self.assertWarnsRegex(pathstat.AnalysisWarning, "Temprature"):
            a.select_properties("Temprature")
        self.assertIn("MSD", a.words)
        self.assertIn("msd_max_interval", dir(a))
        self.assertIn("ps", a.msd_max_interval.__doc__)
        self.assertRaises(KeyError, lambda: a.graphs["no such graph"])

    def test_graphs_and_reports_show_and_keep(self):
        self.analysis.rdf_cutoff(8)
        graph = next(iter(self.analysis.RDF().graphs.values()))
        again = pickle.loads(pickle.dumps(graph))
        np.testing.assert_array_equal(again[0].y, graph[0].y)
        self.assertIn("<svg", self.analysis.drawn(graph)._repr_html_())
        report = self.analysis.report()
        self.assertIn(graph.heading, (report.folder / "report.html").read_text())
        self.assertIn("iframe", report._repr_html_())


class Ends(unittest.TestCase):
    def test_files_that_are_not_there_or_no_trajectory(self):
        self.assertRaises(FileNotFoundError, pathstat.Analysis, "no such.trj")
        self.assertRaises(FileNotFoundError, pathstat.Analysis, program="/no/pathdesk")
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder, "cut.trj")
            path.write_bytes(ARGON.read_bytes()[:100])
            self.assertRaises(pathstat.AnalysisError, pathstat.Analysis, path)

    def test_results_are_in_the_folder_and_names_may_have_blanks(self):
        with tempfile.TemporaryDirectory() as folder:
            place = Path(folder, "a run # 1")
            place.mkdir()
            for suffix in (".trj", ".qfx"):
                (place / ("argon" + suffix)).write_bytes(ARGON.with_suffix(suffix).read_bytes())
            with pathstat.Analysis(place / "argon.trj", output=place / "out", threads=1) as a:
                a.select_properties("Temperature", "Pressure")
                a.PROFILE()
            self.assertTrue((place / "out" / "report.html").is_file())
            self.assertRaises(pathstat.AnalysisError, a.MSD)
            self.assertIn("ended", repr(a))

    def test_ctrl_c_stops_the_line_and_keeps_the_run(self):
        with pathstat.Analysis(WATER) as a:
            a.rdf_cutoff(14)
            a.rdf_interval(0.001)
            timer = threading.Timer(0.2, os.kill, (os.getpid(), signal.SIGINT))
            timer.start()
            with self.assertRaises(KeyboardInterrupt):
                for _ in range(1000):
                    a.RDF()
            self.assertGreater(a.frames, 1)

    def test_a_lost_program_is_told(self):
        a = pathstat.Analysis(ARGON)
        a._talk.process.kill()
        self.assertRaises(pathstat.AnalysisError, a.MSD)
        a.close()

    def test_nothing_works_on_behind_a_dead_python(self):
        code = "import os, pathstat, sys; a = pathstat.Analysis(sys.argv[1]); print(a._talk.process.pid, flush=True); os._exit(0)"
        folder = tempfile.TemporaryDirectory()  # for what stays behind
        self.addCleanup(folder.cleanup)
        done = subprocess.run(
            [sys.executable, "-c", code, str(ARGON)], capture_output=True, text=True, check=True,
            env=dict(os.environ, TMPDIR=folder.name)
        )
        end = time.monotonic() + 20
        while Path("/proc", done.stdout.strip()).exists() and time.monotonic() < end:
            time.sleep(0.05)
        self.assertFalse(Path("/proc", done.stdout.strip()).exists())


class Imports(unittest.TestCase):
    def test_runs_of_other_programs(self):
        try:
            import MDAnalysis
        except ImportError:
            self.skipTest("MDAnalysis is not there")
        universe = MDAnalysis.Universe.empty(20, trajectory=True)
        universe.add_TopologyAttr("name", ["Ar"] * 20)
        universe.add_TopologyAttr("resname", ["ARG"])
        universe.add_TopologyAttr("resid", [1])
        universe.dimensions = [20, 20, 20, 90, 90, 90]
        start = np.random.default_rng(3).uniform(5, 15, (20, 3))
        with tempfile.TemporaryDirectory() as folder, warnings.catch_warnings():
            warnings.simplefilter("ignore")
            topology, run = Path(folder, "start.gro"), Path(folder, "run.xtc")
            universe.atoms.positions = start
            universe.atoms.write(topology)
            with MDAnalysis.Writer(str(run), 20) as writer:
                for step in range(6):
                    universe.trajectory.ts.time = step
                    universe.atoms.positions = start + 0.25 * step
                    writer.write(universe.atoms)
            with pathstat.Analysis(topology, run, quiet=True) as a:
                self.assertEqual(a.frames, 6)
                np.testing.assert_allclose(a.frame(6).positions - a.frame(1).positions, 1.25, atol=0.02)


if __name__ == "__main__":
    unittest.main(verbosity=1)
