#include <pybind11/stl.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "arrays.h"
#include "correlation/linear_fit.h"
#include "desk/summary/series_statistics.h"
#include "extraction/dipole_moment.h"
#include "reports/response.h"
#include "support/parallel.h"
#include "transforms/transforms.h"

namespace pathstat::python {
namespace {

constexpr std::size_t fewest_transformed = 4;

std::span<const double> series_of(const Array& array, const char* name) {
  if (array.ndim() != 1) throw py::value_error(std::string(name) + " must have one dimension");
  return values_of(array);
}

Array cosine_transform(const Array& values) {
  const auto given = series_of(values, "the values");
  if (given.size() < fewest_transformed) throw py::value_error("the transform needs four points or more");
  Array result(values.size());
  const auto room = room_of(result);
  std::ranges::copy(given, room.begin());
  const KernelCall call;
  fftcos_(room, room);
  return result;
}

py::tuple line_fit(const Array& values, std::int32_t offset) {
  const auto given = series_of(values, "the values");
  if (given.size() < 2) throw py::value_error("a line needs two points or more");
  double slope = 0, intercept = 0;
  linefit_(given, slope, intercept, offset);
  return py::make_tuple(slope, intercept);
}

py::dict statistics(const Array& values) {
  const auto numbers = series_of(values, "the series");
  desk::SeriesStatistics found;
  {
    const KernelCall call;
    found = desk::series_statistics(numbers);
  }
  constexpr std::array<const char*, 5> doubts{"", "constant", "drifting", "too short", "errors disagree"};
  py::dict result;
  const auto put = [&](const char* name, const auto& value) { result[name] = value; };
  const double none = std::nan("");
  put("values", found.values);
  put("skipped", found.skipped);
  put("mean", found.values > 0 ? found.mean : none);
  put("error", found.error.value_or(none));
  put("deviation", found.deviation.value_or(none));
  put("drift", found.drift.value_or(none));
  put("drift_error", found.drift_error.value_or(none));
  put("correlation_time", found.correlation_time.value_or(none));
  put("effective", found.effective.value_or(none));
  put("doubt", doubts[static_cast<std::size_t>(desk::doubt_about(found))]);
  return result;
}

/// A row of the fluctuation table from its columns.
/// @param columns  (columns, frames), as the file of the row has them
std::vector<double> fluctuation(std::int32_t id, std::int32_t ensemble, const Array& columns, double mass,
                                std::int32_t atoms, double degrees_of_freedom, double first_volume) {
  if (columns.ndim() != 2 || columns.shape(0) < 4 || columns.shape(1) < 1)
    throw py::value_error("columns must have the shape (columns, frames)");
  const auto frames = static_cast<std::size_t>(columns.shape(1));
  const auto column = [&](std::int32_t number) {
    return values_of(columns).subspan(static_cast<std::size_t>(number - 1) * frames, frames);
  };
  const auto mean = [&](auto value) {
    double sum = 0;
    for (std::size_t k = 0; k < frames; ++k) sum += value(k);
    return sum / static_cast<double>(frames);
  };
  const auto mean_of = [&](std::int32_t number) { return mean([&](std::size_t k) { return column(number)[k]; }); };
  EntryMeans means{.pressure = mean_of(1), .volume = mean_of(2), .temperature = mean_of(3)};
  const auto& moments = moments_of(id, ensemble);
  for (std::size_t m = 0; m < moments.size(); ++m) {
    const auto [first, second, of_vectors] = moments[m];
    const std::int32_t needed = std::max(first, second) + (of_vectors ? 2 : 0);
    if (first == 0) continue;
    if (needed > columns.shape(0)) throw py::value_error("a column is missing");
    for (std::int32_t axis = 0; axis < (of_vectors ? 3 : 1); ++axis) {
      const double single = mean_of(first + axis);
      const double value =
          second == 0 ? (of_vectors ? single * single : single)
                      : mean([&](std::size_t k) { return column(first + axis)[k] * column(second + axis)[k]; });
      means.moments[m] += value;
    }
  }
  const SimulatedSystem system{ensemble, atoms, mass, degrees_of_freedom, first_volume};
  const auto values = response(id, system, means);
  return {values.begin(), values.begin() + response_count(id, ensemble)};
}

/// The atoms of one sign, molecule by molecule.
struct SignedAtoms {
  std::vector<std::int32_t> tags, atoms, images;
  std::vector<double> charges;
  std::vector<std::size_t> ends;  ///< of each molecule

  SignedAtoms(std::span<const std::vector<std::int32_t>> molecules, std::span<const double> all, bool positive) {
    for (std::size_t m = 0; m < molecules.size(); ++m) {
      for (const auto atom : molecules[m]) {
        const double charge = all[static_cast<std::size_t>(atom)];
        if (positive ? !(charge > 0) : !(charge < 0)) continue;
        tags.push_back(static_cast<std::int32_t>(m + 1));
        atoms.push_back(atom + 1);
        charges.push_back(charge);
      }
      ends.push_back(atoms.size());
    }
    images.resize(3 * atoms.size());
  }
  ChargeList of(std::size_t molecule) const {
    const std::size_t first = molecule == 0 ? 0 : ends[molecule - 1];
    return ChargeList{tags, atoms, images, charges}.part(first, ends[molecule] - first);
  }
};

Array dipoles(const Array& positions, const Array& charges, const Integers& molecules) {
  const Frames frames(positions, "positions");
  const auto atoms = static_cast<py::ssize_t>(frames.atoms);
  if (charges.ndim() != 1 || charges.size() != atoms || molecules.ndim() != 1 || molecules.size() != atoms)
    throw py::value_error("charges and molecules must have one element for each atom");
  std::vector<std::vector<std::int32_t>> members;
  for (py::ssize_t k = 0; k < atoms; ++k) {
    const auto molecule = molecules.at(k);
    if (molecule < 0 || molecule >= atoms) throw py::value_error("molecules must be numbers in 0 ... atoms - 1");
    if (static_cast<std::size_t>(molecule) >= members.size()) members.resize(static_cast<std::size_t>(molecule) + 1);
    members[static_cast<std::size_t>(molecule)].push_back(static_cast<std::int32_t>(k));
  }
  Array result({static_cast<py::ssize_t>(frames.count), py::ssize_t{3}});
  const auto room = room_of(result);
  const auto charged = values_of(charges);
  const KernelCall call;
  const SignedAtoms positive(members, charged, true), negative(members, charged, false);
  for_pieces(frames.count, 1, [&](std::size_t first, std::size_t end) {
    for (std::size_t f = first; f < end; ++f) {
      Vector3 sum{};
      for (std::size_t m = 0; m < members.size(); ++m) {
        DipoleMoment moment;
        std::int32_t status = 0;
        calcdipole_(frames.frame(f), 0, Matrix3{}, static_cast<std::int32_t>(m + 1), positive.of(m), negative.of(m),
                    moment, status);
        for (std::size_t axis = 0; axis < 3; ++axis) sum[axis] += moment.dipole[axis];
      }
      std::ranges::copy(sum, room.begin() + static_cast<std::ptrdiff_t>(3 * f));
    }
  });
  return result;
}

}  // namespace

void add_series_kernels(py::module_& module) {
  module.def("cosine_transform", &cosine_transform, py::arg("values"));
  module.def("line_fit", &line_fit, py::arg("values"), py::arg("offset"));
  module.def("statistics", &statistics, py::arg("values"));
  module.def("fluctuation", &fluctuation, py::arg("id"), py::arg("ensemble"), py::arg("columns"), py::arg("mass"),
             py::arg("atoms"), py::arg("degrees_of_freedom"), py::arg("first_volume"));
  module.def("dipoles", &dipoles, py::arg("positions"), py::arg("charges"), py::arg("molecules"));
}

}  // namespace pathstat::python
