#include <pybind11/stl.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <optional>
#include <vector>

#include "arrays.h"
#include "pairs/pair_histogram.h"
#include "pairs/pair_search.h"
#include "transforms/transforms.h"
#include "volumes/number_density.h"

namespace pathstat::python {
namespace {

constexpr std::int32_t periodic_in_three = 100;
constexpr py::ssize_t most_bins = 100'000'000;

/// The box of a frame: vectors as rows, of all frames or one for each; none without periodicity.
class Boxes {
 public:
  Boxes(const py::object& boxes, std::size_t frames) {
    if (boxes.is_none()) return;
    array_ = Array::ensure(boxes);
    if (!array_) throw py::error_already_set();
    const bool one = array_.ndim() == 2;
    const bool fits = (one || (array_.ndim() == 3 && array_.shape(0) == static_cast<py::ssize_t>(frames))) &&
                      array_.shape(array_.ndim() - 1) == 3 && array_.shape(array_.ndim() - 2) == 3;
    if (!fits) throw py::value_error("box must have the shape (3, 3), or (frames, 3, 3): the vectors as rows");
    stride_ = one ? 0 : 9;
    values_ = values_of(array_);
    for (const double value : values_) {
      if (!std::isfinite(value)) throw py::value_error("box holds a number that is not finite");
    }
  }
  bool periodic() const { return !values_.empty(); }
  std::array<Vector3, 3> vectors(std::size_t frame) const {
    std::array<Vector3, 3> result;
    for (std::size_t k = 0; k < 9; ++k) result[k / 3][k % 3] = values_[stride_ * frame + k];
    return result;
  }

 private:
  Array array_;
  std::span<const double> values_;
  std::size_t stride_ = 0;
};

Array pair_counts(const Array& positions, const std::optional<Array>& others, const py::object& box, double cutoff,
                  py::ssize_t bins) {
  const Frames first(positions, "positions");
  const std::optional<Frames> second = others ? std::optional<Frames>(std::in_place, *others, "others") : std::nullopt;
  if (second && second->count != first.count) throw py::value_error("positions and others differ in frames");
  if (!(cutoff > 0) || !std::isfinite(cutoff)) throw py::value_error("cutoff must be above 0");
  if (bins < 1 || bins > most_bins) throw py::value_error("bins must lie in 1 ... 10^8");
  const Boxes boxes(box, first.count);
  Array counts({static_cast<py::ssize_t>(first.count), bins});
  const auto room = room_of(counts);
  std::int32_t status = 0;
  {
    const KernelCall call;
    std::ranges::fill(room, 0.0);
    PairSearch search;
    for (std::size_t f = 0; f < first.count && status == 0; ++f) {
      PairCount pairs;
      pairs.list1 = first.frame(f);
      pairs.set_mode = second ? pair_sets::between_two : pair_sets::within_one;
      if (second) pairs.list2 = second->frame(f);
      pairs.cutoff = cutoff;
      pairs.interval = cutoff / static_cast<double>(bins);
      if (boxes.periodic()) {
        pairs.periodic_type = periodic_in_three;
        pairs.vectors = boxes.vectors(f);
        const auto& [a, b, c] = pairs.vectors;
        cellrange_(periodic_in_three, a, b, c, cutoff, pairs.repeats[0], pairs.repeats[1], pairs.repeats[2]);
        widen_repeats(pairs);
      }
      calculaterdf_(pairs, room.subspan(f * static_cast<std::size_t>(bins), static_cast<std::size_t>(bins)), search,
                    status);
      KernelCall::ask_for_signals();
    }
  }
  if (status == 2) throw std::bad_alloc();
  if (status != 0) throw py::value_error("these pairs cannot be counted");
  return counts;
}

Array radial_transform(const Array& function, double spacing) {
  if (function.ndim() != 1 || function.size() < 2) throw py::value_error("the function needs two points or more");
  if (!(spacing > 0)) throw py::value_error("the spacing must be above 0");
  Array result(function.size());
  std::ranges::copy(values_of(function), room_of(result).begin());
  const auto room = room_of(result);
  const KernelCall call;
  fft3d_(room, spacing);
  return result;
}

Array grid_counts(const Array& positions, const Array& box, const std::array<std::int32_t, 3>& points) {
  const Frames frames(positions, "positions");
  const Boxes boxes(box, frames.count);
  std::int64_t all = 1;
  for (const auto count : points) {
    if (count < 1 || (all *= count) > most_bins) throw py::value_error("points must be 1 or more, 10^8 in all at most");
  }
  std::vector<std::int32_t> places(frames.atoms);
  for (std::size_t k = 0; k < places.size(); ++k) places[k] = static_cast<std::int32_t>(k);
  bool flat = false;
  Array result({points[2], points[1], points[0]});
  const auto room = room_of(result);
  {
    const KernelCall call;
    NumberDensity density(points);
    for (std::size_t f = 0; f < frames.count && !flat; ++f) {
      const auto [a, b, c] = boxes.vectors(f);
      flat = !density.add(frames.frame(f), places, {a[0], a[1], a[2], b[0], b[1], b[2], c[0], c[1], c[2]});
      KernelCall::ask_for_signals();
    }
    std::ranges::copy(density.counts(), room.begin());
  }
  if (flat) throw py::value_error("a box has no volume");
  return result;
}

}  // namespace

void add_pair_kernels(py::module_& module) {
  module.def("pair_counts", &pair_counts, py::arg("positions"), py::arg("others") = py::none(), py::kw_only(),
             py::arg("box") = py::none(), py::arg("cutoff"), py::arg("bins"));
  module.def("radial_transform", &radial_transform, py::arg("function"), py::arg("spacing"));
  module.def("grid_counts", &grid_counts, py::arg("positions"), py::kw_only(), py::arg("box"), py::arg("points"));
}

}  // namespace pathstat::python
