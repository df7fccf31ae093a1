#include "support/memory_watch.h"

#include <atomic>
#include <new>

namespace pathstat {
namespace {

std::atomic<bool> shortage = false;

void remember_and_throw() {
  shortage = true;
  throw std::bad_alloc();
}

}  // namespace

void watch_memory() { std::set_new_handler(remember_and_throw); }

void note_memory_shortage() { shortage = true; }

bool take_memory_shortage() { return shortage.exchange(false); }

}  // namespace pathstat
