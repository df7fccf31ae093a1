#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "desk/model/molecular_model.h"

namespace pathstat::desk {

/// What became of reading a frame.
enum class FrameEnd {
  read,
  no_more,  ///< the file ends in front of it
  broken,   ///< the file ends inside it, or is damaged there
};

/// The frames of a trajectory, for a model that has its atoms.
class FrameSource {
 public:
  FrameSource() = default;
  virtual ~FrameSource() = default;
  FrameSource(const FrameSource&) = delete;
  FrameSource& operator=(const FrameSource&) = delete;

  /// Puts a frame, from 1 on, on the model: positions, cell, and "Velocity" (Å/ps) where the file has it.
  /// @param time  ps; nothing in a form without times
  virtual FrameEnd read(std::int32_t frame, MolecularModel& model, std::optional<double>& time) = 0;
  /// The places of the atoms that the frames hold, in their order; others stay where the model has them.
  const std::vector<std::uint32_t>& moving() const { return places_; }
  /// The handle of a binary trajectory, for what else its frames hold; 0 for other forms.
  virtual std::int32_t binary_handle() const { return 0; }

 protected:
  std::vector<std::uint32_t> places_;
};

struct OpenedSource {
  std::unique_ptr<FrameSource> source;
  std::string problem;  ///< names the file
};

/// Opens a trajectory by the extension of its name.
OpenedSource open_frames(const std::filesystem::path& path, const MolecularModel& model);

/// Velocities of a model, by the name that its file gives them.
inline constexpr const char* velocity_name = "Velocity";

}  // namespace pathstat::desk
