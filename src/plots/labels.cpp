#include "plots/labels.h"

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "state/analysis_settings.h"

namespace pathstat {
namespace {

constexpr std::array<std::int32_t, 13> wheel{10, 4, 15, 7, 3, 6, 12, 13, 2, 8, 14, 9, 5};

struct FixedLabel {
  std::int32_t id;
  std::string_view text;
};

constexpr auto fixed_labels = std::to_array<FixedLabel>({
    {1, "Total Energy"},
    {2, "Potential Energy"},
    {3, "Kinetic Energy"},
    {4, "Non-bond Energy"},
    {5, "Valence Energy"},
    {6, "Hamiltonian"},
    {101, "Bond Energy"},
    {102, "Angle Energy"},
    {103, "Torsion Energy"},
    {104, "Inversion Energy"},
    {105, "Urey Bradley Energy"},
    {106, "Coulomb Energy"},
    {107, "vdW Energy"},
    {108, "Hbond Energy"},
    {109, "Restraint Energy"},
    {110, "User Energy"},
    {111, "Stret-Stret E"},
    {112, "Stret-Bend-Stret E"},
    {113, "Bend-Bend E"},
    {114, "Tors-Stret E"},
    {115, "Tors-Bend-Bend E"},
    {116, "Sep Stret-Stret E"},
    {117, "Inv-Inv E"},
    {118, "Tors-Tors E"},
    {119, "vdW Repulsive Energy"},
    {120, "vdW Attractive Energy"},
    {121, "Bend-Tors-Bend E"},
    {122, "Three Body Energy"},
    {123, "Cross Term E"},
    {124, "Stret-Tors-Stret E"},
    {201, "Temperature"},
    {202, "Radius of Gyration"},
    {203, "Pressure"},
    {204, "Volume"},
    {207, "Density"},
    {208, "Area"},
    {301, "Dipole"},
    {401, "Free Volume"},
    {402, "Fractional Free Volume"},
    {801, "Ks"},
    {802, "Kt"},
    {803, "Gamma_v"},
    {804, "Gruneisen Parameter"},
    {805, "Cp"},
    {806, "Cv"},
    {807, "beta"},
    {808, "mu"},
    {809, "phi"},
    {810, "omega"},
    {901, "Dielectric Constant"},
});

/// Labels by column, where the periodic directions of the trajectory are as given; -1 stands for any.
struct ColumnLabels {
  std::int32_t id;
  std::int32_t periodicity;
  std::array<std::string_view, 6> columns;
};

constexpr std::array<std::string_view, 6> stress{"Stress XX", "Stress YY", "Stress ZZ",
                                                 "Stress YZ", "Stress XZ", "Stress XY"};
constexpr auto column_labels = std::to_array<ColumnLabels>({
    {205, 3, stress},
    {205, 2, stress},
    {206, 3, {"A", "B", "C", "alpha", "beta", "gamma"}},
    {206, 2, {"U", "V", "theta"}},
    {302, -1, {"Dipole Vector X", "Dipole Vector Y", "Dipole Vector Z"}},
});

/// A fluctuation that two series give in this ensemble: the label of the first curve and of any other.
struct CurvePair {
  std::int32_t id;
  std::int32_t ensemble;
  std::string_view first;
  std::string_view other;
};

constexpr auto curve_pairs = std::to_array<CurvePair>({
    {803, 1, "Gamma_v - Pressure-Potential", "Gamma_v - Pressure-Kinetic"},
    {806, 2, "Cv - Total Energy", "Cv - Potential Energy"},
    {806, 1, "Cv - Potential Energy", "Cv - Kinetic Energy"},
});

constexpr std::array<std::string_view, 5> pooled_measures{"Distance Measures", "Angle Measures", "Torsion Measures",
                                                          "Plane Measures", "Inversion Measures"};
constexpr std::array<std::string_view, 3> pooled_vectors{"Distance Vector X", "Distance Vector Y", "Distance Vector Z"};
constexpr std::array<std::string_view, 3> component_suffixes{" X", " Y", " Z"};

MeasureLabels measure_labels = nullptr;

template <std::size_t N>
std::string_view entry_of(const std::array<std::string_view, N>& labels, std::int32_t index) {
  return index >= 1 && index <= static_cast<std::int32_t>(N) ? labels[static_cast<std::size_t>(index - 1)]
                                                             : std::string_view{};
}

std::string single_measure(std::int32_t id, std::int32_t number) {
  Text<32> label;
  if (measure_labels == nullptr || !measure_labels(id, number, label)) return {};
  return label.str();
}

std::string measure_label(std::int32_t id, std::int32_t mode, std::int32_t index) {
  if (id < 506) {
    return mode == distribution_mode ? std::string(pooled_measures[static_cast<std::size_t>(id - 501)])
                                     : single_measure(id, index);
  }
  if (mode == distribution_mode) return std::string(entry_of(pooled_vectors, index));
  if (index < 1) return {};
  const std::string distance = single_measure(501, (index - 1) / 3 + 1);
  if (distance.empty() || distance.size() >= 31) return {};
  return distance + std::string(component_suffixes[static_cast<std::size_t>((index - 1) % 3)]);
}

std::string_view listed_label(std::int32_t id, std::int32_t index) {
  for (const auto& pair : curve_pairs) {
    if (pair.id == id && pair.ensemble == trj_gui_i_.ensemble) return index == 1 ? pair.first : pair.other;
  }
  for (const auto& row : column_labels) {
    if (row.id == id && (row.periodicity == -1 || row.periodicity == trj_gui_i_.periodicity)) {
      return entry_of(row.columns, index);
    }
  }
  if (id == 206 && trj_gui_i_.periodicity == 1) return "D";
  for (const auto& row : fixed_labels) {
    if (row.id == id) return row.text;
  }
  return {};
}

}  // namespace

std::int32_t colourwheel_(std::int32_t n) { return wheel[static_cast<std::size_t>(n % 13)]; }

void trjdatalabel_(std::int32_t id, std::int32_t mode, std::int32_t index, TextField label, std::int32_t& status) {
  status = 0;
  const bool is_measure = id >= 501 && id <= 506;
  const std::string text = is_measure ? measure_label(id, mode, index) : std::string(listed_label(id, index));
  label.set(text.empty() ? "Unknown" : text);
}

void register_measure_labels(MeasureLabels source) { measure_labels = source; }

}  // namespace pathstat
