#include "desk/cli/file_info.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>

#include "desk/advice/trajectory_advice.h"
#include "desk/messages/visible_text.h"
#include "desk/model/coordinate_file.h"
#include "desk/model/model_import.h"
#include "desk/report/model_text.h"
#include "state/analysis_settings.h"
#include "structure/crystal_cell.h"
#include "structure/measure_geometry.h"
#include "support/record_file.h"
#include "trajectory/archive_file.h"
#include "trajectory/binary_trajectory.h"
#include "trajectory/front_end.h"
#include "trajectory/history_adapter.h"
#include "trajectory/history_file.h"
#include "trajectory/trajectory_keys.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

constexpr int done = 0;
constexpr int cannot_be_read = 2;

void fact(std::string_view name, std::string_view value) { fmt::print("  {:<20}{}\n", name, visible(value)); }

int complain(const std::string& problem) {
  fmt::print(stderr, "pathdesk: {}\n", visible(problem));
  return cannot_be_read;
}

/// A value of a frame that a reader looks for, by the key of all trajectories and that of the binary ones.
struct FrameValue {
  std::int32_t key;
  std::int32_t binary_key;
  std::string_view name;
  std::string_view unit;
};

constexpr std::array frame_values{
    FrameValue{400049, 1032, "total energy", "kcal/mol"},
    FrameValue{400025, 1006, "potential energy", "kcal/mol"},
    FrameValue{400050, 1034, "kinetic energy", "kcal/mol"},
    FrameValue{400026, 1007, "bond energy", "kcal/mol"},
    FrameValue{400027, 1008, "angle energy", "kcal/mol"},
    FrameValue{400028, 1009, "torsion energy", "kcal/mol"},
    FrameValue{400029, 1010, "inversion energy", "kcal/mol"},
    FrameValue{400030, 1011, "van der Waals energy", "kcal/mol"},
    FrameValue{400031, 1012, "Coulomb energy", "kcal/mol"},
    FrameValue{400032, 1013, "hydrogen bond energy", "kcal/mol"},
    FrameValue{400033, 1014, "restraint energy", "kcal/mol"},
    FrameValue{400020, 1001, "temperature", "K"},
    FrameValue{400057, 1036, "pressure", "GPa"},
    FrameValue{400058, 1037, "volume", "Å³"},
    FrameValue{400151, 0, "area", "Å²"},
    FrameValue{400068, 1047, "radius of gyration", "Å"},
    FrameValue{400078, 1058, "cell", "Å"},
    FrameValue{400149, 0, "cell angles", "°"},
    FrameValue{400084, 1063, "pressure tensor", "GPa"},
};

/// What the flags F7, F6, F2, F5 and F3 say of how the run was made, as the sum of 1, 2, 4, 8 and 16.
struct RunKind {
  int code;
  std::string_view name;
};

constexpr std::array run_kinds{
    RunKind{0, "constant energy"},
    RunKind{1, "constant temperature"},
    RunKind{4, "constant temperature (extended variables)"},
    RunKind{12, "constant temperature (extended variables, logarithmic term)"},
    RunKind{16, "constant pressure"},
    RunKind{17, "constant temperature and pressure"},
    RunKind{18, "constant temperature and pressure (extended variables)"},
    RunKind{26, "constant temperature and pressure (extended variables, logarithmic term)"},
};

std::string_view run_kind(const BinaryFlags& flags) {
  const int code = flags[7] + 2 * flags[6] + 4 * flags[2] + 8 * flags[5] + 16 * flags[3];
  const auto* kind =
      std::find_if(run_kinds.begin(), run_kinds.end(), [&](const auto& row) { return row.code == code; });
  return kind == run_kinds.end() ? "not known" : kind->name;
}

/// An open trajectory.
class OpenTrajectory {
 public:
  OpenTrajectory() = default;
  virtual ~OpenTrajectory() = default;
  OpenTrajectory(const OpenTrajectory&) = delete;
  OpenTrajectory& operator=(const OpenTrajectory&) = delete;

  /// That of the open.
  virtual std::int32_t status() const = 0;
  virtual std::int32_t read(std::int32_t frame) = 0;
  virtual bool is_end(std::int32_t status) const = 0;
  /// The numbers of a value in the current frame; none if the file does not hold it.
  virtual std::vector<double> values(const FrameValue& value) const = 0;
  /// Of the current frame, ps; none in a form without times.
  virtual std::vector<double> time() const = 0;
  virtual void print_head() const = 0;
  /// What the frames hold beside their values.
  virtual void print_arrays() const = 0;
};

/// The routines of a form of trajectories whose values go by keys.
struct FormRoutines {
  decltype(openhistrajectory_)* open;
  decltype(readhisframe_)* read;
  decltype(gethisdatadble_)* numbers;
  decltype(closehis_)* close;
  std::int32_t mode;
  std::int32_t end_of_file;
};

class KeyedTrajectory : public OpenTrajectory {
 public:
  KeyedTrajectory(const FormRoutines& form, const std::string& path) : form_(form) {
    form_.open(path, form_.mode, handle_, status_);
  }
  ~KeyedTrajectory() override {
    std::int32_t ignored = 0;
    if (handle_ != 0) form_.close(handle_, ignored);
  }

  std::int32_t status() const override { return status_; }
  std::int32_t read(std::int32_t frame) override {
    std::int32_t status = 0;
    form_.read(handle_, frame, status);
    return status;
  }
  bool is_end(std::int32_t status) const override { return status == form_.end_of_file; }

 protected:
  std::int32_t handle() const { return handle_; }
  /// The numbers of a key of this form in the current frame; none if the file does not hold it.
  std::vector<double> numbers(std::int32_t key) const {
    std::array<double, 6> found{};
    std::int32_t count = 0, status = 0;
    form_.numbers(handle_, key, found, count, status);
    return status == 0 ? std::vector<double>(found.begin(), found.begin() + count) : std::vector<double>{};
  }

 private:
  const FormRoutines& form_;
  std::int32_t handle_ = 0;
  std::int32_t status_ = 0;
};

std::vector<double> in_degrees(std::vector<double> angles) {
  for (double& angle : angles) angle *= degrees_per_radian;
  return angles;
}

std::string counted_atoms(std::int32_t all, std::int32_t movable) {
  return all > movable ? fmt::format("{}, of which {} move", all, movable) : fmt::format("{}", movable);
}

constexpr FormRoutines binary_form{
    [](std::string_view name, std::int32_t mode, std::int32_t& handle, std::int32_t& status) {
      kvA_TRJ_OpenRead(std::string(name), mode, handle, status);
    },
    kvA_TRJ_ReadFrame,
    kvA_TRJ_ValueDouble,
    kvA_TRJ_Close,
    binary_mode::read,
    binary_status::end_of_file};

class BinaryTrajectory : public KeyedTrajectory {
 public:
  explicit BinaryTrajectory(const std::string& path) : KeyedTrajectory(binary_form, path) {}

  std::vector<double> values(const FrameValue& value) const override { return numbers(value.binary_key); }
  std::vector<double> time() const override { return numbers(1000); }

  void print_head() const override {
    const BinaryHeader& head = state().header;
    fact("kind", fmt::format("{}, version {}", head.magic, head.version()));
    for (const auto* texts : {&head.titles, &head.comments}) {
      for (const auto& text : *texts) {
        if (!trimmed(text).empty()) fact(texts == &head.titles ? "title" : "comment", trimmed(text));
      }
    }
    fact("made at", run_kind(head.flags));
    fact("periodic directions", fmt::format("{}", head.flags[0]));
    fact("atoms", counted_atoms(head.total, head.movable));
    if (head.groups != 1) fact("groups", fmt::format("{} (only one can be analysed)", head.groups));
  }
  void print_arrays() const override {
    fact("velocities", state().frame.has(AtomGroup::velocities) ? "yes" : "no");
    fact("forces", state().frame.has(AtomGroup::forces) ? "yes" : "no");
  }

 private:
  const TrjStruct& state() const { return *binary_trajectory(handle()); }
};

constexpr FormRoutines history_form{
    openhistrajectory_, readhisframe_, gethisdatadble_, closehis_, 1, trajectory_status::end_of_file};

class HistoryTrajectory : public KeyedTrajectory {
 public:
  explicit HistoryTrajectory(const std::string& path) : KeyedTrajectory(history_form, path) {}

  /// The cell and the stress as the file holds them: they need no model.
  std::vector<double> values(const FrameValue& value) const override {
    const auto& cell = histrj_d_.cell;
    if (value.key == trajectory_key::cell) return {cell.begin(), cell.begin() + 3};
    if (value.key == trajectory_key::cell_parameters)
      return cell[0] != 0 ? in_degrees({cell.begin() + 3, cell.end()}) : std::vector<double>{};
    return value.key == trajectory_key::stress ? stress() : numbers(value.key);
  }
  std::vector<double> time() const override { return numbers(trajectory_key::time); }

  void print_head() const override {
    const auto& his = histrj_i_;
    fact("kind", fmt::format("history, version {:.2f}", histrj_d_.his_version));
    constexpr std::array<std::string_view, 3> names{"title", "comment", "comment"};
    for (std::size_t k = 0; k < names.size(); ++k) {
      if (!histrj_c_.lines[k].str().empty()) fact(names[k], histrj_c_.lines[k].str());
    }
    fact("atoms", counted_atoms(his.his_atoms, his.his_movable));
    fact("molecules", fmt::format("{}", his.his_molecules));
    fact("residues", fmt::format("{}", his.his_residues));
    fact("bonds", fmt::format("{}", his.his_bonds));
    fact("force field types", fmt::format("{}", his.his_ff_types));
    fact("energy components", fmt::format("{}", his.his_components));
  }
  void print_arrays() const override { fact("velocities", "yes"); }

 private:
  static std::vector<double> stress() {
    std::array<double, 9> tensor{};
    get_history_energies(HistoryEnergy::stress, 0, tensor);
    std::vector<double> six{tensor[0], tensor[4], tensor[8], tensor[5], tensor[2], tensor[1]};
    for (double& value : six) value *= history_pressure_unit;
    return six;
  }
};

class ArchiveTrajectory : public OpenTrajectory {
 public:
  explicit ArchiveTrajectory(const std::string& path) : descriptor_(open_regular(path)) {
    if (!descriptor_.is_open()) return;
    file_ = ArchiveFile(descriptor_.get(), status_);
    positions_.resize(3 * static_cast<std::size_t>(file_.header().atoms));
    charges_.resize(static_cast<std::size_t>(file_.header().atoms));
  }

  std::int32_t status() const override { return status_; }
  std::int32_t read(std::int32_t frame) override {
    std::int32_t status = 0;
    file_.read(frame, frame_, positions_, charges_, status);
    if (status == trajectory_status::end_of_file) is_cut_ = frame == 1 || file_.goes_on();
    return status;
  }
  bool is_end(std::int32_t status) const override { return status == trajectory_status::end_of_file && !is_cut_; }
  std::vector<double> values(const FrameValue& value) const override {
    const auto& [a, b, c, alpha, beta, gamma] = frame_.cell;
    const bool crystal = type() == periodic_type::three_dimensional, slab = type() == periodic_type::two_dimensional;
    double number = 0;
    std::int32_t status = 0;
    switch (value.key) {
      case 400049:
        return file_.header().has_energy ? std::vector{frame_.energy} : std::vector<double>{};
      case 400058:
        kva_cry_3dparamtocellvolume_(a, b, c, alpha, beta, gamma, number, status);
        return crystal ? std::vector{number} : std::vector<double>{};
      case 400151:
        kva_cry_2dparamtocellarea_(b, c, alpha, number, status);
        return slab ? std::vector{number} : std::vector<double>{};
      case trajectory_key::cell:
        return crystal ? std::vector{a, b, c} : slab ? std::vector{b, c} : std::vector<double>{};
      case trajectory_key::cell_parameters:
        return crystal ? in_degrees({alpha, beta, gamma}) : slab ? in_degrees({alpha}) : std::vector<double>{};
      default:
        return {};
    }
  }
  std::vector<double> time() const override { return {}; }

  void print_head() const override {
    const ArchiveHeader& head = file_.header();
    fact("kind", head.form == ArchiveForm::text ? "archive of lines" : "archive of records of 80 bytes");
    fact("title", head.title);
    fact("periodic directions", fmt::format("{}", head.periodicity.directions));
    fact("atoms", fmt::format("{}", head.atoms));
  }
  void print_arrays() const override { fact("velocities", "no"); }

 private:
  std::int32_t type() const { return file_.header().periodicity.type; }

  FileDescriptor descriptor_;
  std::int32_t status_ = trajectory_status::no_file;
  ArchiveFile file_;
  ArchiveFrame frame_;
  std::vector<double> positions_, charges_;
  bool is_cut_ = false;  ///< the file holds more than its whole frames
};

/// The values of the current frame, one list for each row of frame_values.
std::vector<std::vector<double>> all_values(const OpenTrajectory& trajectory) {
  std::vector<std::vector<double>> all;
  all.reserve(frame_values.size());
  for (const auto& row : frame_values) all.push_back(trajectory.values(row));
  return all;
}

/// True for a value that whoever wrote the file did not have.
bool is_absent(const std::vector<double>& values) {
  return !values.empty() && std::all_of(values.begin(), values.end(), [](double value) { return std::isnan(value); });
}

std::string numbers_of(const std::vector<double>& values) {
  if (is_absent(values)) return "absent";
  std::string text;
  for (const auto number : values) text += fmt::format("{}{:.6g}", text.empty() ? "" : "  ", number);
  return text;
}

/// Prints the values of the first and the last frame, but for those that are zero in both: nobody has set them.
void print_values(OpenTrajectory& trajectory, std::int32_t frames) {
  if (trajectory.read(frames) != 0) return;
  const auto last = all_values(trajectory);
  if (trajectory.read(1) != 0) return;
  const auto first = all_values(trajectory);
  std::string absent;
  fmt::print("  values of the first frame (of the last):\n");
  for (std::size_t k = 0; k < frame_values.size(); ++k) {
    const auto is_zero = [](double value) { return value == 0; };
    if (std::all_of(first[k].begin(), first[k].end(), is_zero) &&
        std::all_of(last[k].begin(), last[k].end(), is_zero)) {
      continue;
    }
    if (is_absent(first[k]) && is_absent(last[k])) {
      absent += fmt::format("{}{}", absent.empty() ? "" : ", ", frame_values[k].name);
      continue;
    }
    fmt::print("    {:<22}{} ({}) {}\n", frame_values[k].name, numbers_of(first[k]), numbers_of(last[k]),
               frame_values[k].unit);
  }
  if (!absent.empty()) fact("absent", absent);
  trajectory.print_arrays();
}

int print_trajectory(const std::string& path, OpenTrajectory&& trajectory) {
  if (trajectory.status() != 0) {
    const auto why = why_not_loaded(path, 0);
    return complain(why.empty() ? fmt::format("{} cannot be read (status {})", path, trajectory.status()) : why);
  }
  fmt::print("{}: trajectory\n", visible(path));
  trajectory.print_head();
  std::int32_t frames = 0, status = 0;
  double first_time = 0, last_time = 0;
  bool has_times = false;
  while ((status = trajectory.read(frames + 1)) == 0) {
    const auto time = trajectory.time();
    has_times = !time.empty();
    last_time = has_times ? time[0] : 0;
    if (frames++ == 0) first_time = last_time;
  }
  const bool broken = !trajectory.is_end(status);
  fact("frames", fmt::format("{}{}", frames, broken ? " (the file breaks off there)" : ""));
  if (frames > 1 && has_times) {
    fact("times", fmt::format("{:.6g} to {:.6g} ps, every {:.6g} ps", first_time, last_time,
                              (last_time - first_time) / (frames - 1)));
  }
  if (frames > 0) print_values(trajectory, frames);
  return broken ? complain(fmt::format("{} is damaged (status {})", path, status)) : done;
}

void print_model(const MolecularModel& model) {
  fmt::print("  model {}\n", visible(model.name));
  for (const auto& [name, value] : model_facts(model)) fact("  " + name, value);
}

int print_models(const std::string& path, const ImportedModels& imported) {
  if (!imported.problem.empty()) return complain(imported.problem);
  fmt::print("{}: {} model{}\n", visible(path), imported.models.size(), imported.models.size() == 1 ? "" : "s");
  for (const auto& model : imported.models) print_model(model);
  return done;
}

}  // namespace

int print_file_info(const std::string& path) {
  std::error_code error;
  if (!fs::exists(path, error) && !error) return complain(fmt::format("there is no file {}", path));
  if (const auto why = why_unreadable(path); !why.empty()) return complain(fmt::format("{} {}", path, why));
  const auto extension = fs::path(path).extension().string();
  if (extension == ".trj" || extension == ".qtrj" || extension == ".atrj") {
    return print_trajectory(path, BinaryTrajectory(path));
  }
  if (extension == ".his" || extension == ".fhis") return print_trajectory(path, HistoryTrajectory(path));
  if (extension == ".arc") return print_trajectory(path, ArchiveTrajectory(path));
  if (extension == ".qfx") return print_models(path, read_model_file(path));
  if (extension == ".car" || extension == ".cor") return print_models(path, read_coordinate_file(path));
  return complain(fmt::format(
      "{} is neither a trajectory (.trj, .qtrj, .atrj, .his, .fhis, .arc) nor a model (.qfx, .car, .cor)", path));
}

}  // namespace pathstat::desk
