#include "desk/ops/operation_server.h"

#include <exception>
#include <stdexcept>

namespace pathstat::desk {
namespace {

std::size_t index_of(const OperationRow& row) { return static_cast<std::size_t>(&row - all_operations().data()); }

}  // namespace

OperationServer::OperationServer() : handlers_(all_operations().size()) {}

void OperationServer::on(std::string_view name, OperationHandler handler) {
  const auto* row = find_operation(name);
  if (!row) throw std::logic_error("no operation is called " + std::string(name));
  handlers_[index_of(*row)] = std::move(handler);
}

std::int32_t OperationServer::bind(std::int32_t family, std::string_view name) const {
  const auto* row = find_operation(name);
  if (!row || static_cast<std::int32_t>(row->family) != family) return 0;
  return first_binding + static_cast<std::int32_t>(index_of(*row));
}

const OperationRow* OperationServer::bound(std::int32_t binding) const {
  const auto rows = all_operations();
  if (binding < first_binding) return nullptr;
  const auto index = static_cast<std::size_t>(binding - first_binding);
  return index < rows.size() ? &rows[index] : nullptr;
}

OperationReply OperationServer::serve(const OperationCall& call) const {
  ++served_;
  OperationReply reply;
  const auto& handler = handlers_[index_of(call.row)];
  if (!handler) {
    reply.error = reply.result = operation_not_served;
    return reply;
  }
  try {
    handler(call, reply);
  } catch (const std::exception&) {
    reply = OperationReply{};
    reply.error = reply.result = operation_not_served;
  }
  return reply;
}

}  // namespace pathstat::desk
