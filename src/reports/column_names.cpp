#include "reports/column_names.h"

#include "plots/labels.h"
#include "support/text_field.h"

namespace pathstat {

std::string data_label(std::int32_t id, std::int32_t mode, std::int32_t column) {
  Text<32> label;
  std::int32_t status = 0;
  trjdatalabel_(id, mode, column + 1, label, status);
  return label.str();
}

}  // namespace pathstat
