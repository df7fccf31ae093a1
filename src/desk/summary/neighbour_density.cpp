#include "desk/summary/neighbour_density.h"

#include <cmath>
#include <span>

#include "support/record_file.h"

namespace pathstat::desk {

double neighbour_density(std::string_view file, std::size_t model_atoms, std::size_t centres) {
  constexpr std::int32_t tail_bytes = 24;
  constexpr std::size_t record_bytes = tail_bytes + bytes_between_payloads;
  if (file.size() < record_bytes || centres == 0) return 0;
  BigEndian tail(std::as_bytes(std::span(file).last(record_bytes)));
  if (tail.i32() != tail_bytes) return 0;
  const double density = tail.f64() * static_cast<double>(model_atoms) / static_cast<double>(centres);
  return std::isfinite(density) && density > 0 ? density : 0;
}

}  // namespace pathstat::desk
