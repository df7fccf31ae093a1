#include "trajectory/field_scan.h"

#include <algorithm>

namespace pathstat {

void nxtfld_(std::string_view text, TextField field, std::int32_t& length, std::int32_t& end) {
  const std::size_t begin = std::min(text.find_first_not_of(' '), text.size());
  const std::string_view found = text.substr(begin, text.substr(begin).find(' '));
  field.set(found);
  length = static_cast<std::int32_t>(found.size());
  end = length == 0 ? 0 : static_cast<std::int32_t>(begin) + length;
}

}  // namespace pathstat
