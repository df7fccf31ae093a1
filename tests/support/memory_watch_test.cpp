#include "support/memory_watch.h"

#include <new>

#include "testing.h"

namespace pathstat {
namespace {

#ifndef __SANITIZE_ADDRESS__  // which ends the process where there is no memory
TEST(MemoryWatch, remembers_once_what_was_caught) {
  const auto before = std::get_new_handler();
  watch_memory();
  EXPECT_FALSE(take_memory_shortage());
  const volatile std::size_t too_much = PTRDIFF_MAX;
  EXPECT_THROW(::operator delete(::operator new(too_much)), std::bad_alloc);
  EXPECT_EQ(::operator new(too_much, std::nothrow), nullptr);
  EXPECT_TRUE(take_memory_shortage());
  EXPECT_FALSE(take_memory_shortage());
  std::set_new_handler(before);
}
#endif

}  // namespace
}  // namespace pathstat
