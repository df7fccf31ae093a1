"""The kernels against the plain definition in NumPy, on random input, and closed forms."""

import pickle
import threading
import unittest

import numpy as np

import pathstat

RANDOM = np.random.default_rng(3)
TRICLINIC = np.array([[11.0, 0, 0], [2.0, 10, 0], [-1.5, 3, 12.0]])


def plain_counts(first, second, box, cutoff, bins):
    """Every image, every pair."""
    counts = np.zeros(bins)
    reach = range(-3, 4) if box is not None else [0]
    for p in reach:
        for q in reach:
            for s in reach:
                image = np.zeros(3) if box is None else np.array([p, q, s]) @ box
                r = np.linalg.norm(first[:, None] - second[None] + image, axis=2)
                if first is second and (p, q, s) == (0, 0, 0):
                    r = r[~np.eye(len(first), dtype=bool)]
                r = r[r < cutoff]
                np.add.at(counts, np.minimum((r / (cutoff / bins)).astype(int), bins - 1), 1)
    return counts


def plain_correlation(vectors, lags, step, of_velocities, components):
    rows = []
    for lag in range(lags):
        a, b = vectors[: len(vectors) - lag : step], vectors[lag::step][: len(vectors[: len(vectors) - lag : step])]
        if of_velocities:
            tensor = np.einsum("tai,taj->taij", a, b).mean(axis=(0, 1))
            tensor = (tensor + tensor.T) / 2
        else:
            tensor = np.einsum("tai,taj->taij", b - a, b - a).mean(axis=(0, 1))
        xx, yy, zz = np.diag(tensor)
        rows.append([xx, yy, zz, tensor[0, 1], tensor[0, 2], tensor[1, 2], xx + yy + zz])
    return np.array(rows) if components else np.array(rows)[:, 6]


class Pairs(unittest.TestCase):
    def test_counts_are_those_of_the_definition(self):
        for box in (None, np.diag([9.0, 10.0, 11.0]), TRICLINIC):
            first = RANDOM.uniform(-3, 15, (40, 3))
            second = RANDOM.uniform(0, 12, (23, 3))
            for others in (None, second):
                found = pathstat.pair_counts(first, others, box=box, cutoff=8.0, bins=37)
                self.assertEqual(found.shape, (1, 37))
                wanted = plain_counts(first, first if others is None else others, box, 8.0, 37)
                np.testing.assert_array_equal(found[0], wanted)

    def test_an_ideal_gas_has_no_structure(self):
        frames = RANDOM.uniform(0, 20, (40, 500, 3))
        found = pathstat.rdf(frames, box=[20, 20, 20, 90, 90, 90], cutoff=9.0, bins=30)
        np.testing.assert_allclose(found.g[5:], 1, atol=0.08)
        self.assertAlmostEqual(found.r[0], 0.15)
        factor = pathstat.structure_factor(np.ones(60), 0.1, 0.03)
        np.testing.assert_allclose(factor.values, 1, atol=1e-12)

    def test_cells_are_laid_out_as_their_lengths_and_angles_say(self):
        vectors = pathstat.box_vectors([11, 12, 13, 70, 80, 100])
        np.testing.assert_allclose(np.linalg.norm(vectors, axis=1), [11, 12, 13])
        cosine = vectors[1] @ vectors[2] / (12 * 13)
        self.assertAlmostEqual(np.degrees(np.arccos(cosine)), 70)

    def test_density_counts_every_atom(self):
        frames = RANDOM.uniform(-30, 30, (4, 300, 3))
        found = pathstat.density(frames, box=TRICLINIC, points=[4, 5, 6])
        self.assertEqual(found.shape, (6, 5, 4))
        self.assertAlmostEqual(found.mean() * abs(np.linalg.det(TRICLINIC)), 300, places=9)


class Correlations(unittest.TestCase):
    def test_are_those_of_the_definition(self):
        for frames, atoms in ((2, 1), (30, 11), (400, 9)):
            vectors = RANDOM.normal(size=(frames, atoms, 3)).cumsum(axis=0) + 1000
            for step in (1, 3):
                for components in (False, True):
                    for kernel, of_velocities in ((pathstat.msd, False), (pathstat.vac, True)):
                        given = vectors - 1000 if of_velocities else vectors
                        found = kernel(given, origin_step=step, components=components)
                        wanted = plain_correlation(given, frames, step, of_velocities, components)
                        scale = np.abs(wanted).max()
                        np.testing.assert_allclose(found, wanted, rtol=1e-9, atol=1e-10 * scale)

    def test_transforms_agree_with_the_definition(self):
        vectors = RANDOM.normal(size=(3000, 64, 3)).cumsum(axis=0)
        found = pathstat.msd(vectors)
        for lag in (0, 1, 2, 500, 2990):
            wanted = ((vectors[lag:] - vectors[: len(vectors) - lag]) ** 2).sum(axis=2).mean()
            self.assertAlmostEqual(found[lag], wanted, delta=1e-9 * max(wanted, 1e-9))

    def test_do_not_depend_on_the_threads_nor_on_other_callers(self):
        vectors = RANDOM.normal(size=(500, 100, 3)).cumsum(axis=0)
        wanted = pathstat.msd(vectors, 100)
        before = pathstat.threads()
        results = []
        try:
            for count in (1, 2, 3):
                pathstat.set_threads(count)
                results.append(pathstat.msd(vectors, 100))
        finally:
            pathstat.set_threads(before)
        callers = [threading.Thread(target=lambda: results.append(pathstat.msd(vectors, 100))) for _ in range(3)]
        for caller in callers:
            caller.start()
        for caller in callers:
            caller.join()
        self.assertEqual(len(results), 6)
        for result in results:
            np.testing.assert_array_equal(result, wanted)

    def test_of_dipoles(self):
        dipoles = RANDOM.normal(size=(700, 3))
        for step in (1, 4):
            wanted = plain_correlation(dipoles[:, None], 700, step, True, True)
            np.testing.assert_allclose(pathstat.dac(dipoles, components=True, origin_step=step), wanted, atol=1e-11)
            np.testing.assert_allclose(pathstat.dac(dipoles, origin_step=step), wanted[:, 6], atol=1e-11)

    def test_a_cosine_has_one_line(self):
        times = np.arange(4096) * 0.01
        found = pathstat.power_spectrum(np.cos(2 * np.pi * 12.5 * times), 0.01)
        self.assertAlmostEqual(found.k[found.values.argmax()], 12.5 / 0.03, delta=found.k[1])

    def test_a_line_is_fitted(self):
        slope, intercept = pathstat.line_fit(3 + 0.5 * np.arange(4, 9, 0.25), 0.25, 4)
        self.assertAlmostEqual(slope, 0.5)
        self.assertAlmostEqual(intercept, 3)


class Series(unittest.TestCase):
    def test_dipoles_of_molecules(self):
        frames = RANDOM.uniform(-5, 5, (6, 9, 3))
        charges = np.tile([-0.8, 0.4, 0.4], 3)
        neutral = np.einsum("fai,a->fi", frames, charges) * 4.802
        np.testing.assert_allclose(pathstat.dipoles(frames, charges, np.repeat([0, 1, 2], 3)), neutral)
        np.testing.assert_allclose(pathstat.dipoles(frames, np.abs(charges)), 0)

    def test_response_properties(self):
        frames = 500
        volume = RANDOM.normal(30000, 40, frames)
        enthalpy = RANDOM.normal(-9000, 30, frames)
        found = pathstat.fluctuations(
            "NPT", temperature=300.0, volume=volume, pressure=1e-4, enthalpy=enthalpy, mass=18000, atoms=3000
        )
        joule = 1.380649e-23 * 300 * volume.mean() * 1e-30
        self.assertAlmostEqual(found["isothermal_compressibility"] / (volume.var() * 1e-60 / joule * 1e9), 1, places=3)
        self.assertAlmostEqual(found["isobaric_heat_capacity"] / (enthalpy.var() * 1e3 / (0.00198717 * 9e4)), 1)
        dipole = RANDOM.normal(0, 30, (frames, 3))
        found = pathstat.fluctuations("NVT", temperature=300.0, volume=30000.0, dipole=dipole)
        fluctuation = dipole.var(axis=0).sum()
        wanted = 1 + 4 * np.pi / 3 * fluctuation * 1e-36 / (30000e-24 * 1.380649e-16 * 300)
        self.assertAlmostEqual(found["dielectric_constant"] / wanted, 1, places=3)

    def test_a_summary_knows_the_error_of_correlated_numbers(self):
        a, n = 0.9, 40000
        noise = RANDOM.normal(size=n)
        series = np.empty(n)
        series[0] = noise[0]
        for k in range(1, n):
            series[k] = a * series[k - 1] + noise[k]
        found = pathstat.summary(series)
        self.assertAlmostEqual(found["error"] * (1 - a) * np.sqrt(n), 1, delta=0.2)
        self.assertAlmostEqual(found["correlation_time"], 0.5 * (1 + a) / (1 - a), delta=2)
        self.assertTrue(np.isnan(pathstat.summary([])["mean"]))


class Habits(unittest.TestCase):
    def test_wrong_values_are_exceptions(self):
        three = np.zeros((4, 5, 3))
        for wrong in (
            lambda: pathstat.pair_counts(np.zeros((5, 2)), cutoff=3, bins=4),
            lambda: pathstat.pair_counts(three, three[:2], cutoff=3, bins=4),
            lambda: pathstat.pair_counts(three, cutoff=-1, bins=4),
            lambda: pathstat.pair_counts(three, cutoff=3, bins=0),
            lambda: pathstat.pair_counts(three, box=np.full((3, 3), np.nan), cutoff=3, bins=4),
            lambda: pathstat.msd(three, 4),
            lambda: pathstat.msd(three, origin_step=0),
            lambda: pathstat.msd(three[:1]),
            lambda: pathstat.dac(np.zeros((4, 2))),
            lambda: pathstat.dipoles(three, np.zeros(4)),
            lambda: pathstat.density(three, box=np.zeros((3, 3)), points=[2, 2, 2]),
            lambda: pathstat.density(three, box=TRICLINIC, points=[2, 0, 2]),
            lambda: pathstat.power_spectrum([1, 2], 0.1),
            lambda: pathstat.fluctuations("NVE", temperature=1, volume=1, enthalpy=3),
        ):
            with self.assertRaises(ValueError):
                wrong()

    def test_arrays_of_any_kind_are_taken(self):
        given = RANDOM.normal(size=(10, 8, 3)).astype(np.float32)
        wanted = pathstat.msd(given.astype(float))
        np.testing.assert_array_equal(pathstat.msd(given), wanted)
        np.testing.assert_array_equal(pathstat.msd(np.asfortranarray(given)), wanted)
        np.testing.assert_array_equal(pathstat.msd(np.repeat(given, 2, axis=1)[:, ::2]), wanted)
        result = pathstat.rdf(given, box=TRICLINIC, cutoff=3, bins=5)
        np.testing.assert_array_equal(pickle.loads(pickle.dumps(result)).g, result.g)


if __name__ == "__main__":
    unittest.main()
