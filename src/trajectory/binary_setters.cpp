#include <algorithm>
#include <new>

#include "trajectory/binary_keys.h"
#include "trajectory/binary_trajectory.h"

namespace pathstat {
namespace {

using namespace binary_status;

constexpr std::size_t most_lines = 10;

/// The first checks of every setter, in their order; the trajectory, or null with a status.
/// @param of_head  the key's values all stand in the head: they cannot be set in append mode
TrjStruct* told(std::int32_t handle, std::size_t count, bool of_head, std::int32_t& status) {
  TrjStruct* trj = binary_trajectory(handle);
  if (trj == nullptr) {
    status = no_such_handle;
  } else if (trj->mode == binary_mode::read) {
    status = open_for_reading;
  } else if (of_head && trj->header_written) {
    status = cannot_be_set;
  } else {
    status = count < 1 ? too_small : 0;
  }
  return status == 0 ? trj : nullptr;
}

std::int32_t set_atoms(TrjStruct& trj, AtomGroup group, std::span<const double> values) {
  auto atoms = static_cast<std::size_t>(trj.header.movable);
  if (atoms == 0 && !trj.header_written) atoms = values.size() / 3;
  if (atoms == 0 || values.size() != 3 * atoms) return too_small;
  trj.header.movable = static_cast<std::int32_t>(atoms);
  trj.frame.set_atoms(trj.header.movable);
  trj.frame.set(group, values);
  return 0;
}

bool has_any_arrays(const BinaryFrame& frame) {
  return frame.has_arrays(AtomGroup::positions) || frame.has_arrays(AtomGroup::velocities) ||
         frame.has_arrays(AtomGroup::forces);
}

/// The identifiers say how many atoms there are, unless coordinates said so before.
std::int32_t set_identifiers(TrjStruct& trj, std::span<const std::int32_t> ids) {
  if (trj.header_written) return cannot_be_set;
  if (has_any_arrays(trj.frame) && std::ssize(ids) != trj.header.movable) return too_small;
  trj.header.movable_ids.assign(ids.begin(), ids.end());
  trj.header.movable = static_cast<std::int32_t>(ids.size());
  trj.frame.set_atoms(trj.header.movable);
  return 0;
}

std::int32_t set_head_integer(const TrjStruct& trj, std::size_t count, std::int32_t value, std::int32_t& target) {
  if (trj.header_written) return cannot_be_set;
  if (count != 1) return too_small;
  target = value;
  return 0;
}

std::int32_t set_frame_integer(TrjStruct& trj, std::int32_t key, std::span<const std::int32_t> values) {
  if (values.size() != 1) return too_small;
  if (!trj.frame.layout().place(key).exists()) return not_present;
  trj.frame.set_integer(key, values[0]);
  return 0;
}

bool fit(std::span<const std::string_view> texts, std::size_t width) {
  return std::ranges::all_of(texts, [&](std::string_view text) { return text.size() <= width; });
}

std::string padded(std::string_view text, std::size_t width) {
  std::string field(text);
  field.resize(width, ' ');
  return field;
}

std::int32_t set_lines(std::vector<std::string>& lines, std::span<const std::string_view> texts) {
  if (texts.size() > most_lines || !fit(texts, line_width)) return too_small;
  lines.clear();
  for (const auto text : texts) lines.push_back(padded(text, line_width));
  return 0;
}

}  // namespace

void kvA_TRJ_SetValueDouble(std::int32_t handle, std::int32_t key, std::span<const double> values,
                            std::int32_t& status) try {
  TrjStruct* trj = told(handle, values.size(), false, status);
  if (trj == nullptr) return;
  const auto place = trj->frame.layout().place(key);
  if (!is_floating_key(key)) {
    status = unknown_key;
  } else if (is_atom_key(key)) {
    status = set_atoms(*trj, atom_group(key), values);
  } else if (!place.exists()) {
    status = not_present;
  } else if (values.size() != place.count) {
    status = too_small;
  } else {
    trj->frame.set(place, values);
  }
} catch (const std::bad_alloc&) {
  status = no_atom_arrays;
}

void kvA_TRJ_SetValueFloat(std::int32_t handle, std::int32_t key, std::span<const float> values,
                           std::int32_t& status) try {
  const std::vector<double> wide(values.begin(), values.end());
  kvA_TRJ_SetValueDouble(handle, key, wide, status);
} catch (const std::bad_alloc&) {
  status = no_atom_arrays;
}

void kvA_TRJ_SetValueInt(std::int32_t handle, std::int32_t key, std::span<const std::int32_t> values,
                         std::int32_t& status) try {
  TrjStruct* trj = told(handle, values.size(), false, status);
  if (trj == nullptr) return;
  if (is_frame_integer_key(key)) {
    status = set_frame_integer(*trj, key, values);
    return;
  }
  switch (key) {
    case 2008:
      status = set_identifiers(*trj, values);
      return;
    case 2018: {
      auto periodicity = trj->header.flags[0];
      status = set_head_integer(*trj, values.size(), values[0], periodicity);
      if (status == 0 && (periodicity < 0 || periodicity > 3)) status = bad_periodicity;
      if (status == 0) trj->header.flags[0] = periodicity;
      return;
    }
    case 2020:
      status = set_head_integer(*trj, values.size(), values[0], trj->header.total);
      return;
    default:
      status = key >= 2001 && key <= 2020 ? cannot_be_set : unknown_key;
  }
} catch (const std::bad_alloc&) {
  status = no_atom_arrays;
}

void kvA_TRJ_SetValueLogical(std::int32_t handle, std::int32_t key, std::span<const Logical> values,
                             std::int32_t& status) {
  TrjStruct* trj = told(handle, values.size(), true, status);
  if (trj == nullptr) return;
  if (is_frame_flag_key(key)) {
    status = cannot_be_set;
  } else if (!is_flag_key(key)) {
    status = unknown_key;
  } else if (values.size() != 1) {
    status = too_small;
  } else {
    trj->header.flags[flag_word(key)] = values[0] ? 1 : 0;
  }
}

void kvA_TRJ_SetValueChar(std::int32_t handle, std::int32_t key, std::span<const std::string_view> texts,
                          std::int32_t& status) try {
  TrjStruct* trj = told(handle, texts.size(), true, status);
  if (trj == nullptr) return;
  auto& header = trj->header;
  const bool single = texts.size() == 1;
  switch (key) {
    case 4001:
      status = single && texts[0].size() == 4 ? 0 : too_small;
      if (status == 0) header.magic = texts[0];
      return;
    case 4002:
      status = set_lines(header.titles, texts);
      return;
    case 4003:
      status = set_lines(header.comments, texts);
      return;
    case 4004:
      status = single && fit(texts, group_name_width) ? 0 : too_small;
      if (status == 0) header.group_names = {padded(texts[0], group_name_width)};
      return;
    case 4005:
    case 4006:
      status = single && fit(texts, line_width) ? 0 : too_small;
      if (status == 0) header.texts[static_cast<std::size_t>(key - 4005)] = texts[0];
      return;
    default:
      status = unknown_key;
  }
} catch (const std::bad_alloc&) {
  status = no_atom_arrays;
}

void kva_trj_setvaluechar_(std::int32_t handle, std::int32_t key, std::string_view fields, std::int32_t width,
                           std::int32_t& status) try {
  std::vector<std::string_view> texts;
  const auto used = static_cast<std::size_t>(std::max(width, 1));
  for (std::size_t at = 0; at < fields.size(); at += used) texts.push_back(trimmed(fields.substr(at, used)));
  kvA_TRJ_SetValueChar(handle, key, texts, status);
} catch (const std::bad_alloc&) {
  status = no_atom_arrays;
}

}  // namespace pathstat
