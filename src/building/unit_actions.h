#pragma once

#include <cstdint>

namespace pathstat::unit_actions {

// Each routine carries out a command of the asymmetric unit: it reads its arguments, and answers with the command's
// result. One that is refused changes nothing.

std::int32_t cell();
std::int32_t space_group();
std::int32_t site();
std::int32_t clear_sites();

}  // namespace pathstat::unit_actions
