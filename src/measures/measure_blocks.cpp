#include "measures/measure_blocks.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string_view>

#include "support/named_memory.h"

namespace pathstat {
namespace {

constexpr std::string_view conventions_label = "pathstat/M/InvMeasType";

/// Made without memory, since the blocks are freed also where that has run out.
using BlockLabel = Text<area_name_length>;

BlockLabel label_of(std::initializer_list<std::string_view> parts) {
  std::array<char, area_name_length> label{};
  auto end = label.begin();
  for (const auto part : parts) end = std::ranges::copy(part, end).out;
  return std::string_view(label.begin(), end);
}

BlockLabel block_label(const MeasureFamily& family, std::string_view what, std::size_t k) {
  const char number = static_cast<char>('1' + k);
  return label_of({"pathstat/M/", family.prefix, "Meas", what, {&number, 1}});
}

BlockLabel label_block(const MeasureFamily& family) { return label_of({"pathstat/M/", family.labels}); }

void make(std::string_view label, std::string_view type, std::int64_t count, std::int64_t& address,
          std::int32_t& status) {
  if (status == 0) kvs_msd_alloc_(label, type, count, address, status);
}

void free(std::string_view label, std::int64_t& address) {
  std::int32_t status = 0;
  kvs_msd_free_(label, status);
  address = 0;
}

}  // namespace

void make_measure_blocks(const MeasureFamily& family, std::int32_t count, std::int32_t& status) {
  auto& blocks = trjmeasures_p_;
  status = 0;
  for (std::size_t k = 0; k < family.atoms; ++k) {
    make(block_label(family, "Ind", k), "int", count, blocks.atoms[family.first_atom + k], status);
    make(block_label(family, "Trans", k), "int", 3 * std::int64_t{count}, blocks.images[family.first_atom + k], status);
  }
  if (family.has_conventions()) make(conventions_label, "int", count, blocks.inversion_conventions, status);
  std::int64_t& labels = blocks.labels[family.label_place];
  free(label_block(family), labels);
  make(label_block(family), "char", std::int64_t{measure_label_width} * count, labels, status);
}

void free_measure_blocks(const MeasureFamily& family) {
  auto& blocks = trjmeasures_p_;
  for (std::size_t k = 0; k < family.atoms; ++k) {
    free(block_label(family, "Ind", k), blocks.atoms[family.first_atom + k]);
    free(block_label(family, "Trans", k), blocks.images[family.first_atom + k]);
  }
  if (family.has_conventions()) free(conventions_label, blocks.inversion_conventions);
}

std::span<std::int32_t> measure_atoms(const MeasureFamily& family, std::size_t k) {
  return named_span<std::int32_t>(block_label(family, "Ind", k));
}

std::span<std::int32_t> measure_images(const MeasureFamily& family, std::size_t k) {
  return named_span<std::int32_t>(block_label(family, "Trans", k));
}

std::span<std::int32_t> inversion_conventions() { return named_span<std::int32_t>(conventions_label); }

std::span<MeasureLabel> measure_labels(const MeasureFamily& family) {
  const auto characters = named_span<char>(label_block(family));
  static_assert(sizeof(MeasureLabel) == measure_label_width && alignof(MeasureLabel) == 1);
  return {reinterpret_cast<MeasureLabel*>(characters.data()), characters.size() / measure_label_width};
}

}  // namespace pathstat
