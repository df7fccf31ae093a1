#pragma once

#include <new>
#include <stdexcept>

namespace pathstat {

/// Runs a step that makes arrays as it goes. @return false if they did not find room
template <class Step>
bool within_memory(Step step) {
  try {
    step();
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  } catch (const std::length_error&) {
    return false;
  }
}

}  // namespace pathstat
