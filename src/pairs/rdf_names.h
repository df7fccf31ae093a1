#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "support/text_field.h"

namespace pathstat {

/// The names that the atoms of a model offer for a radial distribution.
///
/// @param type   one of rdf_between: one name for all or selected atoms, none for groups, the distinct element symbols
///               or force-field types in order of first appearance otherwise
/// @param names  room for the names; reaching its size ends the collection
/// @param count  out: the names found
/// @param status 0; 1 if there is room for none
void rdf_sets_(std::int32_t model, std::int32_t type, std::span<Text<8>> names, std::int32_t& count,
               std::int32_t& status);

/// Brings the choices of a radial distribution up to date: `list` becomes the sorted distinct names, each followed by
/// a comma but the last, `length` its length (at least 1), and a name that is not among them the first one found.
/// The models are the given one for "TRAJECTORY" while it exists, else the selected ones, else the current one; no
/// model or no name makes list and names blank.
void update_rdf_range_(std::string_view source, std::int32_t model, std::int32_t type, TextField list,
                       std::int32_t& length, TextField name1, TextField name2, std::int32_t& status);

}  // namespace pathstat
