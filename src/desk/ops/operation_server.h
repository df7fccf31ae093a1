#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "coreapi/operation_row.h"
#include "desk/ops/operation_call.h"

namespace pathstat::desk {

/// Does one operation: reads the inputs of the call and fills the reply.
using OperationHandler = std::function<void(const OperationCall& call, OperationReply& reply)>;

/// The error of an operation that has a row but nobody who serves it.
constexpr std::int32_t operation_not_served = 1;

/// Hands out the binding numbers of the operations and finds who serves a call.
class OperationServer {
 public:
  /// Binding numbers start here: above every family code and every input code, so that one integer on the wire can
  /// only mean one thing.
  static constexpr std::int32_t first_binding = 100000;

  OperationServer();

  /// Registers who serves an operation, in the place of whoever served it. The name must have a row in the table.
  void on(std::string_view name, OperationHandler handler);

  /// The binding number for a bind request, or 0 if the table has no such operation in that family.
  std::int32_t bind(std::int32_t family, std::string_view name) const;

  /// The row that a binding number stands for; null if none was handed out under that number.
  const OperationRow* bound(std::int32_t binding) const;

  /// Serves one call. A handler that throws (memory, for one) leaves a reply with an error.
  OperationReply serve(const OperationCall& call) const;
  /// The calls served so far.
  std::uint64_t served() const { return served_; }

 private:
  std::vector<OperationHandler> handlers_;  ///< one for each row of the table
  mutable std::uint64_t served_ = 0;
};

}  // namespace pathstat::desk
