#pragma once

#include <span>

#include "shell/queries.h"

namespace pathstat {

std::span<const QueryRow> building_queries();

}  // namespace pathstat
