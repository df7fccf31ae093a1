#include "trajectory/frame_cache.h"

#include <sys/types.h>

#include <algorithm>
#include <array>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "coreapi/messages.h"
#include "coreapi/object_counts.h"
#include "coreapi/operations.h"
#include "services/file_names.h"
#include "state/analysis_settings.h"
#include "state/frame_cache_state.h"
#include "support/record_file.h"
#include "trajectory/binary_trajectory.h"
#include "trajectory/frame_cell.h"
#include "trajectory/front_end.h"
#include "trajectory/model_frame.h"
#include "trajectory/open_trajectory.h"
#include "trajectory/trajectory_keys.h"

namespace pathstat {
namespace {

constexpr std::int32_t failed = 1;
constexpr std::size_t cell_numbers = 9;
constexpr std::int32_t value_not_in_frame = 50512;

namespace binary_key {
constexpr std::int32_t cell = 1058;
constexpr std::int32_t positions = 1071;
constexpr std::int32_t velocities = 1072;
constexpr std::int32_t forces = 1073;
}  // namespace binary_key

std::span<double> positions() { return {TrjCacheXYZ, 3 * TrjCacheAtObjs.size()}; }
std::span<double> velocities() { return {TrjCacheVXYZ, 3 * TrjCacheAtObjs.size()}; }

void store_cell(const CellVectors& vectors) { std::ranges::copy(vectors.matrix(), TrjCacheL); }

void lay_out_record() {
  const std::size_t cell = TrjCacheModelPeriod != periodic_type::none ? cell_numbers : 0;
  const std::size_t coordinates = 3 * static_cast<std::size_t>(TrjCacheNAtoms);
  const bool has_velocities = TrjFormat == reader::history;
  TrjCacheData.resize(cell + coordinates * (has_velocities ? 2 : 1));
  TrjCacheDataSize = static_cast<std::int64_t>(TrjCacheData.size() * sizeof(double));
  TrjCacheFrameSize = TrjCacheDataSize;
  TrjCacheL = cell > 0 ? TrjCacheData.data() : nullptr;
  TrjCacheXYZ = TrjCacheData.data() + cell;
  TrjCacheVXYZ = has_velocities ? TrjCacheXYZ + coordinates : nullptr;
}

void read_header_values(std::int32_t handle, std::int32_t& status) {
  struct Wanted {
    std::int32_t key;
    std::int32_t* value;
  };
  for (const auto& wanted :
       {Wanted{trajectory_key::reader_code, &TrjFormat}, Wanted{trajectory_key::periodic_type, &TrjCacheModelPeriod},
        Wanted{trajectory_key::movable_atoms, &TrjCacheNAtoms}, Wanted{trajectory_key::all_atoms, &TrjCacheNP1Atoms}}) {
    trj_ivalue_(handle, wanted.key, *wanted.value, status);
    if (status != 0) return;
  }
  if (TrjCacheNAtoms < 0) status = failed;
}

void match_atoms(std::int32_t model, std::int32_t& status) {
  const auto atoms = atoms_of_model(model, status);
  if (status == 0) TrjCacheAtObjs = atoms_by_identifier(atoms, TrjCacheAtIds, status);
}

void open_binary(const std::string& file, std::int32_t last, std::int32_t& status) {
  kvA_TRJ_Open(expanded_name(file), 100, XGrafTrjHandle, status);
  if (status == 0) kvA_TRJ_ReadFrame(XGrafTrjHandle, last, status);
}

void read_record(std::int32_t handle, std::int32_t frame, std::int32_t& status) {
  std::int32_t count = 0;
  trj_readframe_(handle, frame, status);
  if (status == 0 && TrjCacheL != nullptr) store_cell(cell_of_frame(handle, status));
  if (status == 0) trj_dvalue_(handle, trajectory_key::movable_positions, positions(), count, status);
  if (status == 0 && TrjCacheVXYZ != nullptr) {
    trj_dvalue_(handle, trajectory_key::movable_velocities, velocities(), count, status);
  }
}

void copy_frames(std::int32_t handle, std::int32_t first, std::int32_t last, std::int32_t step, std::int32_t& status) {
  const std::string name(TrjCacheFileName);
  if (create_new(name).is_open()) TrjCacheFile = std::fopen(name.c_str(), "w+b");
  if (TrjCacheFile == nullptr) status = failed;
  for (std::int32_t frame = first; frame <= last && status == 0; frame += step) {
    read_record(handle, frame, status);
    if (status != 0) return;
    if (std::fwrite(TrjCacheData.data(), sizeof(double), TrjCacheData.size(), TrjCacheFile) != TrjCacheData.size()) {
      status = failed;
      return;
    }
    ++TrjCacheNumFrames;
  }
  if (status == 0 && std::fflush(TrjCacheFile) != 0) status = failed;
}

void build(std::int32_t model, const std::string& file, std::int32_t last, std::int32_t& status) {
  const OpenTrajectory source(file, model, status, OpenProblem::left_to_caller);
  if (status == 0) status = source.attach_status();
  if (status == 0) read_header_values(source.handle(), status);
  if (status != 0) return;
  TrjCacheAtIds.resize(static_cast<std::size_t>(TrjCacheNAtoms));
  std::int32_t count = 0;
  trj_ivalue_(source.handle(), trajectory_key::movable_ids, TrjCacheAtIds, count, status);
  if (status == 0) match_atoms(model, status);
  if (status != 0) return;
  lay_out_record();
  if (TrjFormat == reader::binary) {
    open_binary(file, last, status);
    TrjCacheNumFrames = (last - FrameStart + FrameStep) / FrameStep;
  } else {
    copy_frames(source.handle(), FrameStart, last, FrameStep, status);
  }
  TrjCacheModel = model;
}

/// Puts a binary trajectory's vectors on the atoms; a frame without them is no error.
void show_binary_vectors(std::int32_t key, std::string_view name, std::int32_t& status) {
  std::int32_t count = 0;
  kvA_TRJ_ValueDouble(XGrafTrjHandle, key, positions(), count, status);
  if (status == value_not_in_frame) {
    status = 0;
  } else if (status == 0) {
    set_atom_vectors(TrjCacheModel, TrjCacheAtObjs, name, positions(), status);
  }
}

void set_stored_cell(std::int32_t& status) {
  if (TrjCacheL == nullptr) return;
  const auto cell = vectors_of_matrix(MatrixIn<double>(TrjCacheL, cell_numbers));
  set_model_cell(TrjCacheModel, TrjCacheModelPeriod, cell, status);
}

/// A frame without a cell leaves the model its own.
void show_binary_cell(std::int32_t& status) {
  if (TrjCacheL == nullptr) return;
  std::array<double, 6> cell{};
  std::int32_t count = 0;
  kvA_TRJ_ValueDouble(XGrafTrjHandle, binary_key::cell, cell, count, status);
  if (status == value_not_in_frame) {
    status = 0;
  } else if (status == 0) {
    store_cell(vectors_of_cell(cell));
    set_stored_cell(status);
  }
}

void show_binary(std::int32_t frame, std::int32_t& status) {
  std::int32_t count = 0;
  kvA_TRJ_ReadFrame(XGrafTrjHandle, frame, status);
  if (status == 0) show_binary_cell(status);
  if (status == 0) kvA_TRJ_ValueDouble(XGrafTrjHandle, binary_key::positions, positions(), count, status);
  if (status == 0) kvd_setxyz_(TrjCacheAtObjs, positions(), status);
  if (status == 0) show_binary_vectors(binary_key::velocities, "Velocity", status);
  if (status == 0) show_binary_vectors(binary_key::forces, "Force", status);
}

void show_stored(std::int32_t entry, std::int32_t& status) {
  const auto at = static_cast<off_t>(TrjCacheFrameSize) * (entry - 1);
  if (TrjCacheFile == nullptr || fseeko(TrjCacheFile, at, SEEK_SET) != 0 ||
      std::fread(TrjCacheData.data(), sizeof(double), TrjCacheData.size(), TrjCacheFile) != TrjCacheData.size()) {
    status = failed;
    return;
  }
  set_stored_cell(status);
  if (status == 0) kvd_setxyz_(TrjCacheAtObjs, positions(), status);
  if (status == 0 && TrjCacheVXYZ != nullptr) {
    set_atom_vectors(TrjCacheModel, TrjCacheAtObjs, "Velocity", velocities(), status);
  }
}

/// The cache serves one call at a time: a command that the Core nests in a call of the first one finds it taken.
class CacheUse {
 public:
  CacheUse() : taken_before_(std::exchange(taken_, true)) {}
  ~CacheUse() { taken_ = taken_before_; }
  CacheUse(const CacheUse&) = delete;
  CacheUse& operator=(const CacheUse&) = delete;
  bool refused() const { return taken_before_; }

 private:
  static inline bool taken_ = false;
  bool taken_before_;
};

void fail_and_forget(std::int32_t& status) {
  std::int32_t ignored = 0;
  killtrjcache_(ignored);
  status = failed;
}

}  // namespace

void setuptrjcache_(std::int32_t model, std::string_view file, std::int32_t first, std::int32_t last, std::int32_t step,
                    std::int32_t& status) {
  const CacheUse use;
  status = failed;
  if (use.refused()) return;
  killtrjcache_(status);
  FrameStart = first;
  FrameStep = step;
  try {
    if (step < 1) status = failed;
    if (status == 0) build(model, std::string(trimmed(file)), last, status);
  } catch (const std::bad_alloc&) {
    status = failed;
  }
  if (status != 0) fail_and_forget(status);
}

void killtrjcache_(std::int32_t& status) {
  status = 0;
  std::int32_t ignored = 0;
  if (TrjCacheFile != nullptr) std::fclose(TrjCacheFile);
  if (XGrafTrjHandle != 0) kvA_TRJ_Close(XGrafTrjHandle, ignored);
  if (kvs_fil_exists_(TrjCacheFileName)) kvs_fil_delete_(TrjCacheFileName, ignored);
  TrjCacheFile = nullptr;
  TrjCacheL = TrjCacheXYZ = TrjCacheVXYZ = nullptr;
  TrjCacheData = {};
  TrjCacheAtIds = {};
  TrjCacheAtObjs = {};
  TrjCacheDataSize = TrjCacheFrameSize = 0;
  TrjFormat = XGrafTrjHandle = TrjCacheModel = TrjCacheModelPeriod = TrjCacheNAtoms = TrjCacheNP1Atoms = 0;
  TrjCacheNumFrames = FrameStart = FrameStep = 0;
}

void newcachemodel_(std::int32_t model, std::int32_t& status) {
  const CacheUse use;
  status = failed;
  if (use.refused()) return;
  try {
    match_atoms(model, status);
  } catch (const std::bad_alloc&) {
    status = failed;
  }
  if (status != 0) return fail_and_forget(status);
  TrjCacheModel = model;
}

void checkcacheatoms_(std::int32_t& status) {
  const auto all_valid = [] {
    std::int32_t error = 0;
    std::int32_t valid = 0;
    kvd_validateoid_(TrjCacheModel, valid, error);
    if (error != 0 || valid == 0) return false;
    std::int32_t atoms = 0;
    count_atoms(TrjCacheModel, 3, atoms, error);
    if (error != 0 || atoms != TrjCacheNP1Atoms) return false;
    const auto objects = TrjCacheAtObjs;  // a nested command may let go of the cache
    std::vector<std::int32_t> flags(objects.size());
    kvd_validateoid_(objects, flags, error);
    return error == 0 && std::find(flags.begin(), flags.end(), 0) == flags.end();
  };
  status = all_valid() ? 0 : failed;
  if (status != 0) show_message("PATHSTAT_ERROR_116");
}

void showtrjframe_(std::int32_t entry, bool recalculate_bonds, std::int32_t& status) {
  const CacheUse use;
  status = use.refused() || entry < 1 || entry > TrjCacheNumFrames ? failed : 0;
  if (status != 0) return;
  if (TrjFormat == reader::binary) {
    show_binary(FrameStart + FrameStep * (entry - 1), status);
  } else {
    show_stored(entry, status);
  }
  if (status == 0 && recalculate_bonds) kva_bnd_recalculate_(1, TrjCacheModel, status);
  if (status != 0) fail_and_forget(status);
}

}  // namespace pathstat
