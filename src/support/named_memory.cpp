#include "support/named_memory.h"

#include <cctype>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <limits>
#include <numeric>

#include "support/memory_watch.h"
#include "support/number_format.h"

namespace pathstat {
namespace {

struct ElementType {
  std::string_view name;
  std::int64_t bytes;
};
// The first name that begins with the requested one wins, so the order is part of the meaning.
constexpr std::array element_types{
    ElementType{"char", 1},
    ElementType{"short", 2},
    ElementType{"int", 4},
    ElementType{"float", 4},
    ElementType{"double", 8},
    ElementType{"character", 1},
    ElementType{"integer", 4},
    ElementType{"integer2", 2},
    ElementType{"logical", 4},
    ElementType{"real", 4},
    ElementType{"double precision", 8},
    ElementType{"byte", 1},
    ElementType{"byte1", 1},
    ElementType{"byte2", 2},
    ElementType{"byte4", 4},
    ElementType{"byte8", 8},
};

constexpr std::string_view error_head = "ERROR in dynamic memory allocation: |";

// The base reference of the address layer; its alignment is that of every block's elements.
alignas(16) char anchor[16];

MemoryErrorSink error_sink = nullptr;
MemoryFailureHook failure_hook = nullptr;

std::int64_t address_of(const void* at) { return static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(at)); }

/// Joins the parts in a field of fixed width, so that running out of memory can be reported without any.
void report(std::initializer_list<std::string_view> parts) {
  if (error_sink == nullptr) return;
  std::array<char, 320> field;
  std::size_t used = 0;
  for (const auto part : parts) used += part.copy(field.data() + used, field.size() - used);
  error_sink(1, trimmed({field.data(), used}));
}

bool begins(std::string_view word, std::string_view with) {
  const auto same = [](unsigned char a, unsigned char b) { return std::tolower(a) == std::tolower(b); };
  return word.size() >= with.size() && std::equal(with.begin(), with.end(), word.begin(), same);
}

/// The place of a label in the table, or -1.
std::int32_t find(std::string_view name) {
  for (std::int32_t k = 0; k < dynmem2_.area_count; ++k)
    if (same_text(dynmem1_.area_name[static_cast<std::size_t>(k)], name)) return k;
  return -1;
}

/// (count + 1) x unit, or -1 if that is beyond what can be addressed.
std::int64_t block_bytes(std::int64_t count, std::int64_t unit) {
  const std::int64_t most = std::numeric_limits<std::int64_t>::max() / unit - 1;
  return count < 0 || count > most ? -1 : (count + 1) * unit;
}

/// The place of a block's element 1, counted from 1, in elements from the base.
std::int64_t element_offset(std::int64_t block, std::int64_t base, std::int64_t unit) {
  const std::int64_t q = (block - base) / unit;
  return q >= -2 ? q + 2 : q + 1;
}

std::int64_t first_element(std::int64_t block, std::int64_t base, std::int64_t unit) {
  return base + (element_offset(block, base, unit) - 1) * unit;
}

std::int64_t first_element(std::size_t k) {
  return first_element(dynmem2_.area_address[k], dynmem2_.area_base[k], dynmem2_.area_unit[k]);
}

bool name_too_long(std::string_view name, std::int32_t& status) {
  if (trimmed(name).size() <= area_name_length) return false;
  status = -2;
  report({error_head, " name ->", name.substr(0, area_name_length), "...<- is too long, |",
          "will not allocate any memory."});
  return true;
}

void report_negative(std::string_view name, std::int64_t count) {
  report({error_head, " size for ", name, " non-positive: ", formatted(count, "(I8)")});
}

/// Checks 1 to 5 of a new label, in their order. @return status
std::int32_t refuse_new_area(std::string_view name, std::int64_t count, std::string_view type, std::int64_t& unit) {
  if (dynmem2_.area_count >= maximum_areas) {
    report({"ERROR in dynamic memory allocation. |Exceeded maximum number of dynamically allocated arrays.",
            "|Number allocated: ", formatted(dynmem2_.area_count, "(I4)"),
            "    |Maximum allowed: ", formatted(maximum_areas, "(I4)")});
    return -1;
  }
  std::int32_t status = 0;
  if (name_too_long(name, status)) return status;
  if (find(name) >= 0) {
    report({error_head, "already allocated: ", name});
    return -3;
  }
  kvdm_size_(type, unit, status);
  if (status != 0) return status;
  if (count < 0) {
    report_negative(name, count);
    return -4;
  }
  if (count == 0) {
    report({error_head, " size for ", name, " is  zero"});
    return -5;
  }
  return 0;
}

bool can_hold(std::int64_t bytes) { return bytes >= 0 && bytes <= std::numeric_limits<std::ptrdiff_t>::max() - 64; }

std::size_t heap_bytes(std::int64_t bytes) { return static_cast<std::size_t>(std::max<std::int64_t>(bytes, 1)); }

void report_no_heap(std::int64_t bytes) {
  note_memory_shortage();
  std::fprintf(stderr, "MEM_Alloc: Cannot allocate %" PRId64 " bytes\n", bytes);
}

void* counted(void* block, std::int64_t bytes) {
  if (block == nullptr)
    report_no_heap(bytes);
  else
    ++mem_alloc_call_count;
  return block;
}

std::string_view text_of(const char* terminated) { return terminated == nullptr ? std::string_view{} : terminated; }

}  // namespace

void set_memory_error_sink(MemoryErrorSink sink) { error_sink = sink; }
void set_memory_failure_hook(MemoryFailureHook hook) { failure_hook = hook; }

void kvdm_alloc_(const void* base, std::string_view name, std::int64_t count, std::string_view type,
                 std::int64_t& offset, std::int32_t& status) {
  name = trimmed(name);
  std::int64_t unit = 0, block = 0;
  status = refuse_new_area(name, count, type, unit);
  if (status != 0) return;
  const std::int64_t bytes = block_bytes(count, unit);
  memget_(block, bytes, status);
  if (status != 0)
    return report({error_head, "Can not allocate any memory for", name,
                   "|The most probable cause of this error is that|there is no more swap space available."});
  const auto k = static_cast<std::size_t>(dynmem2_.area_count++);
  dynmem1_.area_name[k] = name;
  dynmem2_.area_address[k] = block;
  dynmem2_.area_base[k] = address_of(base);
  dynmem2_.area_bytes[k] = bytes;
  dynmem2_.area_unit[k] = unit;
  offset = element_offset(block, dynmem2_.area_base[k], unit);
}

void kvdm_realloc_(std::string_view name, std::int64_t count, std::int64_t& offset, std::int32_t& status) {
  name = trimmed(name);
  if (name_too_long(name, status)) return;
  const std::int32_t place = find(name);
  status = place < 0 ? -1 : count < 0 ? -4 : 0;
  if (status == -1) return report({"ERROR in dynamic memory allocation :not allocated ", name});
  if (status == -4) return report_negative(name, count);
  const auto k = static_cast<std::size_t>(place);
  const std::int64_t unit = dynmem2_.area_unit[k], base = dynmem2_.area_base[k];
  const std::int64_t bytes = block_bytes(count, unit);
  std::int64_t block = 0;
  memget_(block, bytes, status);
  if (status != 0) return;
  const std::int64_t old_count = dynmem2_.area_bytes[k] / unit - 1;
  // Old and new block can sit differently against the base, so elements are copied, not blocks.
  std::memcpy(pointer_at<char>(first_element(block, base, unit)), pointer_at<char>(first_element(k)),
              static_cast<std::size_t>(std::min(old_count, count) * unit));
  memfre_(dynmem2_.area_address[k]);
  dynmem2_.area_address[k] = block;
  dynmem2_.area_bytes[k] = bytes;
  offset = element_offset(block, base, unit);
}

void kvdm_free_(std::string_view name, std::int32_t& status) {
  const std::int32_t place = find(name);
  status = place < 0 ? -1 : 0;
  if (place < 0) return;
  memfre_(dynmem2_.area_address[static_cast<std::size_t>(place)]);
  const auto close_gap = [&](auto& entries) {
    std::copy(entries.begin() + place + 1, entries.begin() + dynmem2_.area_count, entries.begin() + place);
  };
  close_gap(dynmem1_.area_name);
  close_gap(dynmem2_.area_address);
  close_gap(dynmem2_.area_base);
  close_gap(dynmem2_.area_bytes);
  close_gap(dynmem2_.area_unit);
  dynmem1_.area_name[static_cast<std::size_t>(--dynmem2_.area_count)] = "";
}

void kvdm_size_(std::string_view type, std::int64_t& bytes, std::int32_t& status) {
  type = trimmed(type);
  const auto matches = [&](const ElementType& row) { return begins(row.name, type); };
  const auto row = std::find_if(element_types.begin(), element_types.end(), matches);
  status = row == element_types.end() ? -1 : 0;
  bytes = status == 0 ? row->bytes : 4;
  if (status != 0) report({"kvdm_size: unknown type: ", type.substr(0, 130)});
}

void kvdm_nunits_(std::string_view name, std::int64_t& count, std::int32_t& status) {
  const NamedArea area = find_area(name);
  status = area.elements == nullptr ? -1 : 0;
  count = area.count;
}

void kvdm_debug_(std::int32_t& status) {
  status = 0;
  const auto areas = static_cast<std::size_t>(dynmem2_.area_count);
  if (areas == 0) {
    std::puts("No memory currently allocated by, kvdm_alloc or kvdm_calloc");
    return;
  }
  std::printf("\n DEBUG information from kvdm_debug\n%4zu areas out of maximum %4d\n\n", areas, maximum_areas);
  std::printf("%5s %-32s %4s %8s %12s\n", " Area", "Name", "Unit", "Size", "Address");
  std::printf("%5s %-32s %4s %8s %12s\n", " ----", "----", "----", "----", "-------");
  for (std::size_t k = 0; k < areas; ++k)
    std::printf("%5zu %-32s %4" PRId64 " %8" PRId64 " %12" PRIx64 "\n", k + 1, dynmem1_.area_name[k].str().c_str(),
                dynmem2_.area_unit[k], dynmem2_.area_bytes[k], static_cast<std::uint64_t>(dynmem2_.area_address[k]));
  const auto first = dynmem2_.area_bytes.begin();
  const auto total = std::accumulate(first, first + dynmem2_.area_count, std::int64_t{0});
  std::printf("-----\nTotal%12" PRId64 "\n-----\n", total);
}

std::int32_t kvs_msd_alloc_(std::string_view name, std::string_view type, std::int64_t count, std::int64_t& address,
                            std::int32_t& status) {
  std::int64_t offset = 0;
  address = 0;
  kvdm_alloc_(anchor, name, std::max<std::int64_t>(count, 1), type, offset, status);
  if (status == 0) address = first_element(static_cast<std::size_t>(dynmem2_.area_count - 1));
  return status;
}

std::int32_t kvs_msd_realloc_(std::string_view name, std::int64_t count, std::int64_t& address, std::int32_t& status) {
  std::int64_t offset = 0;
  kvdm_realloc_(name, std::max<std::int64_t>(count, 1), offset, status);
  if (status == 0) address = address_of(find_area(name).elements);
  return status;
}

std::int32_t kvs_msd_free_(std::string_view name, std::int32_t& status) {
  kvdm_free_(name, status);
  return status == 0 ? 0 : 1;
}

std::int32_t kvs_msd_size_(std::string_view type, std::int64_t& bytes, std::int32_t& status) {
  kvdm_size_(type, bytes, status);
  return status;
}

std::int32_t kvs_msd_loc_(std::string_view name, std::int64_t& address, std::int32_t& status) {
  address = address_of(find_area(name).elements);
  status = address == 0 ? 1 : 0;
  return status;
}

std::int64_t kvs_msd_numunits_(std::string_view name, std::int32_t& status) {
  std::int64_t count = 0;
  kvdm_nunits_(name, count, status);
  return count;
}

void kvs_msd_debug_() {
  std::int32_t status = 0;
  kvdm_debug_(status);
}

std::int32_t kvS_MSD_Alloc(const char* name, const char* type, std::int64_t count, std::int64_t& address,
                           std::int32_t& status) {
  return kvs_msd_alloc_(text_of(name), text_of(type), count, address, status);
}
std::int32_t kvS_MSD_ReAlloc(const char* name, std::int64_t count, std::int64_t& address, std::int32_t& status) {
  return kvs_msd_realloc_(text_of(name), count, address, status);
}
std::int32_t kvS_MSD_Free(const char* name, std::int32_t& status) { return kvs_msd_free_(text_of(name), status); }
std::int32_t kvS_MSD_Size(const char* type, std::int64_t& bytes, std::int32_t& status) {
  return kvs_msd_size_(text_of(type), bytes, status);
}
std::int32_t kvS_MSD_Loc(const char* name, std::int64_t& address, std::int32_t& status) {
  return kvs_msd_loc_(text_of(name), address, status);
}
std::int64_t kvS_MSD_NumUnits(const char* name, std::int32_t& status) {
  return kvs_msd_numunits_(text_of(name), status);
}
void kvS_MSD_Debug() { kvs_msd_debug_(); }

NamedArea find_area(std::string_view label) {
  const std::int32_t place = find(label);
  if (place < 0) return {nullptr, 0, 0};
  const auto k = static_cast<std::size_t>(place);
  const std::int64_t unit = dynmem2_.area_unit[k];
  return {pointer_at<void>(first_element(k)), dynmem2_.area_bytes[k] / unit - 1, unit};
}

void* MEM_Alloc(std::int64_t bytes) {
  return counted(can_hold(bytes) ? std::malloc(heap_bytes(bytes)) : nullptr, bytes);
}

void* MEM_Calloc(std::int64_t count, std::int64_t unit) {
  std::int64_t bytes = -1;
  const bool fits = count >= 0 && unit >= 0 && !__builtin_mul_overflow(count, unit, &bytes) && can_hold(bytes);
  return counted(fits ? std::calloc(heap_bytes(bytes), 1) : nullptr, bytes);
}

void* MEM_Resize(void* old, std::int64_t bytes) {
  if (old == nullptr) return MEM_Alloc(bytes);
  void* block = can_hold(bytes) ? std::realloc(old, heap_bytes(bytes)) : nullptr;
  if (block == nullptr) report_no_heap(bytes);
  return block;
}

std::int32_t MEM_Free(void* block) {
  ++mem_free_call_count;
  std::free(block);
  return block == nullptr ? 1 : 0;
}

void* kvS_MEM_Alloc(std::int64_t bytes) {
  void* block = MEM_Alloc(bytes);
  if (block == nullptr && failure_hook != nullptr) failure_hook("MEM_Alloc", "Allocation error");
  return block;
}
void* kvS_MEM_Calloc(std::int64_t count, std::int64_t unit) { return MEM_Calloc(count, unit); }
void* kvS_MEM_Resize(void* old, std::int64_t bytes) { return MEM_Resize(old, bytes); }
std::int32_t kvS_MEM_Free(void* block) { return MEM_Free(block); }
std::int64_t kvS_MEM_Loc(const void* at) { return address_of(at); }

void kvs_mem_alloc_(std::int64_t bytes, std::int64_t& address, std::int32_t& status) {
  address = address_of(kvS_MEM_Alloc(bytes));
  status = address == 0 ? 1 : 0;
}
void kvs_mem_calloc_(std::int64_t count, std::int64_t unit, std::int64_t& address, std::int32_t& status) {
  address = address_of(kvS_MEM_Calloc(count, unit));
  status = address == 0 ? 1 : 0;
}
void kvs_mem_resize_(std::int64_t& address, std::int64_t bytes, std::int32_t& status) {
  void* block = kvS_MEM_Resize(pointer_at<void>(address), bytes);
  status = block == nullptr ? 1 : 0;
  if (status == 0) address = address_of(block);
}
void kvs_mem_free_(std::int64_t address, std::int32_t& status) { status = kvS_MEM_Free(pointer_at<void>(address)); }
void kvs_mem_loc_(const void* at, std::int64_t& address) { address = kvS_MEM_Loc(at); }

void memget_(std::int64_t& address, std::int64_t bytes, std::int32_t& status) {
  address = can_hold(bytes) ? address_of(std::malloc(heap_bytes(bytes))) : 0;
  status = address == 0 ? -1 : 0;
  if (status == 0) return;
  note_memory_shortage();
  std::fputs("Error memget could not allocate storage\n", stdout);
}
void memfre_(std::int64_t address) { std::free(pointer_at<void>(address)); }

}  // namespace pathstat
