#include <algorithm>
#include <cstdint>
#include <vector>

#include "arrays.h"
#include "correlation/dipole_pairs.h"
#include "correlation/spectral_run.h"
#include "correlation/spectral_sums.h"
#include "support/parallel.h"

namespace pathstat::python {
namespace {

/// Vectors of atoms through frames, which give them batch by batch.
class Vectors {
 public:
  explicit Vectors(const Frames& frames) : frames_(frames) {}

  std::int64_t batches() const {
    return static_cast<std::int64_t>((frames_.atoms + atoms_in_batch - 1) / atoms_in_batch);
  }
  AtomBatch batch(std::int64_t which, std::vector<double>& room) const {
    room.assign(frames_.count * values_in_record, 0.0);
    const auto first = static_cast<std::size_t>(which) * atoms_in_batch;
    const std::size_t count = std::min(atoms_in_batch, frames_.atoms - first);
    for (std::size_t t = 0; t < frames_.count; ++t) {
      const double* from = frames_.values.data() + 3 * (frames_.atoms * t + first);
      double* to = room.data() + t * values_in_record;
      for (std::size_t k = 0; k < count; ++k) {
        for (std::size_t axis = 0; axis < 3; ++axis) to[axis * atoms_in_batch + k] = from[3 * k + axis];
      }
    }
    return AtomBatch(room);
  }

 private:
  Frames frames_;
};

/// Runs over the batches on all threads, and joins in their order.
void over_batches(const Vectors& vectors, const std::function<void(const AtomBatch&, std::size_t worker)>& work,
                  const std::function<void(std::size_t worker)>& join) {
  const auto piece = static_cast<std::int64_t>(4 * thread_count());
  std::vector<std::vector<double>> rooms(thread_count());
  for (std::int64_t first = 0; first < vectors.batches(); first += piece) {
    for_blocks(
        std::min(piece, vectors.batches() - first),
        [&](std::int64_t k, std::size_t worker) { work(vectors.batch(first + k, rooms[worker]), worker); },
        [&](std::int64_t, std::size_t worker) { join(worker); });
    KernelCall::ask_for_signals();
  }
}

/// Sums over all pairs of frames of the given lags, `columns` of each.
std::vector<double> sum_directly(const Vectors& vectors, const OriginSeries& series, PairKernel kernel,
                                 std::size_t columns, const std::vector<std::int64_t>& lags) {
  std::vector<double> total(lags.size() * columns);
  std::vector<std::vector<double>> sums(thread_count(), total);
  const auto work = [&](const AtomBatch& batch, std::size_t worker) {
    for (std::size_t k = 0; k < lags.size(); ++k) {
      const auto into = std::span(sums[worker]).subspan(k * columns, columns);
      for (std::int64_t pair = 0; pair < series.pairs(lags[k]); ++pair) {
        const auto origin = static_cast<std::size_t>(pair * series.step);
        kernel(batch.frame(origin), batch.frame(origin + static_cast<std::size_t>(lags[k])), into);
      }
    }
  };
  over_batches(vectors, work, [&](std::size_t worker) {
    for (std::size_t k = 0; k < total.size(); ++k) total[k] += sums[worker][k];
    std::ranges::fill(sums[worker], 0.0);
  });
  return total;
}

/// Sums over atoms and pairs of frames by lag; the last column is the total.
Array correlation_sums(const Array& array, std::int64_t max_lag, std::int64_t origin_step, bool of_velocities,
                       bool components) {
  const Frames frames(array, "the vectors");
  if (array.ndim() != 3) throw py::value_error("the vectors must have the shape (frames, atoms, 3)");
  if (origin_step < 1) throw py::value_error("origin_step must be 1 or more");
  if (frames.count < 2) throw py::value_error("there is nothing to correlate in fewer than two frames");
  // A frame behind the last one: the frames of a series end with one that takes part in no pair.
  const OriginSeries series{static_cast<std::int64_t>(frames.count) + 1, origin_step, max_lag + 1};
  if (max_lag < 0 || max_lag > static_cast<std::int64_t>(frames.count) - 1)
    throw py::value_error("max_lag must lie in 0 ... frames - 1");
  const SpectralShape shape{series, of_velocities, components};
  const std::size_t columns = components ? correlation_columns : 1;
  const PairKernel kernel = of_velocities ? (components ? add_velocity_products : add_velocity_product)
                                          : (components ? add_displacement_products : add_squared_displacement);
  Array result({static_cast<py::ssize_t>(max_lag + 1), static_cast<py::ssize_t>(columns)});
  const auto room = room_of(result);
  const KernelCall call;
  const Vectors vectors(frames);
  std::vector<std::int64_t> lags;
  if (transforms_pay(shape, static_cast<std::int64_t>(frames.atoms))) {
    SpectralSums sums(shape, thread_count());
    over_batches(
        vectors, [&](const AtomBatch& batch, std::size_t worker) { sums.transform(batch, worker); },
        [&](std::size_t worker) { sums.join(worker); });
    const auto found = sums.lags(static_cast<std::int64_t>(frames.atoms));
    for (std::size_t lag = 0; lag < found.sure.size(); ++lag) {
      const auto row = room.subspan(lag * columns, columns);
      std::copy_n(found.sums.begin() + static_cast<std::ptrdiff_t>(lag * shape.products()), shape.products(),
                  row.begin());
      if (components) row[total_column] = row[0] + row[1] + row[2];
      if (!found.sure[lag]) lags.push_back(static_cast<std::int64_t>(lag));
    }
  } else {
    for (std::int64_t lag = 0; lag <= max_lag; ++lag) lags.push_back(lag);
  }
  const auto direct = sum_directly(vectors, series, kernel, columns, lags);
  for (std::size_t k = 0; k < lags.size(); ++k) {
    std::copy_n(direct.begin() + static_cast<std::ptrdiff_t>(k * columns), columns,
                room.begin() + lags[k] * static_cast<std::int64_t>(columns));
  }
  return result;
}

/// Sums over pairs of frames by lag: XX, YY, ZZ, XY + YX, XZ + ZX, YZ + ZY and the total.
Array dipole_sums(const Array& vectors, std::int64_t max_lag, std::int64_t origin_step, bool components) {
  if (vectors.ndim() != 2 || vectors.shape(1) != 3) throw py::value_error("dipoles must have the shape (frames, 3)");
  if (origin_step < 1) throw py::value_error("origin_step must be 1 or more");
  if (max_lag < 0 || max_lag >= vectors.shape(0)) throw py::value_error("max_lag must lie in 0 ... frames - 1");
  Array table({static_cast<py::ssize_t>(max_lag + 1), static_cast<py::ssize_t>(correlation_columns)});
  const auto room = room_of(table);
  const KernelCall call;
  std::ranges::fill(room, 0.0);
  std::int32_t status = 0;
  const DipolePairs pairs(values_of(vectors), origin_step, status);
  if (status != 0) throw std::bad_alloc();
  if (!pairs.transforms_pay(max_lag + 1, components) || !pairs.sum_all(components, room))
    pairs.add(0, pairs.origins(), components, room);
  return table;
}

}  // namespace

void add_correlation_kernels(py::module_& module) {
  module.def("correlation_sums", &correlation_sums, py::arg("vectors"), py::kw_only(), py::arg("max_lag"),
             py::arg("origin_step"), py::arg("of_velocities"), py::arg("components"));
  module.def("dipole_sums", &dipole_sums, py::arg("vectors"), py::kw_only(), py::arg("max_lag"), py::arg("origin_step"),
             py::arg("components"));
}

}  // namespace pathstat::python
