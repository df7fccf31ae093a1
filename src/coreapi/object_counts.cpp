#include "coreapi/object_counts.h"

#include "coreapi/operations.h"

namespace pathstat {
namespace {

void check(std::int32_t& count, std::int32_t& error) {
  if (error == 0 && !is_object_count(count)) error = impossible_count;
  if (error != 0) count = 0;
}

}  // namespace

void count_atoms(std::int32_t model, std::int32_t selector, std::int32_t& count, std::int32_t& error) {
  count = 0;
  kvd_mod_numatoms_(model, selector, count, error);
  check(count, error);
}

void count_selected(std::int32_t object, std::int32_t object_class, std::int32_t& count, std::int32_t& error) {
  count = 0;
  kvd_sel_numselected_(object, object_class, count, error);
  check(count, error);
}

}  // namespace pathstat
