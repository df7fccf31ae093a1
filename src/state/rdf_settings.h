#pragma once

#include <cstdint>

#include "support/text_field.h"

namespace pathstat {

/// Values of TrjRdfI::rdf_set_type.
namespace rdf_between {
constexpr std::int32_t all_atoms = 1;
constexpr std::int32_t elements = 2;
constexpr std::int32_t fftypes = 3;
constexpr std::int32_t groups = 4;
constexpr std::int32_t selected = 5;
}  // namespace rdf_between

struct TrjRdfI {
  std::int32_t rdf_bins = 450;
  std::int32_t rdf_set_type = rdf_between::all_atoms;
  std::int32_t rdf_name_list_length = 3;
};
inline TrjRdfI trj_rdf_i_;

struct TrjRdfD {
  double rdf_cutoff = 9.0;                       ///< Å
  double k_space_interval = 0.3490658503988659;  ///< 1/Å: π / 9
  double rdf_interval = 0.02;                    ///< Å
};
inline TrjRdfD trj_rdf_d_;

struct TrjRdfC {
  Text<10> rdf_for{"TRAJECTORY"};
  Text<160> rdf_name_list{"ALL"};
  Text<8> rdf_name_1{"ALL"};
  Text<8> rdf_name_2{"ALL"};
  Text<7> rdf_normalization{"PARTIAL"};
};
inline TrjRdfC trj_rdf_c_;

}  // namespace pathstat
