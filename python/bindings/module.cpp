#include "arrays.h"
#include "support/parallel.h"

PYBIND11_MODULE(_kernels, module) {
  module.doc() = "The kernels of pathstat over NumPy arrays.";
  pathstat::python::add_pair_kernels(module);
  pathstat::python::add_correlation_kernels(module);
  pathstat::python::add_series_kernels(module);
  module.def("set_threads", &pathstat::set_thread_count, pybind11::arg("count"));
  module.def("threads", &pathstat::thread_count);
}
