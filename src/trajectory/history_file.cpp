#include "trajectory/history_file.h"

#include <algorithm>
#include <new>
#include <utility>

#include "support/big_endian.h"
#include "trajectory/front_end.h"
#include "trajectory/history_head.h"

namespace pathstat {
namespace {

using namespace trajectory_status;

constexpr std::int64_t first_cell_bytes = 544;  // the cell, and much that nothing needs
constexpr std::int64_t run_bytes = 20;
constexpr std::int64_t marker_bytes = 4;
constexpr std::int64_t cell_bytes = 120;
constexpr std::int32_t later_frame = 1;

struct OpenHistory {
  RecordReader reader;
  std::vector<std::int64_t> frame_starts;    // of frames 1, 2, ... as far as they are known
  std::int32_t frame = 0;                    // loaded
  std::vector<std::byte> energies;           // the loaded frame's energy record
  std::array<std::int64_t, 2> vectors_at{};  // offsets of its positions and velocities
  std::vector<std::byte> vectors;            // one of these records as it stands in the file
};
OpenHistory history;

std::int64_t known_frames() { return std::ssize(history.frame_starts); }

/// Numbers before a part of the energy record.
std::int64_t numbers_before(HistoryEnergy part) {
  std::int64_t numbers = 0;
  for (auto k = HistoryEnergy::total; k != part; k = static_cast<HistoryEnergy>(static_cast<int>(k) + 1)) {
    numbers += history_energies(k);
  }
  return numbers;
}

std::int64_t energy_bytes() { return 8 * numbers_before(HistoryEnergy::count); }
std::int64_t vector_bytes(std::int32_t atoms) { return std::int64_t{12} * atoms; }

/// Takes in the records of a frame in turn; the first failure stays in the status.
class FrameReader {
 public:
  /// @param cut_status  what becomes of the status where the file ends inside the frame
  FrameReader(std::int32_t cut_status, std::int32_t& status)
      : cut_status_(cut_status), status_(status), start_(history.reader.position()) {}

  /// Stands at the payload of the next record, if that has this length.
  bool expect(std::int64_t length) {
    if (status_ != 0) return false;
    switch (history.reader.expect(length)) {
      case RecordStatus::ok:
        return true;
      case RecordStatus::end:
        status_ = history.reader.position() == start_ ? end_of_file : cut_status_;
        return false;
      case RecordStatus::cut:
        status_ = cut_status_;
        return false;
      default:
        status_ = read_error;
        return false;
    }
  }
  /// The payload of the next record; empty if that can't be had.
  BigEndian load(std::int64_t length) {
    if (!expect(length)) return BigEndian({});
    if (history.reader.load() != RecordStatus::ok) status_ = read_error;
    return BigEndian(status_ == 0 ? history.reader.payload() : std::span<const std::byte>{});
  }
  void pass(std::int64_t length) {
    if (expect(length)) history.reader.skip();
  }

  void take_energies() {
    if (!expect(energy_bytes())) return;
    history.energies.resize(static_cast<std::size_t>(history.reader.length()));
    if (history.reader.read(history.energies) != RecordStatus::ok) status_ = read_error;
  }
  void take_cell(std::int64_t length) {
    auto payload = load(length);
    histrj_d_.cell = payload.f64<6>();
    histrj_d_.vectors = payload.f64<9>();
  }
  void take_run() {
    constexpr std::int32_t most_components = INT32_MAX / 8;  // so that no length overflows
    auto payload = load(run_bytes);
    histrj_i_.his_components = payload.i32();
    histrj_d_.his_time_step = 0.001 * payload.f64();
    histrj_i_.his_interval = payload.i32();
    histrj_i_.his_first_step = payload.i32();
    const bool possible = histrj_i_.his_components >= 0 && histrj_i_.his_components <= most_components;
    if (status_ == 0 && !possible) status_ = read_error;
  }
  void take_marker() {
    const bool is_later = load(marker_bytes).i32() == later_frame;
    if (status_ == 0 && !is_later) status_ = bad_frame_marker;
  }
  /// Notes where the positions and velocities are.
  void locate_vectors(std::int32_t atoms) {
    for (auto& at : history.vectors_at) {
      if (!expect(vector_bytes(atoms))) return;
      at = history.reader.position();
      history.reader.skip();
    }
  }

 private:
  std::int32_t cut_status_;
  std::int32_t& status_;
  std::int64_t start_;
};

/// It belongs to the head: a file that ends in it is as good as one that ends before.
void read_first_frame(std::int32_t& status) {
  FrameReader records(end_of_file, status);
  records.take_cell(first_cell_bytes);
  records.take_run();
  records.take_energies();
  records.locate_vectors(histrj_i_.his_atoms);
}

void read_later_frame(std::int32_t& status) {
  FrameReader records(read_error, status);
  records.take_marker();
  records.take_energies();
  records.take_cell(cell_bytes);
  records.locate_vectors(histrj_i_.his_stored_atoms);
}

void pass_later_frame(std::int32_t& status) {
  FrameReader records(read_error, status);
  const auto vectors = vector_bytes(histrj_i_.his_stored_atoms);
  for (const auto length : {marker_bytes, energy_bytes(), cell_bytes, vectors, vectors}) records.pass(length);
}

/// Learns where the frame starts by passing the frames before it.
void locate(std::int32_t frame, std::int32_t& status) {
  if (frame < 1) status = read_error;
  while (status == 0 && frame > known_frames()) {
    history.reader.seek(history.frame_starts.back());
    pass_later_frame(status);
    if (status == 0) history.frame_starts.push_back(history.reader.position());
  }
}

/// Turns packed vectors of the file into doubles.
/// @param order  the vectors wanted, by their places from 1; all in turn if empty
template <bool turned>
void widen(const std::byte* packed, std::span<const std::int32_t> order, const Matrix3& turn, std::span<double> out) {
  for (std::size_t k = 0; k < out.size() / 3; ++k) {
    const std::size_t place = order.empty() ? k : static_cast<std::size_t>(order[k] - 1);
    const std::byte* at = packed + 12 * place;
    const double x = load_big_endian<float>(at), y = load_big_endian<float>(at + 4), z = load_big_endian<float>(at + 8);
    for (std::size_t r = 0; r < 3; ++r) {
      out[3 * k + r] = turned ? turn[r] * x + turn[r + 3] * y + turn[r + 6] * z : r == 0 ? x : r == 1 ? y : z;
    }
  }
}

}  // namespace

void open_history(RecordReader file, std::int32_t& status) try {
  close_history();
  history.reader = std::move(file);
  read_history_head(history.reader, status);
  if (status != 0) return close_history();
  history.frame_starts = {history.reader.position()};
  read_first_frame(status);
  if (status != 0) return close_history();
  history.frame = 1;
  history.frame_starts.push_back(history.reader.position());
} catch (const std::bad_alloc&) {
  close_history();
  status = read_error;
}

void close_history() {
  history = OpenHistory();
  histrj_i_ = {};
  histrj_d_ = {};
  histrj_l_ = {};
  histrj_c_ = {};
  histrj_p_ = {};
}

void read_history_frame(std::int32_t frame, std::int32_t& status) try {
  status = history.frame_starts.empty() ? read_error : 0;
  if (status != 0 || (frame >= 1 && frame == history.frame)) return;
  history.frame = 0;
  locate(frame, status);
  if (status != 0) return;
  history.reader.seek(history.frame_starts[static_cast<std::size_t>(frame - 1)]);
  frame == 1 ? read_first_frame(status) : read_later_frame(status);
  if (status != 0) return;
  history.frame = frame;
  if (frame == known_frames()) history.frame_starts.push_back(history.reader.position());
} catch (const std::bad_alloc&) {
  status = read_error;
}

std::int32_t history_frame() { return history.frame; }

std::int64_t history_energies(HistoryEnergy part) {
  const std::int64_t components = histrj_i_.his_components, molecules = histrj_i_.his_molecules;
  switch (part) {
    case HistoryEnergy::components:
      return components;
    case HistoryEnergy::components_of:
      return components * molecules;
    case HistoryEnergy::potential_of:
    case HistoryEnergy::attractive_of:
    case HistoryEnergy::repulsive_of:
    case HistoryEnergy::van_der_waals_of:
    case HistoryEnergy::coulomb_of:
      return molecules;
    case HistoryEnergy::stress:
      return 9;
    case HistoryEnergy::tensors:
      return std::int64_t{5} * 9;
    default:
      return 1;
  }
}

void get_history_energies(HistoryEnergy part, std::int64_t first, std::span<double> values) {
  const auto at = static_cast<std::size_t>(8 * (numbers_before(part) + first));
  if (at <= history.energies.size() && values.size_bytes() <= history.energies.size() - at) {
    load_big_endian(history.energies.data() + at, values);
  }
}

void get_history_vectors(HistoryVectors which, const Matrix3* turn, std::span<double> vectors,
                         std::int32_t& status) try {
  const auto atoms = history.frame == 1 ? histrj_i_.his_atoms : histrj_i_.his_stored_atoms;
  const auto wanted = std::min(vectors.size() / 3, static_cast<std::size_t>(histrj_i_.his_stored_atoms));
  history.vectors.resize(static_cast<std::size_t>(vector_bytes(history.frame == 0 ? 0 : atoms)));
  const auto at = history.vectors_at[which == HistoryVectors::positions ? 0 : 1];
  if (history.frame == 0 || history.reader.read_at(at, history.vectors) != RecordStatus::ok) {
    status = read_error;
    return;
  }
  std::span<const std::int32_t> order;
  if (history.frame == 1) order = histrj_p_.mov_atom_index.span();
  const auto widen_all = turn != nullptr ? widen<true> : widen<false>;
  widen_all(history.vectors.data(), order, turn != nullptr ? *turn : Matrix3{}, vectors.first(3 * wanted));
} catch (const std::bad_alloc&) {
  status = read_error;
}

}  // namespace pathstat
