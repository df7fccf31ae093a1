#pragma once

#include <cstdint>
#include <string_view>

#include "support/logical.h"

namespace pathstat {

/// What radial distribution is wanted.
struct RdfRequest {
  std::int32_t model = 0;                   ///< of the trajectory
  std::string_view source = {};             ///< "TRAJECTORY" or "SELECTED MODELS"
  std::int32_t set_type = 0;                ///< of rdf_between
  std::string_view name1 = {}, name2 = {};  ///< elements or force-field types, for these set types
  std::string_view normalization = {};      ///< "PARTIAL" or "TOTAL"
  bool components = false;                  ///< also the parts within molecules and between them
  std::int32_t bins = 0;
  double interval = 0.0;                       ///< Å
  double cutoff = 0.0;                         ///< Å
  std::string_view file = {};                  ///< the trajectory
  std::int32_t first = 0, last = 0, step = 0;  ///< frames
  std::int32_t total_frames = 0;               ///< of the trajectory
  bool monitor = false;                        ///< graphs are drawn while frames go by
};

/// Where the last radial distribution stands.
constexpr std::string_view rdf_file = "./PathStat.rdf";

/// Sets up a radial distribution: sets of atoms, norm and graphs. What is refused is told by a message.
/// @param available  out: false
/// @param status     0; 1 refused; the status of an allocation or of the trajectory
void initrdf_(const RdfRequest& request, Logical& available, std::int32_t& status);

/// Averages over all frames or models, draws as it goes, and writes rdf_file. An interruption keeps what is done.
/// @param available  out: true once the file is complete
void dordf_(const RdfRequest& request, Logical& available, std::int32_t& status);

/// Closes the trajectory and frees all that initrdf_ took, however far it came.
void finishrdf_(std::int32_t& status);

}  // namespace pathstat
