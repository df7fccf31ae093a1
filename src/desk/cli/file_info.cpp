#include "desk/cli/file_info.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>

#include "desk/model/coordinate_file.h"
#include "desk/model/model_import.h"
#include "desk/report/model_text.h"
#include "trajectory/binary_trajectory.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

constexpr int done = 0;
constexpr int cannot_be_read = 2;

void fact(std::string_view name, std::string_view value) { fmt::print("  {:<20}{}\n", name, value); }

int complain(const std::string& problem) {
  fmt::print(stderr, "pathdesk: {}\n", problem);
  return cannot_be_read;
}

/// A value of a frame that a reader looks for.
struct FrameValue {
  std::int32_t key;
  std::string_view name;
  std::string_view unit;
};

constexpr std::array frame_values{
    FrameValue{1032, "total energy", "kcal/mol"},
    FrameValue{1006, "potential energy", "kcal/mol"},
    FrameValue{1034, "kinetic energy", "kcal/mol"},
    FrameValue{1007, "bond energy", "kcal/mol"},
    FrameValue{1008, "angle energy", "kcal/mol"},
    FrameValue{1009, "torsion energy", "kcal/mol"},
    FrameValue{1010, "inversion energy", "kcal/mol"},
    FrameValue{1011, "van der Waals energy", "kcal/mol"},
    FrameValue{1012, "Coulomb energy", "kcal/mol"},
    FrameValue{1013, "hydrogen bond energy", "kcal/mol"},
    FrameValue{1014, "restraint energy", "kcal/mol"},
    FrameValue{1001, "temperature", "K"},
    FrameValue{1036, "pressure", "GPa"},
    FrameValue{1037, "volume", "Å³"},
    FrameValue{1047, "radius of gyration", "Å"},
    FrameValue{1058, "cell", "Å"},
    FrameValue{1063, "pressure tensor", "GPa"},
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

/// An open binary trajectory.
class OpenTrajectory {
 public:
  explicit OpenTrajectory(const std::string& path) { kvA_TRJ_OpenRead(path, binary_mode::read, handle_, status_); }
  ~OpenTrajectory() {
    std::int32_t ignored = 0;
    if (handle_ != 0) kvA_TRJ_Close(handle_, ignored);
  }
  OpenTrajectory(const OpenTrajectory&) = delete;
  OpenTrajectory& operator=(const OpenTrajectory&) = delete;

  std::int32_t status() const { return status_; }
  const TrjStruct& state() const { return *binary_trajectory(handle_); }
  std::int32_t read(std::int32_t frame) {
    std::int32_t status = 0;
    kvA_TRJ_ReadFrame(handle_, frame, status);
    return status;
  }
  /// The numbers of a key in the current frame; none if the file does not hold it.
  std::vector<double> values(std::int32_t key) const {
    std::array<double, 6> numbers{};
    std::int32_t count = 0, status = 0;
    kvA_TRJ_ValueDouble(handle_, key, numbers, count, status);
    return status == 0 ? std::vector<double>(numbers.begin(), numbers.begin() + count) : std::vector<double>{};
  }

 private:
  std::int32_t handle_ = 0;
  std::int32_t status_ = 0;
};

void print_head(const BinaryHeader& head) {
  fact("kind", fmt::format("{}, version {}", head.magic, head.version()));
  for (const auto* texts : {&head.titles, &head.comments}) {
    for (const auto& text : *texts) {
      if (!trimmed(text).empty()) fact(texts == &head.titles ? "title" : "comment", trimmed(text));
    }
  }
  fact("made at", run_kind(head.flags));
  fact("periodic directions", fmt::format("{}", head.flags[0]));
  fact("atoms", head.total > head.movable ? fmt::format("{}, of which {} move", head.total, head.movable)
                                          : fmt::format("{}", head.movable));
  if (head.groups != 1) fact("groups", fmt::format("{} (only one can be analysed)", head.groups));
}

/// The values of the current frame, one list for each row of frame_values.
std::vector<std::vector<double>> all_values(const OpenTrajectory& trajectory) {
  std::vector<std::vector<double>> all;
  all.reserve(frame_values.size());
  for (const auto& row : frame_values) all.push_back(trajectory.values(row.key));
  return all;
}

std::string numbers_of(const std::vector<double>& values) {
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
  fmt::print("  values of the first frame (of the last):\n");
  for (std::size_t k = 0; k < frame_values.size(); ++k) {
    const auto is_zero = [](double value) { return value == 0; };
    if (std::all_of(first[k].begin(), first[k].end(), is_zero) &&
        std::all_of(last[k].begin(), last[k].end(), is_zero)) {
      continue;
    }
    fmt::print("    {:<22}{} ({}) {}\n", frame_values[k].name, numbers_of(first[k]), numbers_of(last[k]),
               frame_values[k].unit);
  }
  const auto& frame = trajectory.state().frame;
  fact("velocities", frame.has(AtomGroup::velocities) ? "yes" : "no");
  fact("forces", frame.has(AtomGroup::forces) ? "yes" : "no");
}

int print_trajectory(const std::string& path) {
  OpenTrajectory trajectory(path);
  if (trajectory.status() != 0) {
    return complain(fmt::format("{} is not a trajectory that can be read (status {})", path, trajectory.status()));
  }
  fmt::print("{}: trajectory\n", path);
  print_head(trajectory.state().header);
  std::int32_t frames = 0, status = 0;
  double first_time = 0, last_time = 0;
  while ((status = trajectory.read(frames + 1)) == 0) {
    const auto time = trajectory.values(1000);
    last_time = time.empty() ? 0 : time[0];
    if (frames++ == 0) first_time = last_time;
  }
  const bool broken = status != binary_status::end_of_file;
  fact("frames", fmt::format("{}{}", frames, broken ? " (the file breaks off there)" : ""));
  if (frames > 1) {
    fact("times", fmt::format("{:.6g} to {:.6g} ps, every {:.6g} ps", first_time, last_time,
                              (last_time - first_time) / (frames - 1)));
  }
  if (frames > 0) print_values(trajectory, frames);
  return broken ? complain(fmt::format("{} is damaged (status {})", path, status)) : done;
}

void print_model(const MolecularModel& model) {
  fmt::print("  model {}\n", model.name);
  for (const auto& [name, value] : model_facts(model)) fact("  " + name, value);
}

int print_models(const std::string& path, const ImportedModels& imported) {
  if (!imported.problem.empty()) return complain(imported.problem);
  fmt::print("{}: {} model{}\n", path, imported.models.size(), imported.models.size() == 1 ? "" : "s");
  for (const auto& model : imported.models) print_model(model);
  return done;
}

}  // namespace

int print_file_info(const std::string& path) {
  std::error_code error;
  if (!fs::exists(path, error)) return complain(fmt::format("there is no file {}", path));
  if (fs::is_directory(path, error)) return complain(fmt::format("{} is a folder", path));
  const auto extension = fs::path(path).extension().string();
  if (extension == ".trj" || extension == ".qtrj" || extension == ".atrj") return print_trajectory(path);
  if (extension == ".qfx") return print_models(path, read_model_file(path));
  if (extension == ".car" || extension == ".cor") return print_models(path, read_coordinate_file(path));
  return complain(fmt::format("{} is neither a trajectory (.trj, .qtrj, .atrj) nor a model (.qfx, .car, .cor)", path));
}

}  // namespace pathstat::desk
