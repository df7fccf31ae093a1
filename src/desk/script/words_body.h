#pragma once

#include <nlohmann/json_fwd.hpp>

namespace pathstat::desk {

/// All command words, their groups and the lines for the desk, for programs that make forms or functions of them.
nlohmann::json words_body();

}  // namespace pathstat::desk
