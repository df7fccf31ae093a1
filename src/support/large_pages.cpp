#include "support/large_pages.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace pathstat {

void prefer_large_pages([[maybe_unused]] std::span<std::byte> memory) {
#ifdef MADV_HUGEPAGE
  constexpr std::size_t worth_it = std::size_t{4} << 20;  // two of the usual size of large pages
  if (memory.size() < worth_it) return;
  const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
  const auto begin = reinterpret_cast<std::uintptr_t>(memory.data());
  const std::size_t skipped = (page - begin % page) % page;
  ::madvise(memory.data() + skipped, memory.size() - skipped, MADV_HUGEPAGE);
#endif
}

}  // namespace pathstat
