#pragma once

#include "coreapi/call.h"

namespace pathstat {

namespace operation_rows {
#define OPERATION(direct, twin, family, sends, receives, order) \
  inline constexpr OperationRow direct{#direct, Family::family, sends, receives, order};
#include "coreapi/operations.def"
#undef OPERATION
}  // namespace operation_rows

#define OPERATION(direct, twin, family, sends, receives, order) \
  inline constexpr DirectForm<operation_rows::direct> direct{}; \
  inline constexpr Twin<operation_rows::direct> twin{};
#include "coreapi/operations.def"
#undef OPERATION

}  // namespace pathstat
