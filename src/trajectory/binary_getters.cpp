#include <algorithm>
#include <limits>
#include <new>
#include <numeric>

#include "trajectory/binary_keys.h"
#include "trajectory/binary_trajectory.h"

namespace pathstat {
namespace {

using namespace binary_status;

/// The first checks of every getter, in their order; the trajectory, or null with a status.
TrjStruct* asked(std::int32_t handle, std::size_t capacity, bool needs_frame, std::int32_t& count,
                 std::int32_t& status) {
  count = 1;
  TrjStruct* trj = binary_trajectory(handle);
  if (trj == nullptr) {
    status = no_such_handle;
  } else if (capacity < 1) {
    status = too_small;
  } else if (needs_frame && trj->current_frame == 0) {
    status = no_frame;
  } else {
    status = 0;
  }
  return status == 0 ? trj : nullptr;
}

/// Sets the count, and the status if that many items have no room.
bool fits(std::int64_t items, std::size_t capacity, std::int32_t& count, std::int32_t& status) {
  constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
  count = static_cast<std::int32_t>(std::min(items, most));
  status = items > most || static_cast<std::size_t>(items) > capacity ? too_small : 0;
  return status == 0;
}

void get_atoms(TrjStruct& trj, AtomGroup group, std::span<double> values, std::int32_t& count, std::int32_t& status) {
  if (!trj.frame.has(group)) {
    status = not_present;
  } else if (fits(trj.frame.coordinates(), values.size(), count, status)) {
    if (trj.frame.load(group, trj.reader) != RecordStatus::ok) {
      status = frame_damaged;
    } else {
      trj.frame.get(group, values);
    }
  }
}

/// Numbers that a floating key yields at most.
std::size_t most_items(const TrjStruct* trj, std::int32_t key) {
  if (trj == nullptr || !is_atom_key(key)) return 6;
  return static_cast<std::size_t>(trj->frame.coordinates());
}

void copy_out(std::span<const std::int32_t> from, std::span<std::int32_t> values, std::int32_t& count,
              std::int32_t& status) {
  if (fits(static_cast<std::int64_t>(from.size()), values.size(), count, status)) {
    std::ranges::copy(from, values.begin());
  }
}

void get_identifiers(const BinaryHeader& header, std::span<std::int32_t> values, std::int32_t& count,
                     std::int32_t& status) {
  if (!header.movable_ids.empty()) return copy_out(header.movable_ids, values, count, status);
  if (!fits(header.movable, values.size(), count, status)) return;
  const auto ids = values.first(static_cast<std::size_t>(header.movable));
  std::iota(ids.begin(), ids.end(), 0);
}

/// Counts per group; without groups in the head there is one, which holds everything.
void get_per_group(const BinaryHeader& header, const std::vector<std::int32_t>& stored, std::int32_t all,
                   std::span<std::int32_t> values, std::int32_t& count, std::int32_t& status) {
  const bool single = stored.empty() && header.groups == 1;
  copy_out(single ? std::span(&all, 1) : std::span<const std::int32_t>(stored), values, count, status);
}

std::int32_t text_length(const std::optional<std::string>& text) {
  return text ? static_cast<std::int32_t>(text->size()) : 0;
}

/// Integer keys of one value; false if the key is not one.
bool head_integer(const TrjStruct& trj, std::int32_t key, std::int32_t& value) {
  const auto& header = trj.header;
  switch (key) {
    case 2001:
      value = header.version();
      return true;
    case 2002:
      value = static_cast<std::int32_t>(header.titles.size());
      return true;
    case 2003:
      value = static_cast<std::int32_t>(header.comments.size());
      return true;
    case 2004:
      value = header.groups;
      return true;
    case 2007:
      value = header.movable;
      return true;
    case 2009:
      value = text_length(header.texts[0]);
      return true;
    case 2010:
      value = text_length(header.texts[1]);
      return true;
    case 2018:
      value = header.flags[0];
      return true;
    case 2019:
      value = trj.current_frame;
      return true;
    case 2020:
      value = header.total;
      return true;
    default:
      return false;
  }
}

void get_frame_integer(const TrjStruct& trj, std::int32_t key, std::int32_t& value, std::int32_t& status) {
  status = trj.frame.layout().place(key).exists() ? 0 : not_present;
  if (status == 0) value = trj.frame.integer(key);
}

/// Copies the texts, each cut to the width.
void copy_texts(std::span<const std::string> from, std::span<std::string> texts, std::size_t width, std::int32_t& count,
                std::int32_t& status) {
  if (!fits(static_cast<std::int64_t>(from.size()), texts.size(), count, status)) return;
  for (std::size_t k = 0; k < from.size(); ++k) texts[k] = from[k].substr(0, width);
}

}  // namespace

void kvA_TRJ_ValueDouble(std::int32_t handle, std::int32_t key, std::span<double> values, std::int32_t& count,
                         std::int32_t& status) try {
  TrjStruct* trj = asked(handle, values.size(), true, count, status);
  if (trj == nullptr) return;
  if (is_atom_key(key)) return get_atoms(*trj, atom_group(key), values, count, status);
  if (!is_floating_key(key)) {
    status = unknown_key;
    return;
  }
  const auto place = trj->frame.layout().place(key);
  if (!place.exists()) {
    status = not_present;
  } else if (fits(place.count, values.size(), count, status)) {
    trj->frame.get(place, values);
  }
} catch (const std::bad_alloc&) {
  status = no_atom_arrays;
}

void kvA_TRJ_ValueFloat(std::int32_t handle, std::int32_t key, std::span<float> values, std::int32_t& count,
                        std::int32_t& status) try {
  std::vector<double> wide(std::min(values.size(), most_items(binary_trajectory(handle), key)));
  kvA_TRJ_ValueDouble(handle, key, wide, count, status);
  if (status != 0) return;
  const auto items = std::span(wide).first(static_cast<std::size_t>(count));
  std::ranges::transform(items, values.begin(), [](double value) { return static_cast<float>(value); });
} catch (const std::bad_alloc&) {
  status = no_atom_arrays;
}

void kvA_TRJ_ValueInt(std::int32_t handle, std::int32_t key, std::span<std::int32_t> values, std::int32_t& count,
                      std::int32_t& status) {
  TrjStruct* trj = asked(handle, values.size(), is_frame_integer_key(key), count, status);
  if (trj == nullptr) return;
  const auto& header = trj->header;
  switch (key) {
    case 2005:
      return get_per_group(header, header.group_movable, header.movable, values, count, status);
    case 2006:
      return get_per_group(header, header.group_atoms, header.total, values, count, status);
    case 2008:
      return get_identifiers(header, values, count, status);
    case 2017:
      return copy_out(header.integers, values, count, status);
    default:
      break;
  }
  if (is_frame_integer_key(key)) {
    get_frame_integer(*trj, key, values[0], status);
  } else if (!head_integer(*trj, key, values[0])) {
    status = unknown_key;
  }
}

void kvA_TRJ_ValueLogical(std::int32_t handle, std::int32_t key, std::span<Logical> values, std::int32_t& count,
                          std::int32_t& status) {
  TrjStruct* trj = asked(handle, values.size(), is_frame_flag_key(key), count, status);
  if (trj == nullptr) return;
  if (is_flag_key(key)) {
    values[0] = trj->header.flags[flag_word(key)] != 0;
  } else if (is_frame_flag_key(key)) {
    values[0] = trj->frame.integer(key) != 0;
  } else {
    status = unknown_key;
  }
}

void kvA_TRJ_ValueChar(std::int32_t handle, std::int32_t key, std::span<std::string> texts, std::int32_t width,
                       std::int32_t& count, std::int32_t& status) try {
  for (auto& text : texts) text.clear();
  TrjStruct* trj = asked(handle, texts.size(), false, count, status);
  if (trj == nullptr) return;
  const auto& header = trj->header;
  const auto used = static_cast<std::size_t>(std::max(width, 0));
  switch (key) {
    case 4001:
      status = used < header.magic.size() ? too_small : 0;
      if (status == 0) texts[0] = header.magic;
      return;
    case 4002:
      return copy_texts(header.titles, texts, used, count, status);
    case 4003:
      return copy_texts(header.comments, texts, used, count, status);
    case 4004:
      return copy_texts(header.group_names, texts, used, count, status);
    case 4005:
    case 4006: {
      const auto& text = header.texts[static_cast<std::size_t>(key - 4005)];
      status = text ? 0 : no_text;
      if (text) texts[0] = text->substr(0, used);
      return;
    }
    default:
      status = unknown_key;
  }
} catch (const std::bad_alloc&) {
  status = no_atom_arrays;
}

void kva_trj_valuechar_(std::int32_t handle, std::int32_t key, std::span<char> fields, std::int32_t width,
                        std::int32_t& count, std::int32_t& status) try {
  const auto used = static_cast<std::size_t>(std::max(width, 0));
  std::vector<std::string> texts(used == 0 ? 0 : fields.size() / used);
  kvA_TRJ_ValueChar(handle, key, texts, width, count, status);
  for (std::size_t k = 0; k < texts.size(); ++k) TextField(fields.subspan(k * used, used)).set(texts[k]);
} catch (const std::bad_alloc&) {
  status = no_atom_arrays;
}

}  // namespace pathstat
