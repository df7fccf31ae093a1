#include "structure/space_groups.h"

#include <algorithm>
#include <array>
#include <span>

#include "coreapi/operations.h"
#include "structure/crystal_vectors.h"
#include "structure/lattice_types.h"

namespace pathstat {
namespace {

constexpr std::string_view library_name = "QFX_SpaceGroups";
constexpr std::string_view conventional_number = "CRY/CONVENTIONAL_SGSYMMETRY";
constexpr std::string_view conventional_group = "CRY/CONVENTIONAL_GPSYMMETRY";
constexpr std::int32_t rhombohedral = 6, first_primitive_type = 10, last_primitive_type = 16;

using Hits = std::array<std::int32_t, 18>;

/// The hits of a search that told `count`.
std::span<const std::int32_t> found(const Hits& hits, std::int32_t count) {
  return std::span(hits).first(static_cast<std::size_t>(std::clamp<std::int32_t>(count, 0, Hits{}.size())));
}

std::int32_t group_by_name(std::int32_t library, std::string_view name, std::int32_t& option) {
  Hits hits{};
  std::int32_t count = 0, error = 0, group = 0, best = 0;
  kvd_sgr_findbyname_(library, name, 0, hits, count, error);
  if (error != 0) return 0;
  for (const std::int32_t hit : found(hits, count)) {
    std::int32_t id = 0;
    kvd_sgr_optionid_(hit, id, error);
    if (error != 0) return 0;
    if (option == 0 ? group == 0 || id < best : id == option) {
      group = hit;
      best = id;
    }
  }
  if (group != 0) option = best;
  return group;
}

std::int32_t group_by_number(std::int32_t library, std::int32_t number, std::int32_t option, TextField name) {
  Hits hits{};
  std::int32_t count = 0, error = 0;
  kvd_sgr_findbyitnum_(library, number, option, hits, count, error);
  if (error != 0 || count != 1) return 0;
  kvd_sgr_name_(hits[0], name, error);
  return error == 0 ? hits[0] : 0;
}

/// What a model tells of its conventional setting.
struct Conventional {
  bool told = false;
  std::int32_t group = 0;
  std::int32_t status = 0;
};

/// @param look_up  false to ask only whether there is a record
Conventional conventional_setting(std::int32_t model, bool look_up) {
  Conventional setting;
  std::array<std::int32_t, 2> values{};  // number and option
  std::int32_t error = 0;
  if (kvd_ud_findintarray_(model, conventional_number, values, error) == std::ssize(values) && error == 0) {
    setting.told = true;
    Text<1> any_name;
    if (look_up) kva_sgr_getspaceid_(any_name, values[0], values[1], setting.group, setting.status);
    return setting;
  }
  error = 0;
  kvd_ud_findobject_(model, conventional_group, setting.group, error);
  setting.told = error == 0 && setting.group != 0;
  return setting;
}

void lattice_of(std::int32_t group, std::int32_t& lattice, std::int32_t& centring, std::int32_t& status) {
  kvd_sgr_centeringtype_(group, centring, status);
  if (status == 0) kvd_sgr_latticetype_(group, lattice, status);
}

/// @param type  the lattice type of the primitive setting
Matrix3 primitive_matrix(std::int32_t lattice, std::int32_t centring, std::int32_t& type, std::int32_t& status) {
  std::array<Vector3, 3> column;
  kva_sgr_primitivelattice_(lattice, centring, column[0], column[1], column[2], type, status);
  return crystal::columns(column[0], column[1], column[2]);
}

void transform_to_primitive(std::int32_t model, Matrix3& m, std::int32_t& lattice, std::int32_t& status) {
  std::int32_t group = 0, conventional = 0, centring = 0;
  kvd_mod_3dsymmetry_(model, group, status);
  if (status == 0) lattice_of(group, conventional, centring, status);
  if (status == 0) m = primitive_matrix(conventional, centring, lattice, status);
}

void transform_to_conventional(std::int32_t model, Matrix3& m, std::int32_t& lattice, std::int32_t& centring,
                               std::int32_t& status) {
  const Conventional setting = conventional_setting(model, true);
  status = setting.status;
  if (setting.group == 0) return;
  lattice_of(setting.group, lattice, centring, status);
  if (status != 0) return;
  std::int32_t primitive_type = 0;
  const Matrix3 primitive = primitive_matrix(lattice, centring, primitive_type, status);
  if (status == 0) dmatinv_(primitive, m, status);
}

}  // namespace

void kva_sgr_getspaceid_(TextField name, std::int32_t number, std::int32_t& option, std::int32_t& group,
                         std::int32_t& status) {
  group = 0;
  std::int32_t library = 0, error = 0;
  kvd_sgr_findlibrarybyname_(library_name, library, error);
  if (number >= 1 && option == 0) option = 1;
  if (error == 0)
    group = number < 1 ? group_by_name(library, name, option) : group_by_number(library, number, option, name);
  status = group != 0 ? 0 : 1;
}

void kva_sgr_islatticebravais_(std::int32_t model, std::int32_t group, std::int32_t& primitive_form,
                               std::int32_t& status) {
  std::int32_t lattice = 0;
  primitive_form = 0;
  kvd_sgr_latticetype_(group, lattice, status);
  const bool may_be = lattice == rhombohedral || (lattice >= first_primitive_type && lattice <= last_primitive_type);
  if (status == 0 && may_be && conventional_setting(model, false).told) primitive_form = 1;
}

void kva_sgr_latticetransform_(std::int32_t model, std::int32_t direction, Matrix3& m, std::int32_t& lattice,
                               std::int32_t& centring, std::int32_t& status) {
  dmatunit_(m);
  lattice = centring = 0;
  status = 1;
  if (direction == to_primitive) transform_to_primitive(model, m, lattice, status);
  if (direction == to_conventional) transform_to_conventional(model, m, lattice, centring, status);
}

}  // namespace pathstat
