#include <algorithm>
#include <array>
#include <cmath>

#include "state/analysis_settings.h"
#include "structure/crystal_maths.h"
#include "support/named_memory.h"
#include "support/plain_array.h"
#include "trajectory/archive_adapter.h"
#include "trajectory/value_delivery.h"

namespace pathstat {

namespace {

using namespace trajectory_status;

std::int32_t open_status() { return arctrj_l_.arc_open ? 0 : no_such_key; }

std::size_t stored_atoms() { return static_cast<std::size_t>(arctrj_i_.arc_atoms); }
std::size_t all_atoms() { return static_cast<std::size_t>(arctrj_i_.arc_total_atoms); }

using Out = std::span<double>;

void get_energy(Out out, std::int32_t& count, std::int32_t& status) {
  deliver_one(arctrj_d_.arc_energy, out, count, status);
}

void get_volume(Out out, std::int32_t& count, std::int32_t& status) {
  const auto& [a, b, c, alpha, beta, gamma] = arctrj_d_.arc_cell;
  double volume = 0;
  kva_cry_3dparamtocellvolume_(a, b, c, alpha, beta, gamma, volume, status);
  if (status == 0) deliver_one(volume, out, count, status);
}

void get_area(Out out, std::int32_t& count, std::int32_t& status) {
  const auto& [a, b, c, alpha, beta, gamma] = arctrj_d_.arc_cell;
  double area = 0;
  kva_cry_2dparamtocellarea_(b, c, alpha, area, status);
  if (status == 0) deliver_one(area, out, count, status);
}

void get_six_numbers(Out out, std::int32_t& count, std::int32_t& status) {
  CellVectors cell;
  archive_cell_vectors(arctrj_d_.arc_cell, arctrj_i_.arc_period_type, cell, status);
  const auto& [a, b, c] = cell;
  const std::array numbers{a[0], b[1], c[2], b[2], a[2], a[1]};
  if (status == 0) deliver<double>(numbers, out, count, status);
}

void get_nine_numbers(Out out, std::int32_t& count, std::int32_t& status) {
  CellVectors cell;
  count = 9;
  if (out.size() < 9) return void(status = too_small);
  archive_cell_vectors(arctrj_d_.arc_cell, arctrj_i_.arc_period_type, cell, status);
  if (status == 0) deliver<double>(cell.matrix(), out, count, status);
}

void get_parameters(Out out, std::int32_t& count, std::int32_t& status) {
  ArchiveCell cell = arctrj_d_.arc_cell;
  if (arctrj_i_.arc_period_type == periodic_type::two_dimensional) std::swap(cell[1], cell[2]);
  deliver<double>(cell, out, count, status);
}

void get_all_positions(Out out, std::int32_t& count, std::int32_t& status) {
  place_archive_images(status);
  if (status == 0)
    deliver<double>(std::span(pointer_at<double>(arctrj_p_.arc_xyz), 3 * all_atoms()), out, count, status);
}

void get_stored_positions(Out out, std::int32_t& count, std::int32_t& status) {
  deliver<double>(std::span(pointer_at<double>(arctrj_p_.arc_xyz), 3 * stored_atoms()), out, count, status);
}

void get_stored_charges(Out out, std::int32_t& count, std::int32_t& status) {
  deliver<double>(std::span(pointer_at<double>(arctrj_p_.arc_charges), stored_atoms()), out, count, status);
}

void get_all_charges(Out out, std::int32_t& count, std::int32_t& status) {
  const std::size_t atoms = all_atoms();
  const auto* parents = pointer_at<std::int32_t>(arctrj_p_.arc_parents);
  const auto* charges = pointer_at<double>(arctrj_p_.arc_charges);
  count = arctrj_i_.arc_total_atoms;
  for (std::size_t k = 0; k < std::min(atoms, out.size()); ++k) out[k] = charges[parents[k] - 1];
  if (atoms > out.size()) status = too_small;
}

/// What a key needs before it has a value.
enum Need : std::uint8_t { nothing = 0, frame = 1, attach = 2, cell = 4, volume = 8, area = 16 };

struct FloatingKey {
  std::int32_t key;
  int needs;
  void (*get)(Out out, std::int32_t& count, std::int32_t& status);
};
constexpr std::array<FloatingKey, 13> floating_keys{{
    {200160, frame | attach, get_all_positions},
    {200161, frame | attach, get_all_positions},
    {200169, frame, get_stored_positions},
    {200170, frame, get_stored_positions},
    {400049, nothing, get_energy},
    {400058, frame | volume, get_volume},
    {400064, frame | volume, get_volume},
    {400078, frame | cell, get_six_numbers},
    {400100, frame | attach, get_all_charges},
    {400105, frame | cell, get_nine_numbers},
    {400149, frame | cell, get_parameters},
    {400151, frame | area, get_area},
    {400173, frame, get_stored_charges},
}};

std::int32_t status_of(int needs) {
  const std::int32_t type = arctrj_i_.arc_period_type;
  if ((needs & attach) != 0 && !arctrj_l_.arc_attached) return not_attached;
  if ((needs & cell) != 0 && type == periodic_type::none) return not_periodic;
  if ((needs & volume) != 0 && type != periodic_type::three_dimensional) return not_three_dimensional;
  if ((needs & area) != 0 && type != periodic_type::two_dimensional) return not_two_dimensional;
  if ((needs & frame) != 0 && trj_i_.trj_current_frame == 0) return no_such_key;
  return 0;
}

/// Integers that the reader knows, each the only one of its key.
struct SingleInteger {
  std::int32_t key;
  bool needs_attach;
  std::int32_t (*value)();
};
constexpr std::array<SingleInteger, 16> single_integers{{
    {200000, false, [] { return 5; }},
    {200001, false, [] { return 1; }},
    {200004, false, [] { return arctrj_i_.arc_dims; }},
    {200019, false, [] { return trj_i_.trj_current_frame; }},
    {200083, true, [] { return arctrj_i_.arc_total_atoms; }},
    {200135, true, [] { return arctrj_i_.arc_operators; }},
    {200140, false, [] { return arctrj_i_.arc_ensemble; }},
    {200141, false, [] { return arctrj_i_.arc_thermostat; }},
    {200142, false, [] { return arctrj_i_.arc_period_type; }},
    {200153, false, [] { return reader::archive; }},
    {200155, true, [] { return arctrj_i_.arc_total_atoms; }},
    {200156, true, [] { return arctrj_i_.arc_total_atoms; }},
    {200157, false, [] { return 0; }},
    {200164, false, [] { return arctrj_i_.arc_atoms; }},
    {200165, false, [] { return arctrj_i_.arc_atoms; }},
    {200166, false, [] { return 0; }},
}};

/// Identifiers: of all atoms, which are all movable, or of those that stand in the file.
struct IdentifierKey {
  std::int32_t key;
  std::size_t (*atoms)();
};
constexpr std::array<IdentifierKey, 4> identifier_keys{
    {{200152, all_atoms}, {200159, all_atoms}, {200167, stored_atoms}, {200168, stored_atoms}}};

struct LogicalKey {
  std::int32_t key;
  bool (*value)();
};
constexpr std::array<LogicalKey, 3> logical_keys{{
    {100005, [] { return bool{arctrj_l_.arc_periodic}; }},
    {100008, [] { return bool{arctrj_l_.arc_periodic}; }},
    {100054, [] { return false; }},
}};

}  // namespace

void getarcdatadble_(std::int32_t, std::int32_t key, std::span<double> values, std::int32_t& count,
                     std::int32_t& status) {
  count = status = 0;
  if (values.empty()) return;
  status = open_status();
  const auto row = std::ranges::find(floating_keys, key, &FloatingKey::key);
  if (row == floating_keys.end()) status = no_such_key;
  if (status == 0) status = status_of(row->needs);
  if (status == 0) row->get(values, count, status);
}

void getarcdatareal_(std::int32_t handle, std::int32_t key, std::span<float> values, std::int32_t& count,
                     std::int32_t& status) {
  const PlainArray<double> doubles(std::ssize(values));
  if (!doubles.allocated()) return void(status = read_error);
  getarcdatadble_(handle, key, doubles.span(), count, status);
  if (status != 0 && status != too_small) return;
  const std::size_t given = std::min(values.size(), static_cast<std::size_t>(count));
  std::transform(doubles.span().begin(), doubles.span().begin() + static_cast<std::ptrdiff_t>(given), values.begin(),
                 [](double value) { return static_cast<float>(value); });
}

void getarcdataint_(std::int32_t, std::int32_t key, std::span<std::int32_t> values, std::int32_t& count,
                    std::int32_t& status) {
  count = status = 0;
  if (values.empty()) return;
  status = open_status();
  if (status != 0) return;
  const auto single = std::ranges::find(single_integers, key, &SingleInteger::key);
  const auto list = std::ranges::find(identifier_keys, key, &IdentifierKey::key);
  const bool is_single = single != single_integers.end(), is_list = list != identifier_keys.end();
  if (!is_single && !is_list) {
    status = no_such_key;
  } else if (!arctrj_l_.arc_attached && (is_list || single->needs_attach)) {
    status = not_attached;
  } else if (is_single) {
    const std::int32_t value = single->value();
    deliver_one(value, values, count, status);
  } else {
    const std::span<const std::int32_t> ids(pointer_at<std::int32_t>(arctrj_p_.arc_ids), list->atoms());
    deliver(ids, values, count, status);
  }
}

void getarcdatalogical_(std::int32_t, std::int32_t key, std::span<Logical> values, std::int32_t& count,
                        std::int32_t& status) {
  count = status = 0;
  if (values.empty()) return;
  status = open_status();
  const auto row = std::ranges::find(logical_keys, key, &LogicalKey::key);
  if (row == logical_keys.end()) status = no_such_key;
  if (status != 0) return;
  const Logical value = row->value();
  deliver_one(value, values, count, status);
}

void getarcdatachar_(std::int32_t, std::int32_t, std::span<char>, std::int32_t, std::int32_t& count,
                     std::int32_t& status) {
  count = 0;
  status = no_such_key;
}

}  // namespace pathstat
