#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "support/logical.h"
#include "trajectory/front_end.h"
#include "trajectory/symmetry_images.h"

// History trajectories behind the keys of the front end. In the reader's order the movable atoms stand first, as the
// file lists them, then the others of the model in the order of its coordinate file, then the symmetry images.

namespace pathstat {

/// What the attach adds to the open history file; the labels begin with "Trj/His/".
struct HistoryModel {
  SymmetryImages images;
  NamedBlock<double> fixed_positions;  ///< "Xyz": those of the atoms that the file does not store, from the model
};
inline HistoryModel history_model;

/// @param status  bad_mode, no_file, no_file_unit, unit_not_assigned, or that of open_history
void openhistrajectory_(std::string_view name, std::int32_t mode, std::int32_t& handle, std::int32_t& status);
/// Fits the trajectory to a model of as many stored atoms. @param status  attach_refused
void attachhismodels_(std::int32_t handle, std::span<const std::int32_t> models, std::int32_t& status);
/// @param status  that of read_history_frame
void readhisframe_(std::int32_t handle, std::int32_t frame, std::int32_t& status);
void gethisdatadble_(std::int32_t handle, std::int32_t key, std::span<double> values, std::int32_t& count,
                     std::int32_t& status);
/// This format has no values of this type: status 1.
void gethisdatareal_(std::int32_t handle, std::int32_t key, std::span<float> values, std::int32_t& count,
                     std::int32_t& status);
void gethisdataint_(std::int32_t handle, std::int32_t key, std::span<std::int32_t> values, std::int32_t& count,
                    std::int32_t& status);
void gethisdatalogical_(std::int32_t handle, std::int32_t key, std::span<Logical> values, std::int32_t& count,
                        std::int32_t& status);
/// Key 2 yields the two lines behind the title. @param status  -50000 if they are cut to the width
void gethisdatachar_(std::int32_t handle, std::int32_t key, std::span<char> fields, std::int32_t width,
                     std::int32_t& count, std::int32_t& status);
void closehis_(std::int32_t handle, std::int32_t& status);

inline constexpr TrajectoryReader history_reader{
    openhistrajectory_, attachhismodels_,   readhisframe_,   gethisdatadble_, gethisdatareal_,
    gethisdataint_,     gethisdatalogical_, gethisdatachar_, closehis_,
};

}  // namespace pathstat
