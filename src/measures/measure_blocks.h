#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "catalogue/measure_families.h"
#include "support/text_field.h"

namespace pathstat {

constexpr std::size_t measure_label_width = 32;
using MeasureLabel = Text<measure_label_width>;

/// Makes the blocks of a family for so many measures: atoms, images and, of inversions, conventions, none of which
/// lives yet, and the labels in place of earlier ones. @param status  0, or that of the allocation
void make_measure_blocks(const MeasureFamily& family, std::int32_t count, std::int32_t& status);

/// Frees all of them but the labels, which reports need later.
void free_measure_blocks(const MeasureFamily& family);

/// The blocks as they are now, for atom k, from 0, of the measures; empty where there is none.
std::span<std::int32_t> measure_atoms(const MeasureFamily& family, std::size_t k);
std::span<std::int32_t> measure_images(const MeasureFamily& family, std::size_t k);
std::span<std::int32_t> inversion_conventions();
std::span<MeasureLabel> measure_labels(const MeasureFamily& family);

}  // namespace pathstat
