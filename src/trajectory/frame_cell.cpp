#include "trajectory/frame_cell.h"

#include "coreapi/operations.h"
#include "state/analysis_settings.h"
#include "trajectory/front_end.h"
#include "trajectory/trajectory_keys.h"

namespace pathstat {

CellVectors vectors_of_matrix(MatrixIn<double> m) {
  return {{m[0], m[1], m[2]}, {m[3], m[4], m[5]}, {m[6], m[7], m[8]}};
}

CellVectors vectors_of_cell(std::span<const double, 6> cell) {
  return {{cell[0], cell[5], cell[4]}, {0.0, cell[1], cell[3]}, {0.0, 0.0, cell[2]}};
}

CellVectors cell_of_model(std::int32_t model, std::int32_t type, std::int32_t& error) {
  CellVectors cell;
  error = 0;
  if (type == periodic_type::three_dimensional) kvd_mod_3dcellvector_(model, cell.a, cell.b, cell.c, error);
  if (type != periodic_type::two_dimensional) return cell;
  kvd_mod_2dcellvector_(model, cell.b, cell.c, error);
  dvecprod_(cell.b, cell.c, cell.a);
  dvecnorm_(cell.a, cell.a);
  return cell;
}

CellVectors cell_of_frame(std::int32_t handle, std::int32_t& status) {
  std::array<double, 6> numbers{};
  std::int32_t count = 0;
  trj_dvalue_(handle, trajectory_key::cell, numbers, count, status);
  if (status != trajectory_status::no_such_key) return status == 0 ? vectors_of_cell(numbers) : CellVectors{};
  Matrix3 vectors{};
  trj_dvalue_(handle, trajectory_key::cell_vectors, vectors, count, status);
  return vectors_of_matrix(vectors);
}

void set_model_cell(std::int32_t model, std::int32_t type, const CellVectors& cell, std::int32_t& error) {
  error = 0;
  if (type == periodic_type::three_dimensional) kvd_mod_set3dcellvector_(model, cell.a, cell.b, cell.c, error);
  if (type == periodic_type::two_dimensional) kvd_mod_set2dcellvector_(model, cell.b, cell.c, error);
}

}  // namespace pathstat
