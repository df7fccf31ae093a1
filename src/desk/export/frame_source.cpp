#include "desk/export/frame_source.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <unordered_map>
#include <utility>
#include <vector>

#include "desk/advice/trajectory_advice.h"
#include "support/record_file.h"
#include "trajectory/archive_file.h"
#include "trajectory/binary_trajectory.h"
#include "trajectory/coordinate_alignment.h"
#include "trajectory/front_end.h"
#include "trajectory/history_adapter.h"
#include "trajectory/history_file.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

/// Sets the vectors along which a model repeats; a cell that spans nothing is that of no frame.
void set_cell(MolecularModel& model, const CellVectors& vectors) {
  const Cell cell{vectors.a, vectors.b, vectors.c};
  if (model.periodic_type == not_periodic || !is_usable_cell(model.periodic_type, cell)) return;
  for (auto axis = static_cast<std::size_t>(3 - periodic_directions(model.periodic_type)); axis < 3; ++axis) {
    model.cell[axis] = cell[axis];
  }
}

/// Gives the atoms at places of the model the vectors x1, y1, z1, x2, ...
void put(std::vector<Vector3>& vectors, const std::vector<std::uint32_t>& places, const std::vector<double>& numbers) {
  for (std::size_t k = 0; k < places.size(); ++k) {
    vectors[places[k]] = {numbers[3 * k], numbers[3 * k + 1], numbers[3 * k + 2]};
  }
}

class BinaryFrames : public FrameSource {
 public:
  /// @param problem  says what is wrong; the source is of no use then
  BinaryFrames(const std::string& path, const MolecularModel& model, std::string& problem) {
    std::int32_t status = 0;
    kvA_TRJ_OpenRead(path, binary_mode::read, handle_, status);
    if (status != 0) {
      problem = fmt::format("cannot be read (status {})", status);
      return;
    }
    const auto& head = binary_trajectory(handle_)->header;
    if (head.groups > 1) {
      problem = "has several groups of atoms, which can't be exported";
      return;
    }
    const auto atoms = static_cast<std::size_t>(std::max({head.movable, head.total, 0}));
    if (atoms != model.atoms()) {
      problem = fmt::format("is of {} atoms, and the model {} has {}", atoms, model.name, model.atoms());
      return;
    }
    find_places(head, model, problem);
  }
  ~BinaryFrames() override {
    std::int32_t ignored = 0;
    if (handle_ != 0) kvA_TRJ_Close(handle_, ignored);
  }

  FrameEnd read(std::int32_t frame, MolecularModel& model, std::optional<double>& time) override {
    std::int32_t status = 0, count = 0;
    kvA_TRJ_ReadFrame(handle_, frame, status);
    if (status == binary_status::end_of_file)
      return binary_trajectory(handle_)->ended_inside_frame ? FrameEnd::broken : FrameEnd::no_more;
    if (status != 0 || !take(1071, model.positions)) return FrameEnd::broken;
    double picoseconds = 0;
    kvA_TRJ_ValueDouble(handle_, 1000, std::span(&picoseconds, 1), count, status);
    time = picoseconds;
    std::array<double, 6> cell{};
    kvA_TRJ_ValueDouble(handle_, 1058, cell, count, status);
    if (status == 0) set_cell(model, vectors_of_cell(cell));
    if (!binary_trajectory(handle_)->frame.has(AtomGroup::velocities)) return FrameEnd::read;
    auto& velocities = model.vectors[velocity_name];
    velocities.resize(model.atoms());
    return take(1072, velocities) ? FrameEnd::read : FrameEnd::broken;
  }
  std::int32_t binary_handle() const override { return handle_; }

 private:
  /// The places in the model of the atoms that move, by their identifiers.
  void find_places(const BinaryHeader& head, const MolecularModel& model, std::string& problem) {
    std::unordered_map<std::int32_t, std::uint32_t> place_of;
    place_of.reserve(model.atoms());
    for (std::uint32_t k = 0; k < model.atoms(); ++k) place_of.emplace(model.ids[k], k);
    for (std::int32_t k = 0; k < head.movable; ++k) {
      const auto id = head.movable_ids.empty() ? k : head.movable_ids[static_cast<std::size_t>(k)];
      const auto found = place_of.find(id);
      if (found == place_of.end()) {
        problem = fmt::format("holds an atom {}, which the model {} has not", id, model.name);
        return;
      }
      places_.push_back(found->second);
    }
  }

  bool take(std::int32_t key, std::vector<Vector3>& vectors) const {
    std::vector<double> numbers(3 * places_.size());
    std::int32_t count = 0, status = 0;
    kvA_TRJ_ValueDouble(handle_, key, numbers, count, status);
    if (status == 0) put(vectors, places_, numbers);
    return status == 0;
  }

  std::int32_t handle_ = 0;
};

class HistoryFrames : public FrameSource {
 public:
  HistoryFrames(const std::string& path, const MolecularModel& model, std::string& problem) {
    std::int32_t status = 0;
    openhistrajectory_(path, 1, handle_, status);
    if (status != 0) {
      problem = fmt::format("cannot be read (status {})", status);
      return;
    }
    const auto atoms = static_cast<std::size_t>(std::max(histrj_i_.his_atoms, 0));
    if (atoms != model.atoms()) {
      problem = fmt::format("is of {} atoms, and the model {} has {}", atoms, model.name, model.atoms());
      return;
    }
    const auto moving = histrj_p_.mov_atom_index.span();
    for (const auto number : moving) places_.push_back(static_cast<std::uint32_t>(number - 1));
    for (std::uint32_t k = 0; moving.empty() && k < atoms; ++k) places_.push_back(k);
    const auto is_there = [&](std::uint32_t place) { return place < atoms; };
    if (!std::all_of(places_.begin(), places_.end(), is_there)) problem = "names atoms that it does not have";
  }
  ~HistoryFrames() override {
    std::int32_t ignored = 0;
    if (handle_ != 0) closehis_(handle_, ignored);
  }

  FrameEnd read(std::int32_t frame, MolecularModel& model, std::optional<double>& time) override {
    std::int32_t status = 0;
    read_history_frame(frame, status);
    if (status != 0) return status == trajectory_status::end_of_file ? FrameEnd::no_more : FrameEnd::broken;
    const auto& his = histrj_i_;
    time = histrj_d_.his_time_step * (his.his_first_step + static_cast<double>(his.his_interval) * (frame - 1));
    Matrix3 turn{};
    const auto vectors = vectors_of_matrix(histrj_d_.vectors);
    const bool periodic = model.periodic_type != not_periodic;
    if (periodic) {
      trjcoordalignmat_(vectors.a, vectors.b, vectors.c, histrj_d_.cell, model.periodic_type, turn, status);
      set_cell(model, turned(vectors, turn));
    }
    if (status != 0) return FrameEnd::broken;
    auto& velocities = model.vectors[velocity_name];
    velocities.resize(model.atoms());
    return take(HistoryVectors::positions, periodic ? &turn : nullptr, model.positions) &&
                   take(HistoryVectors::velocities, periodic ? &turn : nullptr, velocities)
               ? FrameEnd::read
               : FrameEnd::broken;
  }

 private:
  static CellVectors turned(const CellVectors& cell, const Matrix3& turn) {
    CellVectors result;
    dmatvecmul_(turn, cell.a, result.a);
    dmatvecmul_(turn, cell.b, result.b);
    dmatvecmul_(turn, cell.c, result.c);
    return result;
  }

  bool take(HistoryVectors which, const Matrix3* turn, std::vector<Vector3>& vectors) const {
    std::vector<double> numbers(3 * places_.size());
    std::int32_t status = 0;
    get_history_vectors(which, turn, numbers, status);
    if (status == 0) put(vectors, places_, numbers);
    return status == 0;
  }

  std::int32_t handle_ = 0;
};

class ArchiveFrames : public FrameSource {
 public:
  ArchiveFrames(const std::string& path, const MolecularModel& model, std::string& problem)
      : descriptor_(open_regular(path)) {
    std::int32_t status = trajectory_status::no_file;
    if (descriptor_.is_open()) file_ = ArchiveFile(descriptor_.get(), status);
    if (status != 0) {
      problem = fmt::format("cannot be read (status {})", status);
      return;
    }
    const auto atoms = static_cast<std::size_t>(std::max(file_.header().atoms, 0));
    if (atoms != model.atoms()) {
      problem = fmt::format("is of {} atoms, and the model {} has {}", atoms, model.name, model.atoms());
      return;
    }
    numbers_.resize(3 * atoms);
    charges_.resize(atoms);
    for (std::uint32_t k = 0; k < atoms; ++k) places_.push_back(k);
  }

  FrameEnd read(std::int32_t frame, MolecularModel& model, std::optional<double>& time) override {
    std::int32_t status = 0;
    time.reset();
    file_.read(frame, frame_, numbers_, charges_, status);
    if (status == trajectory_status::end_of_file && frame > 1 && !file_.goes_on()) return FrameEnd::no_more;
    if (status != 0) return FrameEnd::broken;
    put(model.positions, places_, numbers_);
    CellVectors vectors;
    archive_cell_vectors(frame_.cell, model.periodic_type, vectors, status);
    if (status == 0) set_cell(model, vectors);
    return FrameEnd::read;
  }

 private:
  FileDescriptor descriptor_;
  ArchiveFile file_;
  ArchiveFrame frame_;
  std::vector<double> numbers_, charges_;
};

template <class Frames>
std::unique_ptr<FrameSource> made(const std::string& path, const MolecularModel& model, std::string& problem) {
  return std::make_unique<Frames>(path, model, problem);
}

struct Form {
  std::string_view extension;
  std::unique_ptr<FrameSource> (*make)(const std::string& path, const MolecularModel& model, std::string& problem);
};

constexpr std::array forms{Form{".trj", made<BinaryFrames>}, Form{".qtrj", made<BinaryFrames>},
                           Form{".atrj", made<BinaryFrames>}, Form{".his", made<HistoryFrames>},
                           Form{".arc", made<ArchiveFrames>}};

}  // namespace

OpenedSource open_frames(const fs::path& path, const MolecularModel& model) {
  if (auto why = why_not_loaded(path, model.atoms()); !why.empty()) return {nullptr, std::move(why)};
  const auto extension = path.extension().string();
  const auto form =
      std::find_if(forms.begin(), forms.end(), [&](const Form& row) { return row.extension == extension; });
  if (form == forms.end()) return {nullptr, fmt::format("{} is no trajectory", path.string())};
  OpenedSource opened;
  opened.source = form->make(path.string(), model, opened.problem);
  if (!opened.problem.empty()) opened = {nullptr, fmt::format("{} {}", path.string(), opened.problem)};
  return opened;
}

}  // namespace pathstat::desk
