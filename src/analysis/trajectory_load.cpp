#include <array>
#include <cstdio>
#include <optional>
#include <string>

#include "analysis/actions.h"
#include "analysis/analysis_state.h"
#include "analysis/settings.h"
#include "catalogue/catalogue_mask.h"
#include "catalogue/derived_data.h"
#include "coreapi/operations.h"
#include "plots/saved_handles.h"
#include "services/file_names.h"
#include "shell/arguments.h"
#include "shell/messages.h"
#include "state/analysis_settings.h"
#include "state/statistics_settings.h"
#include "state/trajectory_frames.h"
#include "trajectory/first_frame.h"
#include "trajectory/scan.h"

namespace pathstat::actions {
namespace {

constexpr std::int32_t failed = 1;
constexpr std::int32_t model_does_not_fit = 50015;

namespace model_file_type {
constexpr std::int32_t structured = 1;
constexpr std::int32_t coordinates = 14;
}  // namespace model_file_type

struct ModelFile {
  std::string path;
  std::int32_t type = model_file_type::structured;
};

bool is_history(std::string_view path) { return path.ends_with("his"); }
bool is_archive(std::string_view path) { return path.ends_with("arc"); }

/// The path of a trajectory that is given whole or by its stem; nothing, after a message, if there is no one file.
std::optional<std::string> find_trajectory_file(const std::string& given) {
  constexpr std::array<std::string_view, 5> extensions{".trj", ".qtrj", ".atrj", ".arc", ".his"};
  if (given.ends_with(".fhis")) {
    refuse("PATHSTAT_ERROR_115");
    return std::nullopt;
  }
  if (is_history(given) || given.ends_with("trj") || is_archive(given)) {
    if (kvs_fil_exists_(given)) return given;
    refuse("PATHSTAT_ERROR_67", std::string_view(given));
    return std::nullopt;
  }
  std::optional<std::string> found;
  for (const auto extension : extensions) {
    const std::string path = given + std::string(extension);
    if (!kvs_fil_exists_(path)) continue;
    if (found) {
      refuse("PATHSTAT_ERROR_68", std::string_view(given));
      return std::nullopt;
    }
    found = path;
  }
  if (!found) refuse("PATHSTAT_ERROR_66", std::string_view(given));
  return found;
}

bool scan(const std::string& path) {
  std::int32_t status = 0;
  bool has_time_axis = false;
  double first_time = 0.0;
  double time_step = 0.0;
  std::int32_t frames = 0;
  scanfile_(path, trj_gui_i_.reader_code, trj_gui_i_.file_kind, trj_gui_i_.format_version, has_time_axis, first_time,
            time_step, frames, status);
  if (status != 0) {
    refuse("Traj_BadTrajectory", std::string_view(path));
    trj_frames_c_.trj_file_name = "";
    return false;
  }
  trj_gui_l_.has_time_axis = has_time_axis;
  trj_frames_c_.trj_file_name = path;
  trj_frames_.frame_first_time = first_time;
  trj_frames_.frame_time_step = time_step;
  trj_frames_.frames_in_file = frames;
  return true;
}

/// The model file that lies beside a trajectory, or the first one that was looked for.
ModelFile model_file_beside(const std::string& path, bool& found) {
  const ModelFile structured{with_extension(path, "qfx"), model_file_type::structured};
  found = kvs_fil_exists_(structured.path);
  if (found || !(is_history(path) || is_archive(path))) return structured;
  for (const auto* extension : {"car", "cor"}) {
    ModelFile coordinates{with_extension(path, extension), model_file_type::coordinates};
    found = kvs_fil_exists_(coordinates.path);
    if (found) return coordinates;
  }
  return structured;
}

bool import_model(const ModelFile& file) {
  std::int32_t model = 0;
  std::int32_t error = 0;
  kvd_fil_importmodel_(file.path, file.type, 1, 0, model, error);
  kvg_redisplaymodels_(1, 0);
  return error <= 0;
}

bool use_current_model(bool is_clear) {
  refuse(is_clear ? "Traj_ModelEmpty" : "Traj_UseModel");
  return !is_clear;
}

bool current_model_is_clear() {
  std::int32_t current = 0;
  std::int32_t clear = 0;
  std::int32_t error = 0;
  kvd_mod_current_(current, error);
  kvd_mod_isclear_(current, clear, error);
  return current == 0 || clear != 0;
}

/// Brings in the model of a new trajectory, asking the user where there is a choice.
bool bring_model(const std::string& path, const ModelFile& file, bool found, bool is_clear) {
  enum Choice : std::int32_t { import_file = 1, use_current = 2 };
  if (!found) {
    refuse("Traj_NoSuchFile", std::string_view(file.path), std::string_view(path));
    return use_current_model(is_clear);
  }
  std::int32_t choice = import_file;
  std::int32_t error = 0;
  if (!is_clear) kvu_dlg_getoption_("PATHSTAT_DLG_1", "PATHSTAT_DLG_2", choice, import_file, error);
  switch (choice) {
    case import_file:
      return import_model(file);
    case use_current:
      return use_current_model(is_clear);
    default:
      return false;
  }
}

/// Makes the model of the trajectory current: the one it had, where it is loaded again, or a new one.
bool settle_model(const std::string& path, const ModelFile& file, bool found) {
  const bool is_clear = current_model_is_clear();
  if (trj_gui_c_.last_trajectory == path) {
    std::int32_t error = 0;
    kvd_mod_setcurrent_(trj_gui_i_.trajectory_model, error);
    refuse("PATHSTAT_MSG_66", std::string_view(path));
    return true;
  }
  return bring_model(path, file, found, is_clear);
}

bool periodicity_fits(const std::string& path, std::int32_t model) {
  if (!is_history(path)) return true;
  std::int32_t type = 0;
  std::int32_t error = 0;
  kvd_mod_periodictype_(model, type, error);
  if (type == periodic_type::none || type == periodic_type::three_dimensional) return true;
  std::puts("ERROR: only non periodic and 3D periodic his trajectories may be analyzed.");
  return false;
}

/// Takes over a trajectory whose model is current. Its own failures leave it loaded; the first one is the result.
std::int32_t take_over(const std::string& path, std::int32_t file_type, std::int32_t model) {
  std::int32_t status = 0;
  std::int32_t error = 0;
  trj_gui_c_.last_trajectory = path;
  trj_guiinit_(trj_frames_.frame_first_time, trj_frames_.frame_time_step, trj_frames_.frames_in_file, status);
  trj_stats_.block_width = std::min(trj_stats_.block_width, trj_frames_.frames_in_file);
  trj_stats_.block_interval = std::min(trj_stats_.block_interval, trj_frames_.frames_in_file);
  killcache_(status);
  trj_gui_c_.input_source = from_trajectory;
  trj_gui_i_.trajectory_model = model;
  std::int32_t masked = 0;
  maskprops_(path, false, masked);
  if (masked == model_does_not_fit) trj_gui_c_.last_trajectory = "";
  settings::update_rdf_names();
  kva_cmp_mass_(model, trj_gui_d_.model_mass, error);
  trj_gui_i_.current_frame = 1;
  trj_gui_l_.frame_cache_ready = false;
  trj_gui_l_.trajectory_loaded = true;
  initsavedgraphhandles_(trj_gui_i_.current_frame, status);
  std::int32_t placed = 0;
  trjfixatoms_(path, file_type, model, placed);
  kvd_fil_exportmodel_(model_copy_path, model, 1, error);
  kvu_tls_setmodalstate_(graph_mode::modal_class, graph_mode::pick, error);
  allowgraphinteraction_(true, status);
  return masked == model_does_not_fit ? masked : placed;
}

std::int32_t load(const std::string& given) {
  const auto path = find_trajectory_file(given);
  if (!path || !scan(*path)) return failed;
  bool found = false;
  const ModelFile file = model_file_beside(*path, found);
  if (!settle_model(*path, file, found)) return failed;
  std::int32_t model = 0;
  std::int32_t error = 0;
  kvd_mod_current_(model, error);
  if (!periodicity_fits(*path, model)) return failed;
  return take_over(*path, file.type, model);
}

}  // namespace

std::int32_t trajectory() {
  trj_gui_l_.trajectory_loaded = false;
  Text<1024> path;
  std::int32_t status = 0;
  kvz_argfillstring_(path, 1, 0, "", status);
  if (status > 0) return status;
  const std::int32_t result = load(path.str());
  if (!trj_gui_l_.trajectory_loaded) forget_trajectory();
  return result;
}

}  // namespace pathstat::actions
