#pragma once

#include <cstdint>
#include <string_view>
#include <variant>

#include "support/logical.h"

namespace pathstat {

struct TextQuery {
  std::string_view (*value)();
  std::string_view range;
};
struct FlagQuery {
  const Logical* value;
};
struct CountQuery {
  const std::int32_t* value;
  std::string_view format;
};
struct NumberQuery {
  double (*value)();
  std::string_view format;
  bool (*applies)() = nullptr;  ///< the query defines nothing where this is given and false
};
struct OtherQuery {
  void (*define)();
};

/// What the process tells of one word when the Core asks for it.
struct QueryRow {
  std::string_view word;
  std::variant<TextQuery, FlagQuery, CountQuery, NumberQuery, OtherQuery> answer;
};

}  // namespace pathstat
