#include "trajectory/coordinate_alignment.h"

#include "state/analysis_settings.h"
#include "structure/crystal_orientation.h"

namespace pathstat {

void trjcoordalignmat_(const Vector3& a, const Vector3& b, const Vector3& c, const std::array<double, 6>& parameters,
                       std::int32_t type, Matrix3& matrix, std::int32_t& status) {
  constexpr std::int32_t c_on_z = 1, u_on_x = 102, v_on_z = 112;
  status = 0;
  if (type == periodic_type::three_dimensional) {
    kva_cry_3dalignmentmatrix_(a, b, c, c_on_z, matrix, status);
  } else if (type == periodic_type::two_dimensional) {
    Vector3 u{}, v{};
    kva_cry_2dparamtocell_(parameters[0], parameters[1], parameters[3], u_on_x, u, v, status);
    if (status == 0) kva_cry_2dalignmentmatrix_(v, u, v_on_z, matrix, status);
  } else {
    dmatunit_(matrix);
  }
}

}  // namespace pathstat
