#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <map>
#include <numbers>
#include <numeric>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

// What tests are written with: containers, numbers and files of the standard library, and the matchers by their names.

namespace pathstat {

using testing::AllOf;
using testing::AnyOf;
using testing::Contains;
using testing::ContainsRegex;
using testing::DoubleEq;
using testing::DoubleNear;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Optional;
using testing::Pair;
using testing::Pointwise;
using testing::SizeIs;
using testing::StartsWith;
using testing::UnorderedElementsAre;

/// The status that a routine leaves in its last argument.
template <class... Parameters, class... Arguments>
std::int32_t status_of(void (*routine)(Parameters...), Arguments&&... arguments) {
  std::int32_t status = -7777;
  routine(std::forward<Arguments>(arguments)..., status);
  return status;
}

/// What something prints while it runs.
template <class Run>
std::string stdout_of(Run run) {
  testing::internal::CaptureStdout();
  run();
  return testing::internal::GetCapturedStdout();
}
template <class Run>
std::string stderr_of(Run run) {
  testing::internal::CaptureStderr();
  run();
  return testing::internal::GetCapturedStderr();
}

}  // namespace pathstat
