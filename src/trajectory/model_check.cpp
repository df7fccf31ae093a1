#include "trajectory/model_check.h"

#include "coreapi/messages.h"
#include "coreapi/operations.h"
#include "support/text_field.h"
#include "trajectory/frame_cache.h"

namespace pathstat {
namespace {

constexpr std::int32_t failed = 1;
constexpr std::int32_t structured_file = 1;

void tell_other_model(std::int32_t model) {
  Text<12> name;
  std::int32_t error = 0;
  kvd_mod_name_(model, name, error);
  show_message("PATHSTAT_MSG_48", name);
}

}  // namespace

void checktrjmodel_(std::string_view copy, std::int32_t& model, bool cache_ready, std::int32_t& status) {
  constexpr std::int32_t bring_back = 1;
  status = 0;
  std::int32_t error = 0;
  std::int32_t current = 0;
  kvd_mod_current_(current, error);
  if (current == model && model != 0) return;
  std::int32_t valid = 0;
  kvd_validateoid_(model, valid, error);
  if (error == 0 && valid != 0) return tell_other_model(model);
  std::int32_t choice = 0;
  kvu_dlg_getoption_("PATHSTAT_MSG_46", "PATHSTAT_MSG_47", choice, bring_back, error);
  status = failed;
  if (choice != bring_back) return;
  std::int32_t imported = 0;
  kvd_fil_importmodel_(copy, structured_file, 1, 0, imported, error);
  if (error > 0) return;
  kvg_redisplaymodels_(1, 0);
  model = imported;
  status = 0;
  if (cache_ready) newcachemodel_(model, status);
}

}  // namespace pathstat
