#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "recording_core.h"
#include "services/work_directory.h"
#include "trajectory/written_trajectory.h"

namespace pathstat {

using Vector = std::array<double, 3>;

/// A trajectory to be written, in which every atom has a place and a velocity as functions of atom and frame, from 0.
struct Motion {
  std::int32_t frames;
  std::vector<std::int32_t> moved_ids;
  std::int32_t all_atoms;
  std::function<Vector(std::size_t atom, std::int32_t frame)> position;
  std::function<Vector(std::size_t atom, std::int32_t frame)> velocity = {};  ///< none without it
  std::function<double(std::int32_t frame)> time = [](std::int32_t frame) { return 0.5 * frame; };
  double time_step = 0.01;

  void write(const std::string& path) const {
    WrittenTrajectory run(all_atoms, moved_ids);
    for (std::int32_t frame = 0; frame < frames; ++frame) {
      run.set(1000, {time(frame)}).set(1003, {time_step}).set(1071, all(position, frame));
      if (velocity) run.set(1072, all(velocity, frame));
      run.frame();
    }
    std::filesystem::copy_file(run.path(), path, std::filesystem::copy_options::overwrite_existing);
  }

 private:
  std::vector<double> all(const std::function<Vector(std::size_t, std::int32_t)>& vector, std::int32_t frame) const {
    std::vector<double> values;
    for (std::size_t atom = 0; atom < moved_ids.size(); ++atom) {
      for (const double value : vector(atom, frame)) values.push_back(value);
    }
    return values;
  }
};

/// A directory of its own and a Core with one model, whose atoms have the identifiers 1 ... n and are objects 100 + id.
class WithMovingAtoms : public WorkDirectory {
 protected:
  static constexpr std::int32_t model = 7;
  using Answer = RecordingCore::Answer;
  using Inputs = RecordingCore::Inputs;

  /// Writes "run.trj" and lays the model's answers ready.
  void make(const Motion& motion) {
    motion.write("run.trj");
    const auto n = motion.all_atoms;
    core_.answers["kvD_MOD_NumAtoms"] = [n](const Inputs&) { return Answer{{n, 0, 0}, {}, {}}; };
    core_.answers["kvD_MOD_AtomList"] = [n](const Inputs&) {
      Answer answer;
      for (std::int32_t id = 1; id <= n; ++id) answer.integers.push_back(100 + id);
      answer.integers.push_back(n);
      return answer;
    };
    core_.answers["kvD_Id"] = for_each_object([](std::int32_t object) { return object - 100; });
    core_.answers["kvD_IsMovable"] = for_each_object([motion](std::int32_t object) {
      return static_cast<std::int32_t>(std::ranges::count(motion.moved_ids, object - 100));
    });
  }

  /// The atoms that the Core tells as selected.
  void select(const std::vector<std::int32_t>& objects) {
    core_.answers["kvD_SEL_NumSelected"] = [objects](const Inputs&) {
      return Answer{{static_cast<std::int32_t>(objects.size()), 0, 0}, {}, {}};
    };
    core_.answers["kvD_SEL_FindSelected"] = [objects](const Inputs&) {
      Answer answer{{objects.begin(), objects.end()}, {}, {}};
      answer.integers.push_back(static_cast<std::int32_t>(objects.size()));
      return answer;
    };
  }

  /// Answers an operation on a list of objects with one integer for each.
  static std::function<Answer(const Inputs&)> for_each_object(const std::function<std::int32_t(std::int32_t)>& value) {
    return [value](const Inputs& inputs) {
      Answer answer;
      for (std::size_t k = 1; k < inputs.size(); ++k) answer.integers.push_back(value(std::stoi(inputs[k])));
      return answer;
    };
  }

  RecordingCore core_;
};

}  // namespace pathstat
