#pragma once

#include <cstdint>

namespace pathstat::actions {

// Each routine carries out a command whose guards hold, and answers with its result.

std::int32_t rdf();
std::int32_t structure_factor();

}  // namespace pathstat::actions
