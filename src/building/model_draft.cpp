#include "building/model_draft.h"

#include <numbers>
#include <string>

#include "building/asymmetric_unit.h"
#include "coreapi/operations.h"
#include "structure/crystal_orientation.h"
#include "structure/space_groups.h"

namespace pathstat {

std::int32_t current_model() {
  std::int32_t model = 0, error = 0;
  kvd_mod_current_(model, error);
  return error == 0 ? model : 0;
}

std::string name_of_model(std::int32_t model) {
  Text<80> name;
  std::int32_t error = 0;
  kvd_mod_name_(model, name, error);
  return name.str();
}

std::int32_t type_of_model(std::int32_t model) {
  std::int32_t type = 0, error = 0;
  kvd_mod_periodictype_(model, type, error);
  return error == 0 ? type : -1;
}

std::int32_t group_of_model(std::int32_t model) {
  std::int32_t group = 0, error = 0;
  kvd_mod_3dsymmetry_(model, group, error);
  return error == 0 ? group : 0;
}

CellVectors stated_cell(std::int32_t& status) {
  constexpr std::int32_t a_on_x_b_in_xy = 4;
  constexpr double degree = std::numbers::pi / 180.0;
  const auto& [a, b, c] = asymmetric_unit.lengths;
  const auto& [alpha, beta, gamma] = asymmetric_unit.angles;
  CellVectors cell{};
  kva_cry_3dparamtocell_(a, b, c, alpha * degree, beta * degree, gamma * degree, a_on_x_b_in_xy, cell[0], cell[1],
                         cell[2], status);
  return cell;
}

std::int32_t stated_group(const AsymmetricUnit& unit) {
  auto name = unit.group;
  auto option = unit.group_option;
  std::int32_t group = 0, status = 0;
  kva_sgr_getspaceid_(name, unit.group_number, option, group, status);
  return status == 0 ? group : 0;
}

std::vector<std::int32_t> place_sites(std::int32_t model, const CellVectors& cell, std::int32_t& status) {
  const auto& sites = asymmetric_unit.sites;
  std::vector<std::int32_t> elements, atoms(sites.size());
  std::vector<double> xyz;
  for (const auto& site : sites) {
    elements.push_back(site.element);
    for (std::size_t axis = 0; axis < 3; ++axis) {
      double x = 0.0;
      for (std::size_t k = 0; k < 3; ++k) x += site.fractional[k] * cell[k][axis];
      xyz.push_back(x);
    }
  }
  if (status == 0) kvd_atm_create_(model, elements, xyz, atoms, status);
  return atoms;
}

ModelDraft::ModelDraft(std::string_view name, std::int32_t& status) : before_(current_model()) {
  if (status == 0) kvd_mod_create_(name, id_, status);
}

ModelDraft::~ModelDraft() {
  if (kept_ || id_ == 0) return;
  std::int32_t error = 0;
  kvd_delete_(std::span(&id_, 1), error);
  if (before_ != 0) kvd_mod_setcurrent_(before_, error);
}

}  // namespace pathstat
