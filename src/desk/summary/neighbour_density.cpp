#include "desk/summary/neighbour_density.h"

#include <array>
#include <cmath>
#include <fstream>

#include "support/record_file.h"

namespace pathstat::desk {

double neighbour_density(const std::filesystem::path& file, std::size_t model_atoms, std::size_t centres) {
  constexpr std::int32_t tail_bytes = 24;
  std::array<std::byte, tail_bytes + bytes_between_payloads> record{};
  std::ifstream in(file, std::ios::binary);
  in.seekg(-static_cast<std::streamoff>(record.size()), std::ios::end);
  in.read(reinterpret_cast<char*>(record.data()), record.size());
  if (!in || centres == 0) return 0;
  BigEndian tail(record);
  if (tail.i32() != tail_bytes) return 0;
  const double density = tail.f64() * static_cast<double>(model_atoms) / static_cast<double>(centres);
  return std::isfinite(density) && density > 0 ? density : 0;
}

}  // namespace pathstat::desk
