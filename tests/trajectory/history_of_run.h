#pragma once

#include <cmath>
#include <numeric>
#include <string>

#include "trajectory/binary_trajectory.h"
#include "trajectory/history_writer.h"

namespace pathstat::testing_bytes {

/// The first frames of a binary run in the form of a history file. Its system counts as one molecule, and its cell has
/// right angles.
class HistoryOfRun {
 public:
  HistoryOfRun(const std::string& path, std::int32_t frames) : frames_(frames) {
    kvA_TRJ_Open(path, binary_mode::read, handle_, status_);
    std::int32_t count = 0;
    kvA_TRJ_ValueInt(handle_, 2007, std::span(&plan_.atoms, 1), count, status_);
    plan_.movable.resize(static_cast<std::size_t>(plan_.atoms));
    std::iota(plan_.movable.begin(), plan_.movable.end(), 1);
    const double first = time(1), spacing = time(2) - first;
    plan_.time_step_fs = 1;
    plan_.interval = static_cast<std::int32_t>(std::lround(1000 * spacing));
    plan_.first_step = static_cast<std::int32_t>(std::lround(1000 * first));
  }
  HistoryOfRun(const HistoryOfRun&) = delete;
  ~HistoryOfRun() {
    std::int32_t closed = 0;
    if (handle_ != 0) kvA_TRJ_Close(handle_, closed);
  }

  HistoryPlan& plan() { return plan_; }
  Bytes bytes() {
    Bytes file = history_head(plan_);
    file.add(history_first_frame(plan_, frame(1)));
    for (std::int32_t k = 2; k <= frames_; ++k) file.add(history_later_frame(frame(k)));
    return file;
  }
  /// The file of the example, whose model is butane.
  Bytes example() {
    plan_.title = "n-butane, one molecule, at constant energy";
    plan_.first_line = "The first frames of the binary run of the same name.";
    plan_.second_line = "Velocities are in A/ps.";
    plan_.bonds = {{1, 2}, {2, 3},  {3, 4},  {1, 5},  {1, 6},  {1, 7}, {2, 8},
                   {2, 9}, {3, 10}, {3, 11}, {4, 12}, {4, 13}, {4, 14}};
    return bytes();
  }
  /// False if the run could not be read as far as was asked.
  bool whole() const { return status_ == 0; }

 private:
  double time(std::int32_t frame) {
    kvA_TRJ_ReadFrame(handle_, frame, status_);
    return values(1000, 1)[0];
  }
  /// Zeros where the run has no such values.
  std::vector<double> values(std::int32_t key, std::size_t count) {
    std::vector<double> numbers(count);
    std::int32_t there = 0, status = 0;
    kvA_TRJ_ValueDouble(handle_, key, numbers, there, status);
    return numbers;
  }

  HistoryFrame frame(std::int32_t number) {
    kvA_TRJ_ReadFrame(handle_, number, status_);
    HistoryFrame made;
    const EnergyPlaces at(plan_);
    made.energies.resize(plan_.energies());
    const auto put = [&](std::size_t place, double value) { made.energies[place] = value; };
    put(at.total, values(1032, 1)[0]);
    put(at.potential, values(1006, 1)[0]);
    put(at.kinetic, values(1034, 1)[0]);
    struct Component {
      std::size_t place;
      std::int32_t key;
    };
    for (const auto& [place, key] : {Component{0, 1007}, Component{1, 1008}, Component{2, 1009}, Component{3, 1010},
                                     Component{13, 1011}, Component{16, 1012}, Component{17, 1013}}) {
      put(at.components + place, values(key, 1)[0]);
      put(at.components_of + place, values(key, 1)[0]);
    }
    put(at.potential_of, made.energies[at.potential]);
    put(at.van_der_waals_of, values(1011, 1)[0]);
    put(at.coulomb_of, values(1012, 1)[0]);
    put(at.pressure, 10000 * values(1036, 1)[0]);
    const auto stress = values(1063, 6);
    constexpr std::array<std::size_t, 9> tensor{0, 5, 4, 5, 1, 3, 4, 3, 2};  // of XX, YY, ZZ, YZ, XZ, XY
    for (std::size_t k = 0; k < 9; ++k) put(at.stress + k, 10000 * stress[tensor[k]]);
    const auto cell = values(1058, 6);
    const double right = std::acos(0.0);
    made.cell = {cell[0], cell[1], cell[2], right, right, right};
    made.vectors = {cell[0], 0, 0, 0, cell[1], 0, 0, 0, cell[2]};
    made.positions = values(1071, 3 * static_cast<std::size_t>(plan_.atoms));
    made.velocities = values(1072, made.positions.size());
    return made;
  }

  std::int32_t frames_;
  std::int32_t handle_ = 0;
  std::int32_t status_ = 0;
  HistoryPlan plan_;
};

}  // namespace pathstat::testing_bytes
