#pragma once

#include <cstdint>

namespace pathstat {

/// Keys of the front end that the program asks for by name; the tables of extraction and reports hold further ones.
namespace trajectory_key {
constexpr std::int32_t comments = 2;
constexpr std::int32_t cell_varies = 100008;
constexpr std::int32_t velocities_unusable = 100010;
constexpr std::int32_t frame_has_velocities = 100054;
constexpr std::int32_t file_kind = 200000;
constexpr std::int32_t version = 200001;
constexpr std::int32_t periodic_type = 200142;
constexpr std::int32_t all_ids = 200152;
constexpr std::int32_t reader_code = 200153;
constexpr std::int32_t all_atoms = 200155;
constexpr std::int32_t movable_atoms = 200156;
constexpr std::int32_t movable_ids = 200159;
constexpr std::int32_t all_positions = 200160;
constexpr std::int32_t movable_positions = 200161;
constexpr std::int32_t all_velocities = 200162;
constexpr std::int32_t movable_velocities = 200163;
constexpr std::int32_t time = 400017;
constexpr std::int32_t time_step = 400022;
constexpr std::int32_t cell = 400078;
constexpr std::int32_t stress = 400084;
constexpr std::int32_t cell_vectors = 400105;
constexpr std::int32_t cell_parameters = 400149;
constexpr std::int32_t movable_forces = 400176;
constexpr std::int32_t all_forces = 400180;
}  // namespace trajectory_key

}  // namespace pathstat
