#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "support/logical.h"
#include "support/text_field.h"
#include "trajectory/archive_layout.h"
#include "trajectory/front_end.h"

// The archive behind the keys of the front end: positions, charges, one energy and the cell. Positions and cell are
// delivered as they lie in models.

namespace pathstat {

/// What the open archive is.
struct ArcTrjI {
  std::int32_t arc_mode = 0;  ///< 87321 text, 12378 records
  std::int32_t arc_unit = 0;
  std::int32_t arc_header_lines = 0;
  std::int32_t arc_dims = 0;         ///< periodic directions
  std::int32_t arc_period_type = 0;  ///< 0, 100, 101
  std::int32_t arc_lines_per_frame = 0;
  std::int32_t arc_atoms = 0;  ///< atoms of a frame
  std::int32_t arc_ensemble = -1;
  std::int32_t arc_thermostat = -1;
  std::int32_t unused = 0;
  std::int32_t arc_total_atoms = 0;  ///< with symmetry images, after the attach
  std::int32_t arc_operators = 0;    ///< of the model's space group, after the attach
};
inline ArcTrjI arctrj_i_;

/// The values of the current frame.
struct ArcTrjD {
  double arc_energy = 0;
  ArchiveCell arc_cell{};
};
inline ArcTrjD arctrj_d_;

struct ArcTrjL {
  Logical arc_periodic;
  Logical arc_has_energy;
  Logical arc_open;
  Logical arc_attached;
};
inline ArcTrjL arctrj_l_;

struct ArcTrjC {
  Text<80> arc_title;
};
inline ArcTrjC arctrj_c_;

/// Addresses of named memory "Trj/Arc/...", 0 until the open or, but for the first two, the attach. Stored atoms stand
/// first, in the order of the file, then their images.
struct ArcTrjP {
  std::int64_t arc_xyz = 0;             ///< "Inxyz": 3 numbers an atom, those of images filled when they are asked for
  std::int64_t arc_charges = 0;         ///< "InCharge": stored atoms
  std::int64_t arc_rotations = 0;       ///< "SymMat": 9 numbers an operator, fractional
  std::int64_t arc_translations = 0;    ///< "SymTr": 3 numbers an operator, fractional
  std::int64_t arc_parents = 0;         ///< "SymParent": for each atom the place of the stored one, from 1
  std::int64_t arc_atom_operators = 0;  ///< "SymPtr": for each atom its operator, from 1
  std::int64_t arc_ids = 0;             ///< "IdList"
};
inline ArcTrjP arctrj_p_;

/// @param status  bad_mode, no_file, no_file_unit, unit_not_assigned, helical, unknown_periodicity, header_cut or
///                fixed_header_cut, read_error
void openarctrajectory_(std::string_view name, std::int32_t mode, std::int32_t& handle, std::int32_t& status);
/// Fits the archive to a model: as many stored atoms, in the order of the model's file, and the same periodicity.
/// @param status  attach_refused
void attacharcmodels_(std::int32_t handle, std::span<const std::int32_t> models, std::int32_t& status);
/// @param status  end_of_file; read_error, with records also for a frame that is cut
void readarcframe_(std::int32_t handle, std::int32_t frame, std::int32_t& status);
/// A capacity of 0 does nothing. Other than the energy, which is 0 at the start, the values are those of a frame:
/// before one is read the status is no_such_key.
void getarcdatadble_(std::int32_t handle, std::int32_t key, std::span<double> values, std::int32_t& count,
                     std::int32_t& status);
void getarcdatareal_(std::int32_t handle, std::int32_t key, std::span<float> values, std::int32_t& count,
                     std::int32_t& status);
void getarcdataint_(std::int32_t handle, std::int32_t key, std::span<std::int32_t> values, std::int32_t& count,
                    std::int32_t& status);
void getarcdatalogical_(std::int32_t handle, std::int32_t key, std::span<Logical> values, std::int32_t& count,
                        std::int32_t& status);
/// This format has no texts: status no_such_key.
void getarcdatachar_(std::int32_t handle, std::int32_t key, std::span<char> fields, std::int32_t width,
                     std::int32_t& count, std::int32_t& status);
void closearc_(std::int32_t handle, std::int32_t& status);

/// Fills the positions of the images from those of the current frame's stored atoms. For an attached archive.
/// @param status  that of the crystal maths
void place_archive_images(std::int32_t& status);

inline constexpr TrajectoryReader archive_reader{
    openarctrajectory_, attacharcmodels_,   readarcframe_,   getarcdatadble_, getarcdatareal_,
    getarcdataint_,     getarcdatalogical_, getarcdatachar_, closearc_,
};

}  // namespace pathstat
