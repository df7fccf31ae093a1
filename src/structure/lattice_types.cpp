#include "structure/lattice_types.h"

#include <cmath>
#include <span>

#include "coreapi/messages.h"
#include "structure/crystal_vectors.h"

namespace pathstat {
namespace {

constexpr std::int32_t unset = -1;
constexpr std::int32_t primitive = 0;
constexpr std::size_t lengths_at = 0, angles_at = 3;

constexpr std::array<std::string_view, 18> lattice_texts{
    "UNSET",        "TRICLINIC",      "MONOCLINIC-A", "MONOCLINIC-B", "MONOCLINIC-C", "ORTHORHOMBIC",
    "TRIGONAL-HEX", "TRIGONAL-RHOMB", "TETRAGONAL",   "HEXAGONAL",    "CUBIC",        "mC-PRIMITIVE",
    "oC-PRIMITIVE", "oI-PRIMITIVE",   "oF-PRIMITIVE", "tI-PRIMITIVE", "cI-PRIMITIVE", "cF-PRIMITIVE"};
constexpr std::array<std::string_view, 7> centring_texts{"PRIMITIVE", "BODY-CENTRED", "FACE-CENTRED", "A-CENTRED",
                                                         "B-CENTRED", "C-CENTRED",    "RHOMBOHEDRAL"};

/// Entry k is the text of type `first` + k.
void text_of_type(std::span<const std::string_view> texts, std::int32_t first, std::int32_t type,
                  std::string_view unknown, TextField text, std::int32_t& status) {
  const std::int64_t place = std::int64_t{type} - first;
  status = place >= 0 && place < std::ssize(texts) ? 0 : 1;
  text.set(status == 0 ? texts[static_cast<std::size_t>(place)] : unknown);
}

void type_of_text(std::span<const std::string_view> texts, std::int32_t first, std::string_view text,
                  std::int32_t& type, std::int32_t& status) {
  std::size_t place = 0;
  while (place < texts.size() && texts[place] != trimmed(text)) ++place;
  status = place < texts.size() ? 0 : 1;
  type = status == 0 ? first + static_cast<std::int32_t>(place) : -1;
}

/// How edited angle entries are brought into line.
enum class Angles { given, as_row, alpha_beta, alike, free_or_cosine_sum, free_or_two_and_one, triangle };

struct LatticeRow {
  LatticeConstraints constraints;
  std::size_t equal_lengths = 0;  ///< of a, b, c: 0 none, 2 a and b, 3 all
  Angles angles = Angles::given;
};

/// Entry k is lattice type k - 1. An angle entry of 0 in the constraints is 0 in edited ones too.
constexpr std::array<LatticeRow, 18> lattice_rows{{
    {{1, 2, 3, 4, 5, 6}},
    {{1, 2, 3, 4, 5, 6}},
    {{1, 2, 3, 4, 0, 0}, 0, Angles::as_row},
    {{1, 2, 3, 0, 5, 0}, 0, Angles::as_row},
    {{1, 2, 3, 0, 0, 6}, 0, Angles::as_row},
    {{1, 2, 3, 0, 0, 0}, 0, Angles::as_row},
    {{1, 1, 3, 0, 0, 0}, 2, Angles::as_row},
    {{1, 1, 1, 4, 4, 4}, 3, Angles::alike},
    {{1, 1, 3, 0, 0, 0}, 2, Angles::as_row},
    {{1, 1, 3, 0, 0, 0}, 2, Angles::as_row},
    {{1, 1, 1, 0, 0, 0}, 3, Angles::as_row},
    {{1, 1, 3, 4, 4, 6}, 2, Angles::alpha_beta},
    {{1, 1, 3, 0, 0, 6}, 2, Angles::as_row},
    {{1, 1, 1, 4, 5, -1}, 3, Angles::free_or_cosine_sum},
    {{1, 2, 3, -2, -2, -2}, 0, Angles::triangle},
    {{1, 1, 1, 4, 4, -1}, 3, Angles::free_or_two_and_one},
    {{1, 1, 1, 0, 0, 0}, 3, Angles::as_row},
    {{1, 1, 1, 0, 0, 0}, 3, Angles::as_row},
}};

/// The row of a lattice type; null for an unknown type, which is told to the user.
const LatticeRow* row_of(std::int32_t type) {
  const std::int64_t place = std::int64_t{type} - unset;
  if (place >= 0 && place < std::ssize(lattice_rows)) return &lattice_rows[static_cast<std::size_t>(place)];
  show_message("CrystalBadLattice");
  return nullptr;
}

/// The first of `count` entries that was edited, or else the first.
std::int32_t edited_entry(std::span<const std::int32_t> before, std::span<const std::int32_t> edited,
                          std::size_t count) {
  for (std::size_t k = 0; k < count; ++k) {
    if (edited[k] != before[k]) return edited[k];
  }
  return edited[0];
}

/// @param before, angles  the three angle entries, `angles` as edited
void bring_angles_into_line(const LatticeRow& row, bool lengths_fixed, std::span<const std::int32_t> before,
                            std::span<std::int32_t> angles) {
  const auto rule = std::span(row.constraints).subspan(angles_at, 3);
  const auto set_all = [&](auto entry) {
    for (std::size_t k = 0; k < 3; ++k) angles[k] = entry(k);
  };
  const auto spread = [&](std::size_t count) {
    const std::int32_t chosen = edited_entry(before, angles, count);
    for (std::size_t k = 0; k < count; ++k) angles[k] = chosen;
  };
  switch (row.angles) {
    case Angles::given:
      return;
    case Angles::as_row:
      return set_all([&](std::size_t k) { return rule[k] == 0 ? 0 : angles[k]; });
    case Angles::alpha_beta:
      return spread(2);
    case Angles::alike:
      return spread(3);
    case Angles::free_or_cosine_sum:
    case Angles::free_or_two_and_one: {
      const bool fixed = edited_entry(before, angles, 3) == 0;
      return set_all([&](std::size_t k) { return fixed ? 0 : rule[k]; });
    }
    case Angles::triangle:
      return set_all([&](std::size_t k) { return lengths_fixed ? 0 : rule[k]; });
  }
}

/// Gives tied parameters one value. The constraint of a tie names the parameter whose value counts.
/// @param first  the number of the first of the three parameters
void tie(Vector3& values, std::span<const std::int32_t> constraints, std::int32_t first) {
  constexpr std::array<std::array<std::size_t, 2>, 3> pairs{{{0, 1}, {0, 2}, {1, 2}}};
  const auto tied = [&](std::size_t a, std::size_t b) {
    return constraints[a] > 0 && constraints[a] == constraints[b];
  };
  const auto names = [&](std::size_t k) { return constraints[k] - first; };
  if (tied(0, 1) && tied(0, 2)) {
    const auto named = names(0);
    values.fill(values[named == 1 || named == 2 ? static_cast<std::size_t>(named) : 0]);
    return;
  }
  for (const auto& [a, b] : pairs) {
    if (!tied(a, b)) continue;
    const double value = values[names(a) == static_cast<std::int32_t>(b) ? b : a];
    values[a] = values[b] = value;
    return;
  }
}

struct PrimitiveRow {
  std::int32_t lattice, centring;
  std::array<Vector3, 3> columns;
  std::int32_t type;
};
constexpr double h = 0.5, t = 1.0 / 3, d = 2.0 / 3;
constexpr std::array<PrimitiveRow, 18> primitive_rows{{
    {1, 4, {{{-h, 0, h}, {h, 0, h}, {0, 1, 0}}}, 10},
    {1, 5, {{{h, h, 0}, {-h, h, 0}, {0, 0, 1}}}, 10},
    {1, 1, {{{h, h, h}, {-h, h, h}, {0, 0, 1}}}, 10},
    {2, 5, {{{h, -h, 0}, {h, h, 0}, {0, 0, 1}}}, 10},
    {2, 3, {{{0, h, h}, {0, -h, h}, {1, 0, 0}}}, 10},
    {2, 1, {{{h, -h, h}, {h, h, h}, {0, 0, 1}}}, 10},
    {3, 3, {{{0, h, -h}, {0, h, h}, {1, 0, 0}}}, 10},
    {3, 4, {{{h, 0, h}, {h, 0, -h}, {0, 1, 0}}}, 10},
    {3, 1, {{{h, h, -h}, {h, h, h}, {1, 0, 0}}}, 10},
    {4, 3, {{{0, h, h}, {0, -h, h}, {1, 0, 0}}}, 11},
    {4, 4, {{{h, 0, h}, {h, 0, -h}, {0, 1, 0}}}, 11},
    {4, 5, {{{h, h, 0}, {-h, h, 0}, {0, 0, 1}}}, 11},
    {4, 1, {{{-h, h, h}, {h, -h, h}, {h, h, -h}}}, 12},
    {4, 2, {{{0, h, h}, {h, 0, h}, {h, h, 0}}}, 13},
    {7, 1, {{{-h, h, h}, {h, -h, h}, {h, h, -h}}}, 14},
    {9, 1, {{{-h, h, h}, {h, -h, h}, {h, h, -h}}}, 15},
    {9, 2, {{{0, h, h}, {h, 0, h}, {h, h, 0}}}, 16},
    {5, 6, {{{d, t, t}, {-t, t, t}, {-t, -d, t}}}, 6},
}};

}  // namespace

void kva_sgr_latticestringfromtype_(std::int32_t type, TextField text, std::int32_t& status) {
  text_of_type(lattice_texts, unset, type, lattice_texts[0], text, status);
}

void kva_sgr_latticetypefromstring_(std::string_view text, std::int32_t& type, std::int32_t& status) {
  type_of_text(lattice_texts, unset, text, type, status);
}

void kva_sgr_centeringstringfromtype_(std::int32_t type, TextField text, std::int32_t& status) {
  text_of_type(centring_texts, primitive, type, "UNKNOWN", text, status);
}

void kva_sgr_centeringtypefromstring_(std::string_view text, std::int32_t& type, std::int32_t& status) {
  type_of_text(centring_texts, primitive, text, type, status);
}

void kva_sgr_latticeconstraints_(std::int32_t type, LatticeConstraints& constraints, std::int32_t& status) {
  const LatticeRow* row = row_of(type);
  status = row == nullptr ? 1 : 0;
  if (row != nullptr) constraints = row->constraints;
}

void kva_sgr_validatelatticecons_(std::int32_t type, const LatticeConstraints& before, const LatticeConstraints& edited,
                                  LatticeConstraints& result, std::int32_t& changed, std::int32_t& status) {
  const LatticeConstraints old = before, given = edited;  // the result may be one of them
  result = given;
  changed = 0;
  const LatticeRow* row = row_of(type);
  status = row == nullptr ? 1 : 0;
  if (row == nullptr) return;
  const std::int32_t length = edited_entry(old, given, row->equal_lengths);
  for (std::size_t k = 0; k < row->equal_lengths; ++k) result[lengths_at + k] = length;
  const bool lengths_fixed = result[0] == 0 && result[1] == 0 && result[2] == 0;
  bring_angles_into_line(*row, lengths_fixed, std::span(old).subspan(angles_at, 3),
                         std::span(result).subspan(angles_at, 3));
  changed = result == given ? 0 : 1;
}

void kva_sgr_derivelatticeparams_(Vector3& lengths, Vector3& angles, const LatticeConstraints& constraints,
                                  std::int32_t& status) {
  status = 0;
  const auto rules = std::span(constraints);
  tie(lengths, rules.first(3), 1);
  tie(angles, rules.subspan(angles_at, 3), 4);
  if (constraints[5] == -1) {
    const double cosine = -1 - std::cos(angles[0]) - std::cos(angles[1]);
    if (cosine >= -1) {
      angles[2] = crystal::angle_of(cosine);
    } else {
      status = 1;
    }
  }
  for (std::size_t k = 0; k < 3; ++k) {
    if (constraints[angles_at + k] != -2) continue;
    // The angle faces its own length in the triangle; the other two lie beside it.
    const double facing = lengths[k], one = lengths[k == 0 ? 1 : 0], other = lengths[k == 2 ? 1 : 2];
    const double cosine = (one * one - facing * facing + other * other) / (2 * one * other);
    if (std::abs(cosine) <= 1) {
      angles[k] = std::acos(cosine);
    } else {
      status = 1;
    }
  }
}

void kva_sgr_primitivelattice_(std::int32_t type, std::int32_t centring, Vector3& column_1, Vector3& column_2,
                               Vector3& column_3, std::int32_t& primitive_type, std::int32_t& status) {
  column_1 = {1, 0, 0};
  column_2 = {0, 1, 0};
  column_3 = {0, 0, 1};
  primitive_type = type;
  status = centring == unset || centring == primitive ? 0 : 1;
  if (status == 0) return;
  for (const auto& row : primitive_rows) {
    if (row.lattice != type || row.centring != centring) continue;
    column_1 = row.columns[0];
    column_2 = row.columns[1];
    column_3 = row.columns[2];
    primitive_type = row.type;
    status = 0;
    return;
  }
}

}  // namespace pathstat
