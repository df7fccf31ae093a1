#include "extraction/dipole_series.h"

#include <algorithm>

#include "catalogue/catalogue.h"
#include "catalogue/catalogue_rows.h"
#include "extraction/scratch_file.h"

namespace pathstat {
namespace {

constexpr std::int32_t magnitude_id = 301;
constexpr std::int32_t vector_id = 302;
constexpr std::int32_t dielectric_constant_id = 901;

}  // namespace

DipoleSeries::DipoleSeries(std::int32_t points, std::int32_t& status)
    : numbers_("pathstat/DIP/FrameNumber", points, status) {
  if (status == 0) x_ = NamedBlock<double>("pathstat/DIP/XData", points, status);
  if (status == 0) magnitudes_ = NamedBlock<double>("pathstat/DIP/DipoleMag", points, status);
  if (status == 0) vectors_ = NamedBlock<double>("pathstat/DIP/DipoleVector", std::int64_t{3} * points, status);
}

void DipoleSeries::set(std::size_t point, std::int32_t number, double x, const Vector3& dipole) {
  numbers_.span()[point] = number;
  x_.span()[point] = x;
  magnitudes_.span()[point] = dveclen_(dipole);
  std::ranges::copy(dipole, vectors_.span().begin() + static_cast<std::ptrdiff_t>(3 * point));
}

void DipoleSeries::write(std::int32_t data_kind, std::span<const std::int32_t> models, std::int32_t& status) const {
  const NamedBlock<std::int32_t> sizes("pathstat/DIP/DatPtSize", std::ssize(numbers_.span()), status);
  const auto write_row = [&](std::int32_t id, std::span<const double> values, std::int32_t width) {
    if (status != 0) return;
    const auto row = property_row_of(id);
    std::ranges::fill(sizes.span(), width);
    writescratchfile_(data_kind, property_file(property_table().extensions[row]), numbers_.span(), x_.span(), values,
                      width, width, 1, models, sizes.span(), {}, status);
    if (status == 0) property_table().on_disk[row] = property_table().calculated[row] = true;
  };
  write_row(magnitude_id, magnitudes_.span(), 1);
  if (status == 0) {
    const auto fluctuations = fluctuation_table();
    const auto row = fluctuation_row_of(dielectric_constant_id);
    fluctuations.on_disk[row] = false;
    fluctuations.calculated[row] = fluctuations.selectable[row];
  }
  write_row(vector_id, vectors_.span(), 3);
}

}  // namespace pathstat
