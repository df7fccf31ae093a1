#include "corelink/fixed_text.h"

#include <algorithm>

#include "support/text_field.h"

namespace pathstat {

void kvS_STR_CopyF2C(std::span<char> target, std::string_view source) {
  if (target.empty()) return;
  const auto text = trimmed(source.substr(0, std::min(source.find('\0'), target.size() - 1)));
  std::fill(std::copy(text.begin(), text.end(), target.begin()), target.end(), '\0');
}

void kvS_STR_CopyC2F(std::span<char> target, std::string_view source) {
  TextField(target).set(source.substr(0, source.find('\0')));
}

}  // namespace pathstat
