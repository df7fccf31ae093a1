#pragma once

namespace pathstat {

/// The program's name in all debug logs.
constexpr const char* PRODUCT_EXE = "pathstat";

}  // namespace pathstat
