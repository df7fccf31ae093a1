#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "support/record_file.h"

// The file of a radial distribution: a head, one record per bin with the distance and the functions there, and a tail.

namespace pathstat {

struct RdfHead {
  std::int32_t bins = 0;
  std::int32_t columns = 0;  ///< 1: total; 3: total, within molecules, between molecules
};

struct RdfTail {
  double scale = 0.0;   ///< A: pairs over mean volume and atoms of the model, 1/Å³
  double offset = 0.0;  ///< B: listed atoms over atoms of the model for like sets, else 0
  bool periodic = false;
  std::int32_t set_type = 0;  ///< of rdf_between
};

/// One element per bin in each; without components the last two are not looked at.
template <class T>
struct RdfColumns {
  std::span<T> distances, total, intra, inter;
};

/// Writes a whole file; one that could not be written as a whole is removed.
RecordStatus write_rdf(const std::string& path, const RdfHead& head, const RdfColumns<const double>& functions,
                       const RdfTail& tail);

/// Reads the head of an open file; what it announces is held against what is there.
RecordStatus read_rdf_head(RecordReader& file, RdfHead& head);
/// Reads what stands behind the head.
RecordStatus read_rdf_body(RecordReader& file, const RdfHead& head, const RdfColumns<double>& into, RdfTail& tail);

}  // namespace pathstat
