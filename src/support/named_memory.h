#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>

#include "support/large_pages.h"
#include "support/text_field.h"

/// Working arrays known by a text label, and the plain allocation below them.
///
/// A label has at most 32 characters, is compared as it is written, trailing blanks ignored, and names one block.
/// At most 500 blocks live at one time. One thread only.
namespace pathstat {

inline constexpr std::int32_t maximum_areas = 500;
inline constexpr std::size_t area_name_length = 32;

/// The labels in allocation order; entries above `area_count` are blank.
struct DynMem1 {
  std::array<Text<area_name_length>, maximum_areas> area_name;
};

/// What the labels stand for; entry k of all arrays belongs to label k.
struct DynMem2 {
  std::array<std::int64_t, maximum_areas> area_address{};  ///< block as allocated
  std::array<std::int64_t, maximum_areas> area_base{};     ///< base reference that the offset counts from
  std::array<std::int64_t, maximum_areas> area_bytes{};    ///< (elements + 1) x unit
  std::array<std::int64_t, maximum_areas> area_unit{};     ///< bytes of an element
  std::int32_t area_count = 0;
};

inline DynMem1 dynmem1_;
inline DynMem2 dynmem2_;

/// Takes the text of an allocation error; "|" marks a line break in it.
using MemoryErrorSink = void (*)(std::int32_t severity, std::string_view text);
/// Takes the name of the routine that failed and what happened.
using MemoryFailureHook = void (*)(std::string_view routine, std::string_view text);

/// Sets where the errors of the label table go; none at start.
void set_memory_error_sink(MemoryErrorSink sink);
/// Sets where a failed kvS_MEM_Alloc is reported; none at start.
void set_memory_failure_hook(MemoryFailureHook hook);

// The label table with element offsets. Element 1 of a block is element `offset`, counted from 1, of an array of the
// block's type that starts at the base reference. Contents of a new block are not initialised.

/// Makes a block of `count` elements.
/// @param status  0; -1 the table is full, the type unknown or no memory left; -2 label too long; -3 label in use;
///                -4 negative count; -5 count of zero
void kvdm_alloc_(const void* base, std::string_view name, std::int64_t count, std::string_view type,
                 std::int64_t& offset, std::int32_t& status);
/// Resizes a block, keeping the elements that both sizes have; the block stays as it is if this fails.
/// @param status  0; -1 unknown label or no memory left; -2 label too long; -4 negative count
void kvdm_realloc_(std::string_view name, std::int64_t count, std::int64_t& offset, std::int32_t& status);
/// @param status  0; -1 unknown label, which changes nothing
void kvdm_free_(std::string_view name, std::int32_t& status);
/// Gives the bytes of an element: `type` is a type name such as "int" or "double", or the beginning of one.
/// @param status  0; -1 unknown type, with 4 bytes
void kvdm_size_(std::string_view type, std::int64_t& bytes, std::int32_t& status);
/// Gives the elements of a block. @param status  0; -1 unknown label, with count 0
void kvdm_nunits_(std::string_view name, std::int64_t& count, std::int32_t& status);
/// Prints the table to standard output.
void kvdm_debug_(std::int32_t& status);

// The label table with addresses. Counts below 1 are raised to 1. Result: the status, unless stated.

/// As kvdm_alloc_; `address` is 0 if this fails.
std::int32_t kvs_msd_alloc_(std::string_view name, std::string_view type, std::int64_t count, std::int64_t& address,
                            std::int32_t& status);
/// As kvdm_realloc_; `address` stays as it is if this fails.
std::int32_t kvs_msd_realloc_(std::string_view name, std::int64_t count, std::int64_t& address, std::int32_t& status);
/// Frees a block; an unknown label is harmless. Result: 1 for an unknown label, else 0.
std::int32_t kvs_msd_free_(std::string_view name, std::int32_t& status);
std::int32_t kvs_msd_size_(std::string_view type, std::int64_t& bytes, std::int32_t& status);
/// Finds a block. @param status  0; 1 unknown label, with address 0
std::int32_t kvs_msd_loc_(std::string_view name, std::int64_t& address, std::int32_t& status);
/// Result: the elements of a block, 0 if the label is unknown.
std::int64_t kvs_msd_numunits_(std::string_view name, std::int32_t& status);
void kvs_msd_debug_();

// The same for terminated names; a null name counts as blank.

std::int32_t kvS_MSD_Alloc(const char* name, const char* type, std::int64_t count, std::int64_t& address,
                           std::int32_t& status);
std::int32_t kvS_MSD_ReAlloc(const char* name, std::int64_t count, std::int64_t& address, std::int32_t& status);
std::int32_t kvS_MSD_Free(const char* name, std::int32_t& status);
std::int32_t kvS_MSD_Size(const char* type, std::int64_t& bytes, std::int32_t& status);
std::int32_t kvS_MSD_Loc(const char* name, std::int64_t& address, std::int32_t& status);
std::int64_t kvS_MSD_NumUnits(const char* name, std::int32_t& status);
void kvS_MSD_Debug();

// Plain allocation. Byte counts are signed so that a negative one is seen and refused. A null result is a failure.

inline std::int64_t mem_alloc_call_count = 0;  ///< successful allocations
inline std::int64_t mem_free_call_count = 0;   ///< calls of MEM_Free

void* MEM_Alloc(std::int64_t bytes);
/// Zero-filled.
void* MEM_Calloc(std::int64_t count, std::int64_t unit);
/// A null `old` means a new block; `old` stays as it is if this fails.
void* MEM_Resize(void* old, std::int64_t bytes);
/// Result: 1 for null, else 0.
std::int32_t MEM_Free(void* block);

/// As MEM_Alloc, and a failure goes to the failure hook.
void* kvS_MEM_Alloc(std::int64_t bytes);
void* kvS_MEM_Calloc(std::int64_t count, std::int64_t unit);
void* kvS_MEM_Resize(void* old, std::int64_t bytes);
std::int32_t kvS_MEM_Free(void* block);
/// The argument as an integer address.
std::int64_t kvS_MEM_Loc(const void* at);

/// @param status  0; 1 if there is no memory, with address 0
void kvs_mem_alloc_(std::int64_t bytes, std::int64_t& address, std::int32_t& status);
void kvs_mem_calloc_(std::int64_t count, std::int64_t unit, std::int64_t& address, std::int32_t& status);
/// Replaces `address`, or leaves it with status 1.
void kvs_mem_resize_(std::int64_t& address, std::int64_t bytes, std::int32_t& status);
/// @param status  0; 1 for a null address
void kvs_mem_free_(std::int64_t address, std::int32_t& status);
void kvs_mem_loc_(const void* at, std::int64_t& address);

/// The table's own link to the heap. @param status  0; -1 no memory, with address 0
void memget_(std::int64_t& address, std::int64_t bytes, std::int32_t& status);
void memfre_(std::int64_t address);

template <class T>
T* pointer_at(std::int64_t address) {
  return reinterpret_cast<T*>(static_cast<std::intptr_t>(address));
}

/// The type name under which an element of T is allocated, by its size.
template <class T>
constexpr std::string_view element_type_name() {
  static_assert(std::is_trivially_copyable_v<T> && alignof(T) <= 8);
  static_assert(sizeof(T) == 1 || sizeof(T) == 2 || sizeof(T) == 4 || sizeof(T) == 8);
  if constexpr (std::is_same_v<T, double>) return "double";
  if constexpr (std::is_same_v<T, float>) return "real";
  constexpr std::array<std::string_view, 9> by_size{"", "char", "short", "", "int", "", "", "", "byte8"};
  return by_size[sizeof(T)];
}

/// A block of the table; `elements` is null for an unknown label.
struct NamedArea {
  void* elements;
  std::int64_t count;
  std::int64_t unit;
};
NamedArea find_area(std::string_view label);

/// The block of a label as elements of T; empty if the label is unknown or its elements have another size.
template <class T>
std::span<T> named_span(std::string_view label) {
  const NamedArea area = find_area(label);
  if (area.elements == nullptr || area.unit != sizeof(T)) return {};
  return {static_cast<T*>(area.elements), static_cast<std::size_t>(area.count)};
}

struct NotCleared {};

/// Owns the block of a label for a scope: frees what an interrupted run left under the label, allocates the block
/// zero-filled, and frees it at the end, unless the label has come to name another block by then.
template <class T>
class NamedBlock {
 public:
  NamedBlock() = default;
  /// @param count   elements; below 1 the span is empty
  /// @param status  that of kvs_msd_alloc_; the block is empty unless it is 0
  NamedBlock(std::string_view label, std::int64_t count, std::int32_t& status)
      : NamedBlock(label, count, status, NotCleared{}) {
    clear_from(0);
  }
  /// With anything in it: for large blocks that are written before they are read.
  NamedBlock(std::string_view label, std::int64_t count, std::int32_t& status, NotCleared) : label_(label) {
    kvs_msd_free_(label_, status);
    if (kvs_msd_alloc_(label_, element_type_name<T>(), count, address_, status) != 0) return;
    size_ = static_cast<std::size_t>(std::max<std::int64_t>(count, 0));
    prefer_large_pages(std::as_writable_bytes(span()));
  }
  NamedBlock(NamedBlock&& other) noexcept { swap(other); }
  NamedBlock& operator=(NamedBlock&& other) noexcept {
    NamedBlock taken(std::move(other));
    swap(taken);
    return *this;
  }
  ~NamedBlock() { release(); }

  std::span<T> span() const { return {pointer_at<T>(address_), size_}; }
  std::int64_t address() const { return address_; }
  std::size_t size() const { return size_; }

  /// Keeps the elements that both sizes have and zero-fills new ones; the block stays as it is if this fails.
  void resize(std::int64_t count, std::int32_t& status) {
    if (kvs_msd_realloc_(label_, count, address_, status) != 0) return;
    clear_from(std::exchange(size_, static_cast<std::size_t>(std::max<std::int64_t>(count, 0))));
  }

  /// Frees the block before the end of the scope.
  void release() {
    std::int64_t current = 0;
    std::int32_t status = 0;
    if (address_ != 0 && kvs_msd_loc_(label_, current, status) == 0 && current == address_)
      kvs_msd_free_(label_, status);
    address_ = 0;
    size_ = 0;
  }

 private:
  void swap(NamedBlock& other) noexcept {
    std::swap(label_, other.label_);
    std::swap(address_, other.address_);
    std::swap(size_, other.size_);
  }
  void clear_from(std::size_t first) {
    if (first < size_) std::memset(static_cast<void*>(pointer_at<T>(address_) + first), 0, (size_ - first) * sizeof(T));
  }

  Text<area_name_length + 1> label_;  // one wider, so that too long a label stays too long
  std::int64_t address_ = 0;
  std::size_t size_ = 0;
};

}  // namespace pathstat
