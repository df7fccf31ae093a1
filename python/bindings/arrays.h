#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <cstddef>
#include <mutex>
#include <span>
#include <string>

namespace pathstat::python {

namespace py = pybind11;

/// Float64 in C order. NumPy copies what is not, and nothing that is.
using Array = py::array_t<double, py::array::c_style | py::array::forcecast>;
using Integers = py::array_t<std::int32_t, py::array::c_style | py::array::forcecast>;

inline std::span<const double> values_of(const Array& array) {
  return {array.data(), static_cast<std::size_t>(array.size())};
}
inline std::span<double> room_of(Array& array) {
  return {array.mutable_data(), static_cast<std::size_t>(array.size())};
}

/// Coordinates of frames: (frames, atoms, 3), or (atoms, 3) for one frame.
struct Frames {
  std::span<const double> values;
  std::size_t count = 0;
  std::size_t atoms = 0;

  Frames(const Array& array, const char* name) : values(values_of(array)) {
    const auto dimensions = array.ndim();
    if (dimensions < 2 || dimensions > 3 || array.shape(dimensions - 1) != 3)
      throw py::value_error(std::string(name) + " must have the shape (frames, atoms, 3) or (atoms, 3)");
    count = dimensions == 3 ? static_cast<std::size_t>(array.shape(0)) : 1;
    atoms = static_cast<std::size_t>(array.shape(dimensions - 2));
  }
  std::span<const double> frame(std::size_t k) const { return values.subspan(3 * atoms * k, 3 * atoms); }
};

/// While it lives, other Python threads run, and no other kernel does: they share the threads of the process.
class KernelCall {
 public:
  KernelCall() : lock_(mutex()) {}

  /// Throws what a signal handler of Python raises, as for Ctrl-C. Kernels ask between their pieces.
  static void ask_for_signals() {
    const py::gil_scoped_acquire python;
    if (PyErr_CheckSignals() != 0) throw py::error_already_set();
  }

 private:
  static std::mutex& mutex() {
    static std::mutex one;
    return one;
  }

  py::gil_scoped_release release_;
  std::lock_guard<std::mutex> lock_;
};

void add_pair_kernels(py::module_& module);
void add_correlation_kernels(py::module_& module);
void add_series_kernels(py::module_& module);

}  // namespace pathstat::python
