#include "desk/import/import_run.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <numbers>
#include <system_error>

#include "desk/import/input_files.h"
#include "desk/import/script_stream.h"
#include "desk/import/topology_blocks.h"
#include "desk/import/unwrapping.h"
#include "desk/model/bond_search.h"
#include "desk/model/model_export.h"
#include "desk/model/part_file.h"
#include "structure/crystal_coordinates.h"
#include "trajectory/archive_layout.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

constexpr std::int64_t longest_text = 1 << 16;
constexpr std::size_t head_numbers = 7;  ///< of a frame: its time and cell

/// kcal/mol of one amu Å²/ps².
constexpr double kcal_of_motion = 1 / 418.4;
/// kcal/(mol K).
constexpr double gas_constant = 0.0019872042586;

/// Momentum is conserved, and in a system without a cell angular momentum too.
double degrees_of_freedom(std::size_t atoms, bool periodic, std::int64_t constraints) {
  const double free = periodic ? 3 : atoms == 2 ? 5 : 6;
  return std::max(0.0, 3.0 * static_cast<double>(atoms) - free - static_cast<double>(constraints));
}

std::vector<double> widened(std::span<const std::byte> payload) {
  const auto narrow = numbers_in<float>(payload);
  return {narrow.begin(), narrow.end()};
}

template <class Count>
std::string counted(Count count, std::string_view thing) {
  return fmt::format("{} {}{}", count, thing, count == 1 ? "" : "s");
}

bool all_finite(std::span<const double> values) {
  return std::all_of(values.begin(), values.end(), [](double v) { return std::isfinite(v); });
}

/// The arguments of the script.
std::vector<std::string> script_arguments(const ImportOptions& o) {
  std::vector<std::string> words;
  const auto option = [&](const char* name, const std::string& value) {
    if (!value.empty()) words.push_back(fmt::format("{}={}", name, value));
  };
  const auto number = [&](const char* name, const auto& value) {
    if (value) words.push_back(fmt::format("{}={}", name, *value));
  };
  option("--format", o.format);
  option("--topology-format", o.topology_format);
  option("--select", o.selection);
  option("--energies", o.energies.string());
  option("--energy-units", o.energy_units);
  option("--lammps-units", o.lammps_units);
  number("--first", o.first);
  number("--last", o.last);
  number("--step", o.step);
  number("--dt", o.spacing_ps);
  number("--timestep", o.timestep);
  words.emplace_back("--");
  words.push_back(o.topology.string());
  for (const auto& path : o.trajectories) words.push_back(path.string());
  return words;
}

/// Takes the blocks of the script and writes what they bring.
class Import {
 public:
  Import(const ImportOptions& options, const ImportEvents& events)
      : options_(options),
        events_(events),
        trajectory_(fs::path(options.output).concat(".trj")),
        model_file_(fs::path(options.output).concat(".qfx")) {}

  ImportResult run() {
    if (auto problem = about_inputs(options_); !problem.empty()) return {ImportEnd::failed, std::move(problem)};
    std::error_code error;
    for (const auto& file : {trajectory_.path(), model_file_}) {
      if (fs::is_directory(file, error)) return {ImportEnd::failed, fmt::format("{} is a folder", file.string())};
      for (const auto& input : options_.trajectories) {
        if (fs::equivalent(file, input, error))
          return {ImportEnd::failed, fmt::format("{} would be overwritten", file.string())};
      }
    }
    if (auto problem = script_.start("import_frames.py", script_arguments(options_)); !problem.empty()) {
      return {ImportEnd::failed, std::move(problem)};
    }
    for (;;) {
      ScriptStream::Block block;
      switch (script_.next(block, [this](std::string_view tag) { return longest(tag); })) {
        case ScriptStream::Next::interrupted:
          return {ImportEnd::interrupted, {}};
        case ScriptStream::Next::ended:
        case ScriptStream::Next::failed:
          return {ImportEnd::failed, script_.problem()};
        case ScriptStream::Next::block:
          break;
      }
      if (auto problem = take(block); !problem.empty()) return {ImportEnd::failed, std::move(problem)};
      if (block.tag == "end") return {ImportEnd::done, {}};
    }
  }

 private:
  /// Longest payload that a block of this tag may have.
  std::int64_t longest(std::string_view tag) const {
    if (tag == "text" || tag == "error" || tag == "frame") return longest_text;
    if (tag == "xyz" || tag == "velocity") return vector_bytes();
    return tag == "end" ? 0 : blocks_.longest(tag);
  }

  std::int64_t vector_bytes() const {
    return static_cast<std::int64_t>(3 * sizeof(float)) * static_cast<std::int64_t>(blocks_.atoms());
  }

  std::string take(const ScriptStream::Block& block) {
    const auto& [tag, payload] = block;
    if (tag == "text" || tag == "error") {
      const std::string text(reinterpret_cast<const char*>(payload.data()), payload.size());
      if (tag == "error") return text;
      events_.tell(text);
      return {};
    }
    if (tag == "frame") return begin_frame(payload);
    if (tag == "xyz" || tag == "velocity") return take_vectors(tag == "xyz" ? xyz_ : velocities_, tag, payload);
    if (tag == "end") return end();
    return head_.empty() ? blocks_.take(tag, payload) : fmt::format("a block {} stands between frames", tag);
  }

  std::string begin_frame(std::span<const std::byte> payload) {
    if (auto problem = finish_frame(); !problem.empty()) return problem;
    const auto numbers = head_numbers + blocks_.series().size();
    if (payload.size() != numbers * sizeof(double)) return "a frame has another number of values than it should";
    head_ = numbers_in<double>(payload);
    return all_finite(std::span(head_).first(head_numbers)) ? std::string{} : "a time or a cell is no number";
  }

  std::string take_vectors(std::vector<double>& vectors, std::string_view tag, std::span<const std::byte> payload) {
    if (head_.empty() || !vectors.empty() || std::ssize(payload) != vector_bytes()) {
      return fmt::format("a block {} is not where, or not what it should be", tag);
    }
    vectors = widened(payload);
    return all_finite(vectors) ? std::string{}
                               : fmt::format("frame {} has {} that are no numbers", frames_ + 1,
                                             tag == "xyz" ? "coordinates" : "velocities");
  }

  /// Writes the frame that is complete.
  std::string finish_frame() {
    if (head_.empty()) return {};
    if (xyz_.empty()) return "a frame has no coordinates";
    if (auto problem = take_cell(); !problem.empty()) return problem;
    if (frames_ == 0) {
      if (auto problem = begin_file(); !problem.empty()) return problem;
    }
    if (unwrapping_) unwrapping_->follow(*lattice_, xyz_);
    turn();
    if (frames_ == 0) keep_model();
    set_series();
    if (auto problem = output_.write({head_[0], cell_, xyz_, velocities_}); !problem.empty()) return problem;
    ++frames_;
    with_velocities_ += velocities_.empty() ? 0 : 1;
    last_time_ = head_[0];
    xyz_.clear(), velocities_.clear();
    if (blocks_.frames() > 0) events_.progress(static_cast<double>(frames_) / static_cast<double>(blocks_.frames()));
    return {};
  }

  /// The cell of the frame as the file has it (a on x, b in the xy plane) and as it is written.
  std::string take_cell() {
    const bool periodic = std::all_of(head_.begin() + 1, head_.begin() + 4, [](double length) { return length > 0; });
    if (frames_ == 0) periodic_ = periodic;
    if (periodic != periodic_)
      return fmt::format("frame {} has {} cell, those before have {}", frames_ + 1, periodic ? "a" : "no",
                         periodic ? "none" : "one");
    if (!periodic) return {};
    constexpr double radians = std::numbers::pi / 180;
    const ArchiveCell parameters{head_[1],           head_[2],           head_[3],
                                 head_[4] * radians, head_[5] * radians, head_[6] * radians};
    right_angles_ = head_[4] == 90 && head_[5] == 90 && head_[6] == 90;
    CellVectors vectors;
    std::int32_t status = 0;
    if (right_angles_) {
      vectors = {{head_[1], 0, 0}, {0, head_[2], 0}, {0, 0, head_[3]}};
    } else {
      archive_cell_vectors(parameters, periodic_3d, vectors, status);
      if (status == 0) archive_alignment(parameters, periodic_3d, alignment_, status);
    }
    cell_ = file_cell_ = {vectors.a, vectors.b, vectors.c};
    if (status != 0 || !is_usable_cell(periodic_3d, cell_))
      return fmt::format("frame {} has a cell that spans no space", frames_ + 1);
    if (!right_angles_) {
      // The rotation is undone for the cell that the coordinates of the file lie in.
      for (auto& vector : file_cell_) dmatvecmul_(transposed(alignment_), vector, vector);
    }
    lattice_.emplace(periodic_3d, file_cell_);
    return {};
  }

  static Matrix3 transposed(const Matrix3& m) { return {m[0], m[3], m[6], m[1], m[4], m[7], m[2], m[5], m[8]}; }

  void turn() {
    if (!periodic_ || right_angles_) return;
    std::int32_t status = 0;
    kva_cry_transformcoordinates_(xyz_, alignment_, status);
    if (!velocities_.empty()) kva_cry_transformcoordinates_(velocities_, alignment_, status);
  }

  /// With the first frame at hand: the model, its bonds and molecules, and the head of the trajectory.
  std::string begin_file() {
    std::string problem;
    model_ = blocks_.give_model(options_.output.filename().string(), problem);
    if (problem.empty()) problem = trajectory_.make();
    if (!problem.empty()) return problem;
    model_.periodic_type = periodic_ ? periodic_3d : not_periodic;
    model_.cell = file_cell_;
    take_positions();
    if (model_.bonds.empty()) {
      find_bonds(model_);
      model_.file_bonds = model_.bonds.size();
      const auto found = model_.bonds.size();
      if (found > 0) events_.tell(fmt::format("The topology has no bonds: {} are found by distance.", found));
    }
    if (periodic_ && !options_.as_is) unwrapping_.emplace(model_, options_.whole);
    tell_series();
    return output_.create(trajectory_.part().string(), {.title = title(),
                                                        .ids = model_.ids,
                                                        .periodic = periodic_,
                                                        .cell_varies = periodic_ && blocks_.cell_varies(),
                                                        .ensemble = options_.ensemble});
  }

  void take_positions() {
    model_.positions.resize(model_.atoms());
    std::memcpy(model_.positions.data(), xyz_.data(), xyz_.size() * sizeof(double));
  }

  /// The model in its final place and orientation.
  void keep_model() {
    take_positions();
    model_.cell = cell_;
    if (velocities_.empty()) return;
    auto& velocities = model_.vectors["Velocity"];
    velocities.resize(model_.atoms());
    std::memcpy(velocities.data(), velocities_.data(), velocities_.size() * sizeof(double));
  }

  /// Shown whenever the trajectory is loaded.
  std::string title() const {
    const bool displaced = unwrapping_ && !options_.whole && blocks_.cell_varies();
    return fmt::format("imported{} from {}", displaced ? ", followed (g(r) needs --whole)," : "", sources());
  }

  std::string sources() const {
    std::string all = options_.topology.filename().string();
    for (const auto& path : options_.trajectories) all += ", " + path.filename().string();
    return all;
  }

  bool from_log(std::string_view name) const {
    return std::ranges::find(blocks_.series(), name) != blocks_.series().end();
  }

  /// True where velocities and masses give a kinetic energy.
  bool has_motion() const { return !velocities_.empty() && blocks_.masses_known(); }

  /// Values that follow from the frame itself stand where the log has none.
  void set_series() {
    if (periodic_ && !from_log("volume")) output_.set("volume", std::abs(dvectrip_(cell_[0], cell_[1], cell_[2])));
    if (has_motion()) {
      double doubled = 0;
      for (std::size_t k = 0; k < velocities_.size(); ++k)
        doubled += model_.masses[k / 3] * velocities_[k] * velocities_[k];
      const double kinetic = doubled / 2 * kcal_of_motion;
      const double freedom = degrees_of_freedom(model_.atoms(), periodic_, options_.constraints);
      if (!from_log("kinetic")) output_.set("kinetic", kinetic);
      if (!from_log("temperature") && freedom > 0) output_.set("temperature", 2 * kinetic / (freedom * gas_constant));
    } else {
      for (const auto* name : {"kinetic", "temperature"}) {
        if (!from_log(name)) output_.set(name, NAN);
      }
    }
    for (std::size_t k = 0; k < blocks_.series().size(); ++k) output_.set(blocks_.series()[k], head_[head_numbers + k]);
  }

  void tell_series() {
    if (!has_motion() || (from_log("kinetic") && from_log("temperature"))) return;
    const auto freedom = degrees_of_freedom(model_.atoms(), periodic_, options_.constraints);
    events_.tell(
        fmt::format("Kinetic energy and temperature come from the velocities, with {:.0f} degrees of freedom{}.",
                    freedom, options_.constraints > 0 ? "" : " (--constraints N takes some away)"));
  }

  std::string end() {
    if (auto problem = finish_frame(); !problem.empty()) return problem;
    if (frames_ == 0) return "no frame is chosen";
    if (auto problem = output_.close(); !problem.empty()) return problem;
    if (auto problem = write_model_file(model_, model_file_.string()); !problem.empty()) return problem;
    if (auto problem = trajectory_.keep(); !problem.empty()) return problem;
    tell_end();
    return {};
  }

  void tell_end() {
    if (unwrapping_ && options_.whole) {
      events_.tell(
          fmt::format("Molecules ({}) are whole, and stand where the run has them.", unwrapping_->molecules()));
    } else if (unwrapping_) {
      events_.tell(fmt::format(
          "Molecules ({}) are whole, and are followed out of the cell by displacement vectors of the toroidal view.",
          unwrapping_->molecules()));
      if (blocks_.cell_varies()) {
        events_.tell(
            "In this cell that varies they do not stand where the run has them: g(r) and densities need --whole.");
      }
    } else if (periodic_) {
      events_.tell("Coordinates stay as they are in the file.");
    }
    if (with_velocities_ > 0 && with_velocities_ < frames_) {
      events_.tell(fmt::format("Velocities are in {} of the frames only.", with_velocities_));
    }
    events_.tell(
        fmt::format("{} and {}: {}, {} to {:.6g} ps, {}{}{}", trajectory_.path().string(), model_file_.string(),
                    counted(model_.atoms(), "atom"), counted(frames_, "frame"), last_time_,
                    counted(model_.bonds.size(), "bond"), with_velocities_ > 0 ? ", velocities" : "",
                    periodic_ ? blocks_.cell_varies() ? ", a cell that varies" : ", a fixed cell" : ", no cell"));
  }

  const ImportOptions& options_;
  const ImportEvents& events_;
  const PartFile trajectory_;
  const fs::path model_file_;
  ScriptStream script_;
  TopologyBlocks blocks_;
  MolecularModel model_;
  TrajectoryOutput output_;
  std::optional<Unwrapping> unwrapping_;
  std::optional<Lattice> lattice_;

  std::vector<double> head_;  ///< of the frame that comes in: time, cell, series
  std::vector<double> xyz_;
  std::vector<double> velocities_;
  bool periodic_ = false;
  bool right_angles_ = true;
  Cell cell_{};       ///< as it is written
  Cell file_cell_{};  ///< as the coordinates of the file have it
  Matrix3 alignment_{};
  std::int64_t frames_ = 0;
  std::int64_t with_velocities_ = 0;
  double last_time_ = 0;
};

}  // namespace

ImportResult import_run(const ImportOptions& options, const ImportEvents& events) {
  return Import(options, events).run();
}

}  // namespace pathstat::desk
