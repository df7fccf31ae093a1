#include "trajectory/archive_adapter.h"

#include <array>
#include <cstdio>
#include <new>
#include <string>

#include "coreapi/messages.h"
#include "coreapi/operations.h"
#include "services/file_units.h"
#include "state/analysis_settings.h"
#include "support/named_memory.h"
#include "support/plain_array.h"
#include "trajectory/archive_file.h"
#include "trajectory/model_frame.h"
#include "trajectory/reader_checks.h"
#include "trajectory/symmetry_images.h"

namespace pathstat {

namespace {

using namespace trajectory_status;

constexpr std::string_view labels = "Trj/Arc/";

/// What belongs to the open archive.
struct OpenArchive {
  ArchiveFile file;  ///< on the unit arc_unit
  NamedBlock<double> positions, charges;
  SymmetryImages images;
};
OpenArchive archive;

struct Block {
  std::string_view name;
  std::int64_t ArcTrjP::*address;
};
constexpr std::array<Block, 7> blocks{{
    {"Inxyz", &ArcTrjP::arc_xyz},
    {"InCharge", &ArcTrjP::arc_charges},
    {"SymMat", &ArcTrjP::arc_rotations},
    {"SymTr", &ArcTrjP::arc_translations},
    {"SymParent", &ArcTrjP::arc_parents},
    {"SymPtr", &ArcTrjP::arc_atom_operators},
    {"IdList", &ArcTrjP::arc_ids},
}};

std::string label(std::string_view name) { return std::string(labels) + std::string(name); }

void locate_blocks() {
  std::int32_t status = 0;
  for (const auto& [name, address] : blocks) kvs_msd_loc_(label(name), arctrj_p_.*address, status);
}

void take_header(const ArchiveHeader& header) {
  arctrj_i_.arc_mode = static_cast<std::int32_t>(header.form);
  arctrj_i_.arc_header_lines = header.header_lines;
  arctrj_i_.arc_dims = header.periodicity.directions;
  arctrj_i_.arc_period_type = header.periodicity.type;
  arctrj_i_.arc_lines_per_frame = header.lines_per_frame;
  arctrj_i_.arc_atoms = header.atoms;
  arctrj_l_.arc_periodic = header.periodicity.directions != 0;
  arctrj_l_.arc_has_energy = header.has_energy;
  arctrj_c_.arc_title = header.title;
}

/// Opens the file on a unit.
std::int32_t assign_unit(std::string_view name) {
  const UnitOptions options{0, UnitForm::formatted, UnitStatus::existing, UnitMode::read_only};
  std::int32_t error = 0;
  FileUnit unit(name, options, error);
  if (error == unit_error::none_free) return no_file_unit;
  if (error != 0) return unit_not_assigned;
  arctrj_i_.arc_unit = unit.release();
  return 0;
}

std::int32_t open_archive(std::string_view name) {
  std::int32_t status = assign_unit(name);
  if (status != 0) return status;
  archive.file = ArchiveFile(::fileno(unit_reader(arctrj_i_.arc_unit)), status);
  take_header(archive.file.header());
  if (status == helical) show_message("PATHSTAT_ERROR_110");
  if (status == unknown_periodicity) show_message("PATHSTAT_ERROR_119");
  if (status != 0) return status;
  const std::int64_t atoms = arctrj_i_.arc_atoms;
  archive.positions = NamedBlock<double>(label("Inxyz"), 3 * atoms, status);
  if (status == 0) archive.charges = NamedBlock<double>(label("InCharge"), atoms, status);
  locate_blocks();
  return status == 0 ? 0 : read_error;
}

bool fits_model(std::int32_t model) {
  constexpr auto stored = static_cast<std::int32_t>(ModelAtoms::stored);
  std::int32_t atoms = 0, type = 0, error = 0;
  kvd_mod_numatoms_(model, stored, atoms, error);
  if (error == 0) kvd_mod_periodictype_(model, type, error);
  return error == 0 && atoms == arctrj_i_.arc_atoms && type == arctrj_i_.arc_period_type;
}

/// Brings in the model's atoms in the order of its file and, behind them, their symmetry images.
bool bring_atoms(std::int32_t model) {
  const PlainArray<std::int32_t> stored(arctrj_i_.arc_atoms);
  if (!stored.allocated()) return false;
  std::int32_t status = 0;
  kva_fil_caratomidorder_(model, stored.span(), status);
  archive.images = {};  // its labels are to be free
  if (status == 0) archive.images = SymmetryImages(labels, model, stored.span(), status);
  if (status == 0) archive.positions.resize(std::int64_t{3} * archive.images.atoms(), status);
  if (status != 0) return false;
  arctrj_i_.arc_total_atoms = archive.images.atoms();
  arctrj_i_.arc_operators = archive.images.operators();
  locate_blocks();
  return true;
}

}  // namespace

void openarctrajectory_(std::string_view name, std::int32_t mode, std::int32_t& handle, std::int32_t& status) try {
  closearc_(open_trajectory_handle, status);
  handle = 0;
  trj_i_.trj_current_frame = 0;
  name = trimmed(name);
  status = check_open(name, mode);
  if (status == 0) status = open_archive(name);
  std::int32_t ignored = 0;
  if (status != 0) return closearc_(open_trajectory_handle, ignored);
  arctrj_l_.arc_open = true;
  handle = open_trajectory_handle;
} catch (const std::bad_alloc&) {
  closearc_(open_trajectory_handle, status);
  status = read_error;
}

void attacharcmodels_(std::int32_t, std::span<const std::int32_t> models, std::int32_t& status) {
  arctrj_l_.arc_attached = false;
  status = check_attach(models, arctrj_l_.arc_open,
                        [](std::int32_t model) { return fits_model(model) && bring_atoms(model); });
  arctrj_l_.arc_attached = status == 0;
}

void readarcframe_(std::int32_t, std::int32_t frame, std::int32_t& status) try {
  status = arctrj_l_.arc_open ? 0 : read_error;
  if (status != 0 || frame == trj_i_.trj_current_frame) return;
  trj_i_.trj_current_frame = 0;
  ArchiveFrame values{arctrj_d_.arc_energy, arctrj_d_.arc_cell};
  const auto stored = archive.positions.span().first(3 * static_cast<std::size_t>(arctrj_i_.arc_atoms));
  archive.file.read(frame, values, stored, archive.charges.span(), status);
  if (status != 0) return;
  arctrj_d_ = {values.energy, values.cell};
  trj_i_.trj_current_frame = frame;
} catch (const std::bad_alloc&) {
  status = read_error;
}

void closearc_(std::int32_t, std::int32_t& status) {
  status = 0;
  if (arctrj_i_.arc_unit != 0) kvs_fil_closeunit_(arctrj_i_.arc_unit);
  archive = {};
  arctrj_i_ = {};
  arctrj_d_ = {};
  arctrj_l_ = {};
  arctrj_c_ = {};
  arctrj_p_ = {};
}

void place_archive_images(std::int32_t& status) {
  CellVectors cell;
  archive_cell_vectors(arctrj_d_.arc_cell, arctrj_i_.arc_period_type, cell, status);
  if (status == 0) {
    archive.images.add_images(archive.positions.span(), arctrj_i_.arc_atoms, cell, SymmetryImages::Kind::positions,
                              status);
  }
}

}  // namespace pathstat
