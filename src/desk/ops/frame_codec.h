#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "desk/ops/operation_call.h"
#include "desk/ops/typed_stream.h"

namespace pathstat::desk {

/// Reads what follows the binding number of a call: the two frame words and the inputs in the order of the row.
///
/// @param inputs  one value for each slot of the row's `sends`
/// @return empty, or what is wrong; the stream is then of no more use
std::string read_call(ByteStream& stream, const OperationRow& row, std::vector<SlotValue>& inputs);

/// Writes the reply of a call behind its 1, and flushes: every slot of the row's `receives`, with arrays cut or padded
/// with zeros to the length that the call's count or capacity gives, and texts cut at the capacity.
///
/// @return empty, or what is wrong: a broken stream, or an output of another type than the row says
std::string write_reply(ByteStream& stream, const OperationCall& call, const OperationReply& reply);

}  // namespace pathstat::desk
