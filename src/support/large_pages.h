#pragma once

#include <cstddef>
#include <span>

namespace pathstat {

/// Asks the system to back this memory with large pages where it has them: far fewer pages are fetched one by one as
/// the memory is first written, and found again as it is read. Nothing else changes; where there are none, nothing.
void prefer_large_pages(std::span<std::byte> memory);

}  // namespace pathstat
