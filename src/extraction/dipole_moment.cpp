#include "extraction/dipole_moment.h"

#include <algorithm>
#include <cmath>

#include "state/analysis_settings.h"

namespace pathstat {
namespace {

struct ChargeCentre {
  double charge = 0.0;
  Vector3 centre{};
};

/// The charge of a molecule's atoms in a list, and its centre if it is not 0.
ChargeCentre centre_of(std::span<const double> xyz, std::int32_t type, MatrixIn<double> cell, std::int32_t molecule,
                       const ChargeList& list, std::int32_t& status) {
  ChargeCentre sum;
  for (std::size_t k = 0; k < list.tags.size(); ++k) {
    if (list.tags[k] != molecule) continue;
    const auto place = static_cast<std::size_t>(list.atoms[k] - 1);
    if (place >= xyz.size() / 3) {
      status = 1;
      return {};
    }
    Vector3 position{xyz[3 * place], xyz[3 * place + 1], xyz[3 * place + 2]};
    if (type == periodic_type::three_dimensional) {
      const auto image = list.images.subspan(3 * k, 3);
      for (std::size_t axis = 0; axis < 3; ++axis) {
        position[axis] += image[0] * cell[axis] + image[1] * cell[3 + axis] + image[2] * cell[6 + axis];
      }
    }
    sum.charge += list.charges[k];
    for (std::size_t axis = 0; axis < 3; ++axis) sum.centre[axis] += position[axis] * list.charges[k];
  }
  if (sum.charge != 0.0) dvecscale_(sum.centre, 1.0 / sum.charge, sum.centre);
  return sum;
}

}  // namespace

void calcdipole_(std::span<const double> xyz, std::int32_t type, MatrixIn<double> cell, std::int32_t molecule,
                 const ChargeList& positive, const ChargeList& negative, DipoleMoment& moment, std::int32_t& status) {
  moment = {};
  status = 0;
  const ChargeCentre plus = centre_of(xyz, type, cell, molecule, positive, status);
  const ChargeCentre minus = centre_of(xyz, type, cell, molecule, negative, status);
  moment.net_charge = plus.charge + minus.charge;
  if (plus.charge == 0.0 || minus.charge == 0.0) return;
  moment.positive_centre = plus.centre;
  moment.negative_centre = minus.centre;
  dvecsub_(plus.centre, minus.centre, moment.dipole);
  dvecscale_(moment.dipole, std::min(plus.charge, std::abs(minus.charge)) * debye, moment.dipole);
  moment.magnitude = dveclen_(moment.dipole);
  dvecadd_(plus.centre, minus.centre, moment.origin);
  dvecscale_(moment.origin, 0.5, moment.origin);
}

}  // namespace pathstat
