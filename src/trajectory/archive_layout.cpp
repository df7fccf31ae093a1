#include "trajectory/archive_layout.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numbers>
#include <span>
#include <string>

#include "services/text_operations.h"
#include "state/analysis_settings.h"
#include "structure/crystal_orientation.h"
#include "trajectory/coordinate_alignment.h"

namespace pathstat {

namespace {

constexpr double radians_per_degree = 0.017453292519943295;

constexpr char upper(char letter) {
  return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

/// True if the text starts with a word of upper case letters, in any case.
constexpr bool starts_with(std::string_view text, std::string_view word) {
  return text.size() >= word.size() && std::ranges::equal(text.substr(0, word.size()), word, {}, upper);
}

struct PeriodicityWord {
  std::string_view word;
  ArchivePeriodicity meaning;
};
constexpr std::array<PeriodicityWord, 4> periodicity_words{{
    {"OFF", {periodic_type::none, 0}},
    {"2", {periodic_type::two_dimensional, 2}},
    {"3", {periodic_type::three_dimensional, 3}},
    {"ON", {periodic_type::three_dimensional, 3}},
}};
constexpr std::size_t word_column = 4;

/// Reads a number whose exponent is marked in the way of other languages.
bool read_with_letter_d(std::string_view text, double& value) {
  std::string copy(text);
  std::ranges::replace_if(
      copy, [](char c) { return c == 'd' || c == 'D'; }, 'e');
  const auto [end, error] = std::from_chars(copy.data(), copy.data() + copy.size(), value);
  return error == std::errc{} && end == copy.data() + copy.size() && std::isfinite(value);
}

/// The fields of a line, one after the other. Blanks stand between them.
class Fields {
 public:
  explicit Fields(std::string_view line) : at_(line.data()), end_(line.data() + line.size()) {}

  /// Passes a field. False if there is none.
  bool pass() {
    const char* first = skip_blanks();
    skip_field();
    return at_ != first;
  }
  /// Reads a field that is a finite number and nothing else.
  bool number(double& value) {
    const char* first = skip_blanks();
    if (end_ - first > 1 && first[0] == '+' && first[1] != '-') ++first;
    const auto [stop, error] = std::from_chars(first, end_, value);
    at_ = stop;
    if (error == std::errc{} && (at_ == end_ || *at_ == ' ')) return std::isfinite(value);
    skip_field();
    const std::string_view field(first, static_cast<std::size_t>(at_ - first));
    return error == std::errc{} && field.find_first_of("dD") != field.npos && read_with_letter_d(field, value);
  }

 private:
  const char* skip_blanks() {
    while (at_ != end_ && *at_ == ' ') ++at_;
    return at_;
  }
  void skip_field() {
    while (at_ != end_ && *at_ != ' ') ++at_;
  }

  const char* at_;
  const char* end_;
};

}  // namespace

ArchiveSecondLine read_second_line(std::string_view line, ArchivePeriodicity& periodicity) {
  periodicity = {};
  if (starts_with(line, "HELIX")) return ArchiveSecondLine::helix;
  if (!starts_with(line, "PBC")) return ArchiveSecondLine::frame;
  const std::string_view text = line.substr(std::min(word_column, line.size()));
  const auto row = std::ranges::find_if(periodicity_words, [&](const auto& r) { return starts_with(text, r.word); });
  if (row == periodicity_words.end()) return ArchiveSecondLine::unknown;
  periodicity = row->meaning;
  return ArchiveSecondLine::periodicity;
}

bool is_end_line(std::string_view line) {
  constexpr std::string_view end = "END";
  return starts_with(line, end) && (line.size() == end.size() || line[end.size()] == ' ');
}

double energy_of_title(std::string_view title) {
  std::string_view field = title.substr(std::min(energy_column, title.size()));
  field.remove_prefix(std::min(field.find_first_not_of(' '), field.size()));
  double energy = 0;
  std::int32_t error = 0;
  kvs_str_todouble_(field, energy, error);
  return error == 0 && std::isfinite(energy) ? energy : 0;
}

bool read_cell_line(std::string_view line, std::int32_t directions, ArchiveCell& cell) {
  constexpr double right_angle = std::numbers::pi / 2;
  const auto read = [&](std::span<double* const> values) {
    Fields fields(line);
    return fields.pass() && std::ranges::all_of(values, [&](double* value) { return fields.number(*value); });
  };
  auto& [a, b, c, alpha, beta, gamma] = cell;
  if (directions == 2) {
    a = 1.0, beta = gamma = right_angle;
    if (!read(std::array{&b, &c, &alpha})) return false;
    alpha *= radians_per_degree;
    return true;
  }
  if (!read(std::array{&a, &b, &c, &alpha, &beta, &gamma})) return false;
  for (double* angle : {&alpha, &beta, &gamma}) *angle *= radians_per_degree;
  return true;
}

bool read_atom_line(std::string_view line, double* position, double& charge) {
  Fields fields(line);
  return fields.pass() && fields.number(position[0]) && fields.number(position[1]) && fields.number(position[2]) &&
         fields.pass() && fields.pass() && fields.pass() && fields.pass() && fields.number(charge);
}

void archive_cell_vectors(const ArchiveCell& cell, std::int32_t periodic_type, CellVectors& vectors,
                          std::int32_t& status) {
  constexpr std::int32_t c_on_z = 1, v_on_z = 112;
  const auto& [a, b, c, alpha, beta, gamma] = cell;
  vectors = {};
  status = 0;
  if (periodic_type == periodic_type::three_dimensional) {
    kva_cry_3dparamtocell_(a, b, c, alpha, beta, gamma, c_on_z, vectors.a, vectors.b, vectors.c, status);
  } else if (periodic_type == periodic_type::two_dimensional) {
    vectors.a = {1, 0, 0};
    kva_cry_2dparamtocell_(c, b, alpha, v_on_z, vectors.b, vectors.c, status);
  }
}

void archive_alignment(const ArchiveCell& cell, std::int32_t periodic_type, Matrix3& alignment, std::int32_t& status) {
  constexpr std::int32_t a_on_x = 4;
  const auto& [a, b, c, alpha, beta, gamma] = cell;
  status = 0;
  Vector3 a_vector{}, b_vector{}, c_vector{};
  if (periodic_type == periodic_type::three_dimensional) {
    kva_cry_3dparamtocell_(a, b, c, alpha, beta, gamma, a_on_x, a_vector, b_vector, c_vector, status);
  }
  // A slab's lengths are its first two parameters there.
  const ArchiveCell parameters =
      periodic_type == periodic_type::two_dimensional ? ArchiveCell{b, c, 0, alpha, 0, 0} : cell;
  if (status == 0) trjcoordalignmat_(a_vector, b_vector, c_vector, parameters, periodic_type, alignment, status);
}

}  // namespace pathstat
