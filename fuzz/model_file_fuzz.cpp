#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "structure/model_file.h"
#include "structure/model_numbers.h"

/// Any bytes have to read to an end, and what reads as a text has to read back when it is written.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace pathstat;
  set_model_file_messages([](std::string_view, std::initializer_list<ModelFileMessageArgument>) {});
  std::FILE* stream = size > 0 ? fmemopen(const_cast<std::uint8_t*>(data), size, "r") : nullptr;
  if (stream == nullptr) return 0;
  const ModelFile file(FIL_QFXioCreate("fuzz"));
  file->stream = stream;
  file->state = model_file_reading;
  while (true) {
    const ModelItem item = next_model_item(*file);
    if (item.kind == item_end_of_file) return 0;
    std::vector<double> numbers;
    std::vector<std::int32_t> integers;
    read_numbers(item.value, numbers);
    read_numbers(item.value, integers);
    split_words(item.value);
    if (item.kind != item_attribute || item.value.empty() || item.name.empty()) continue;

    char* bytes = nullptr;
    std::size_t length = 0;
    const ModelFile copy(FIL_QFXioCreate("copy"));
    copy->stream = open_memstream(&bytes, &length);
    copy->state = model_file_writing;
    FIL_WriteAttrString(*copy, "t", attribute_text, item.value);
    FIL_QFXioClose(*copy);
    copy->stream = fmemopen(bytes, length, "r");
    copy->state = model_file_reading;
    const bool same = next_model_item(*copy).value == item.value;
    FIL_QFXioClose(*copy);
    std::free(bytes);
    if (!same) __builtin_trap();
  }
}
