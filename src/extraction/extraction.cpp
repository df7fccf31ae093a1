#include "extraction/extraction.h"

#include "catalogue/catalogue_mask.h"
#include "state/analysis_settings.h"
#include "support/text_field.h"

namespace pathstat {

void datatodisk_(std::string_view file, std::string_view source, std::string_view word, std::int32_t& status) {
  maskprops_(file, true, status);
  if (status != 0) return;
  if (same_text(word, "PROPERTIES")) propsdatatodisk_(status, file, source);
  if (same_text(word, "FLUCTUATIONS")) fluctdatatodisk_(file, status);
}

void propsdatatodisk_(std::int32_t& status, std::string_view file, std::string_view source) {
  status = 0;
  if (same_text(source, from_trajectory)) propsdatatodisktrj_(file, status);
  if (same_text(source, from_selected_models)) propsdatatodiskmodel_(status);
}

}  // namespace pathstat
