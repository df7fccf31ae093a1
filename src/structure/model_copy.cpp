#include <string>

#include "structure/model_file.h"
#include "support/text_field.h"

namespace pathstat {

namespace {

/// Writes one item; 0 if it was taken. An empty text has no written form and is left out.
std::int32_t copy_item(const ModelItem& item, QFXio& copy) {
  switch (item.kind) {
    case item_attribute:
      return FIL_WriteAttrString(copy, item.name, item.id_or_type, item.value) == 1 ? 1 : 0;
    case item_object:
      return FIL_PushObject(copy, item.id_or_type, item.name, item.value);
    case item_reference:
      return FIL_WriteObjRef(copy, item.id_or_type, item.name, item.value);
    case item_object_end:
      return FIL_PopObject(copy);
    default:
      std::printf("bad QFXio_status\n");
      return 0;
  }
}

}  // namespace

void kvD_TRJ_TestParsing(std::string_view file_name, std::int32_t& status) {
  status = 1;
  const ModelFile file(FIL_QFXioCreate(file_name));
  const ModelFile copy(file ? FIL_QFXioCreate(file->name + ".new") : nullptr);
  if (!copy) return;
  if (FIL_QFXioOpenRead(*file) != 0) {
    std::printf("couldn't open %s for read\n", file->name.c_str());
    return;
  }
  if (FIL_QFXioOpenWrite(*copy) != 0) {
    std::printf("couldn't open %s for write\n", copy->name.c_str());
    return;
  }
  while (true) {
    const ModelItem item = next_model_item(*file);
    if (item.kind == item_end_of_file) break;
    if (item.kind == item_format_error || copy_item(item, *copy) != 0) {
      std::printf("Error parsing %s\n", file->name.c_str());
      return;
    }
  }
  status = FIL_QFXioClose(*copy);
}

void kvd_trj_testparsing_(std::string_view file_name, std::int32_t& status) {
  kvD_TRJ_TestParsing(trimmed(file_name), status);
}

}  // namespace pathstat
