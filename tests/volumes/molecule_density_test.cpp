#include "volumes/molecule_density.h"

#include "structure/crystal_vectors.h"
#include "testing.h"

namespace pathstat {
namespace {

/// Any three axes at right angles, as unit vectors.
std::array<Vector3, 3> any_axes(std::mt19937& random) {
  std::normal_distribution<double> any;
  const Vector3 x = crystal::unit({any(random), any(random), any(random)});
  const Vector3 z = crystal::unit(crystal::cross(x, {any(random), any(random), any(random)}));
  return {x, crystal::cross(z, x), z};
}

constexpr Matrix3 skewed{14, 0, 0, 3, 13, 0, -2, 4, 15};

TEST(MoleculeDensity, turns_with_each_molecule_and_looks_across_faces) {
  // Beside each molecule, wherever it stands and lies, there is one atom at the same place on its axes.
  const double edge = cube_within(skewed);
  constexpr std::int32_t points = 9;
  const double step = edge / points;
  const Vector3 beside{2 * step, -step, 3 * step};
  std::mt19937 random(7);
  std::uniform_real_distribution<double> anywhere(-30, 30);
  MoleculeDensity density(points, edge);
  constexpr int frames = 200;
  for (int frame = 0; frame < frames; ++frame) {
    const auto axes = any_axes(random);
    const Vector3 middle{anywhere(random), anywhere(random), anywhere(random)};
    std::vector<double> xyz;
    const auto add = [&](const Vector3& on_axes) {
      const int image = frame % 5 - 2;
      for (std::size_t k = 0; k < 3; ++k) {
        double x = middle[k] + image * skewed[k] + (image + 1) * skewed[6 + k];
        for (std::size_t axis = 0; axis < 3; ++axis) x += on_axes[axis] * axes[axis][k];
        xyz.push_back(x);
      }
    };
    xyz.assign(middle.begin(), middle.end());
    add({1, 0, 0}), add({-0.4, 0.9, 0}), add(beside);
    const std::vector<std::int32_t> places{0, 1, 2, 3}, molecules{1, 1, 1, 2};
    ASSERT_TRUE(density.add(xyz, places, molecules, std::array{MoleculeAtoms{0, 1, 2, 1}}, skewed));
  }
  EXPECT_EQ(density.samples(), frames);
  const auto mean = density.mean();
  const std::size_t at = ((4 + 3) * points + (4 - 1)) * points + (4 + 2);
  EXPECT_NEAR(mean[at], 1 / (step * step * step), 1e-6 / (step * step * step));
  EXPECT_NEAR(std::accumulate(mean.begin(), mean.end(), 0.0), mean[at], 1e-9);  // its own atoms don't count
}

TEST(MoleculeDensity, of_atoms_anywhere_is_their_number_over_the_volume_at_all_points) {
  const double edge = cube_within(skewed);
  MoleculeDensity density(3, edge);
  std::mt19937 random(11);
  std::uniform_real_distribution<double> anywhere(0, 1);
  constexpr std::size_t atoms = 200;
  constexpr int frames = 1000;
  std::vector<std::int32_t> places(atoms), molecules(atoms, 2);
  std::iota(places.begin(), places.end(), 3);
  for (int frame = 0; frame < frames; ++frame) {
    const auto axes = any_axes(random);
    std::vector<double> xyz{0, 0, 0};
    xyz.insert(xyz.end(), axes[0].begin(), axes[0].end());
    xyz.insert(xyz.end(), axes[1].begin(), axes[1].end());
    for (std::size_t k = 0; k < atoms; ++k) {
      const auto x = crystal::product(skewed, {anywhere(random), anywhere(random), anywhere(random)});
      xyz.insert(xyz.end(), x.begin(), x.end());
    }
    density.add(xyz, places, molecules, std::array{MoleculeAtoms{0, 1, 2, 1}}, skewed);
  }
  const double expected = atoms / (14.0 * 13.0 * 15.0);
  const double counted = expected * frames * std::pow(edge / 3, 3);
  for (const auto value : density.mean()) EXPECT_NEAR(value, expected, 5 * expected / std::sqrt(counted));
}

TEST(MoleculeDensity, leaves_out_molecules_on_a_line_and_refuses_flat_cells) {
  MoleculeDensity density(3, 3);
  const std::vector<double> line{0, 0, 0, 1, 0, 0, 2, 0, 0, 0, 1, 0};
  const std::vector<std::int32_t> places{3}, molecules{2};
  const std::array around{MoleculeAtoms{0, 1, 2, 1}};
  EXPECT_TRUE(density.add(line, places, molecules, around, skewed));
  EXPECT_EQ(density.samples(), 0);
  EXPECT_FALSE(density.add(line, places, molecules, around, {1, 0, 0, 0, 1, 0, 1, 1, 0}));
  EXPECT_EQ(cube_within({1, 0, 0, 0, 1, 0, 1, 1, 0}), 0);
}

}  // namespace
}  // namespace pathstat
