#include <array>
#include <cstddef>
#include <cstdio>
#include <numeric>
#include <span>
#include <string_view>

#include "catalogue/model_selection.h"
#include "coreapi/messages.h"
#include "coreapi/operations.h"
#include "extraction/dipole.h"
#include "extraction/dipole_charges.h"
#include "extraction/dipole_series.h"
#include "extraction/scratch_file.h"
#include "state/analysis_settings.h"
#include "support/text_field.h"
#include "trajectory/frame_cell.h"

namespace pathstat {
namespace {

void warn(std::int32_t model, std::string_view key) {
  Text<80> name;
  std::int32_t error = 0;
  kvd_mod_name_(model, name, error);
  show_message(key, std::string_view(name));
}

/// The dipole of a model; that of one without charges of both signs is 0, which is told.
DipoleMoment moment_of(std::int32_t model, std::int32_t periodic_type, DipoleChoice choice, std::int32_t& status) {
  const DipoleAtoms atoms(model, periodic_type, choice, status);
  const auto count = atoms.atoms().size();
  if (status != 0) return {};
  const NamedBlock<double> xyz("pathstat/DIP/dxyz", 3 * static_cast<std::int64_t>(count), status);
  if (status != 0) return {};
  const NamedBlock<std::int32_t> places("pathstat/DIP/AtIndex", static_cast<std::int64_t>(count), status);
  if (status != 0) return {};
  std::int32_t error = 0;
  if (count > 0) kvd_xyz_(atoms.atoms(), xyz.span(), error);
  if (error != 0) status = 1;
  std::iota(places.span().begin(), places.span().end(), 1);
  const CellVectors cell = cell_of_model(model, periodic_type, error);
  if (error != 0) status = 1;
  if (status != 0) return {};
  const DipoleCharges charges(atoms, places.span(), status);
  if (status != 0) return {};
  if (charges.none()) {
    warn(model, "PATHSTAT_WARN_14");
  } else if (charges.of_one_sign()) {
    warn(model, "PATHSTAT_WARN_15");
  }
  return charges.moment(xyz.span(), periodic_type, cell.matrix(), status);
}

void print(const char* label, std::span<const double> values) {
  std::fputs(label, stdout);
  for (const double value : values) std::printf(" %.15g", value);
  std::putchar('\n');
}

void print(const DipoleMoment& moment) {
  print("Dipole moment =", std::array{moment.magnitude});
  print("Dipole Vector =", moment.dipole);
  print("Positive COC  =", moment.positive_centre);
  print("Negative COC  =", moment.negative_centre);
  print("Dipole origin =", moment.origin);
  print("Net charge    =", std::array{moment.net_charge});
}

bool can_have_dipole(std::int32_t periodic_type) {
  return periodic_type == periodic_type::none || periodic_type == periodic_type::three_dimensional;
}

}  // namespace

void dipolemodels_(std::string_view atom_choice, std::string_view atom_kind, std::int32_t& status) {
  const ModelSelection selection("pathstat/DIP/Models", "pathstat/DIP/ModPeriod", status);
  if (status != 0) return;
  if (selection.size() == 0) {
    status = refuse("PATHSTAT_ERROR_79");
    return;
  }
  for (const auto type : selection.periodic_types()) {
    if (!can_have_dipole(type)) status = 1;
  }
  if (status != 0) {
    show_message("PATHSTAT_ERROR_1");
    return;
  }
  DipoleSeries series(selection.size(), status);
  DipoleMoment moment;
  for (std::size_t k = 0; k < selection.models().size() && status == 0; ++k) {
    moment = moment_of(selection.models()[k], selection.periodic_types()[k], {atom_choice, atom_kind}, status);
    series.set(k, static_cast<std::int32_t>(k + 1), static_cast<double>(k + 1), moment.dipole);
  }
  if (status != 0) return;
  if (selection.size() == 1) print(moment);
  series.write(kind_models, selection.models(), status);
}

}  // namespace pathstat
