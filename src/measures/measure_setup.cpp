#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <utility>

#include "catalogue/measures.h"
#include "coreapi/operations.h"
#include "measures/measure_labels.h"
#include "measures/measures.h"
#include "structure/measure_geometry.h"
#include "support/named_memory.h"
#include "support/searching.h"

namespace pathstat {
namespace {

constexpr std::int32_t atom_class = 3;
constexpr std::size_t atoms_of_plane = 3;

/// The atoms of all measures of a family: one block for the first atoms, one for the second and so on.
using AtomBlocks = std::array<NamedBlock<std::int32_t>, 6>;

AtomBlocks atom_blocks(const MeasureFamily& family, std::int32_t count, std::int32_t& status) {
  AtomBlocks blocks;
  for (std::size_t k = 0; k < family.atoms && status == 0; ++k) {
    const std::string label = "pathstat/M/" + std::string(family.prefix) + "AtomOids" + std::to_string(k + 1);
    blocks[k] = NamedBlock<std::int32_t>(label, count, status);
  }
  return blocks;
}

/// The three atoms of each plane of one side of the monitors.
void fetch_planes(std::span<const std::int32_t> planes, std::span<NamedBlock<std::int32_t>> blocks,
                  std::int32_t& status) {
  for (std::size_t i = 0; i < planes.size() && status == 0; ++i) {
    std::array<std::int32_t, atoms_of_plane> corners{};
    std::int32_t listed = 0;
    kvd_mon_planeobjects_(planes[i], corners, listed, status);
    if (status == 0 && !std::cmp_equal(listed, atoms_of_plane)) status = 1;
    for (std::size_t k = 0; k < atoms_of_plane; ++k) blocks[k].span()[i] = corners[k];
  }
}

void fetch_plane_atoms(std::span<const std::int32_t> monitors, AtomBlocks& atoms, std::int32_t& status) {
  const auto count = static_cast<std::int64_t>(monitors.size());
  const NamedBlock<std::int32_t> one("pathstat/M/PlanePlaneOids1", count, status);
  if (status != 0) return;
  const NamedBlock<std::int32_t> other("pathstat/M/PlanePlaneOids2", count, status);
  if (status == 0) kvd_mon_planeplaneobjects_(monitors, one.span(), other.span(), status);
  if (status == 0) fetch_planes(one.span(), std::span(atoms).first(atoms_of_plane), status);
  if (status == 0) fetch_planes(other.span(), std::span(atoms).last(atoms_of_plane), status);
}

/// Asks the Core for the atoms of all monitors of a family.
void fetch_atoms(std::int32_t id, std::span<const std::int32_t> monitors, AtomBlocks& atoms, std::int32_t& status) {
  auto [p1, p2, p3, p4, p5, p6] = [&] {
    std::array<std::span<std::int32_t>, 6> spans;
    std::ranges::transform(atoms, spans.begin(), [](const auto& block) { return block.span(); });
    return spans;
  }();
  switch (id) {
    case 502:
      return kvd_mon_angleobjects_(monitors, p1, p2, p3, status), void();
    case 503:
      return kvd_mon_torsionobjects_(monitors, p1, p2, p3, p4, status), void();
    case 504:
      return fetch_plane_atoms(monitors, atoms, status);
    case 505:
      kvd_mon_inversiontype_(monitors, inversion_conventions(), status);
      if (status == 0) kvd_mon_inversionobjects_(monitors, p1, p2, p3, p4, status);
      return;
    default:
      return kvd_mon_distanceobjects_(monitors, p1, p2, status), void();
  }
}

/// Leaves the monitors with the Core, for measureschanged_. The Core keeps its own answer if this fails: then the next
/// question finds them changed.
void remember_monitors(const MeasureFamily& family, std::span<const std::int32_t> monitors) {
  std::int32_t error = 0;
  const std::int32_t application = monitor_memory(error);
  if (error == 0) kvd_ud_addobjectarray_(application, family.data_key, monitors, error);
}

void write_labels(const MeasureFamily& family, std::span<const NamedBlock<std::int32_t>> atoms, std::int32_t& status) {
  const auto labels = measure_labels(family);
  const std::size_t count = atoms.front().size();
  const NamedBlock<std::int32_t> numbers("pathstat/M/AtomIds", static_cast<std::int64_t>(family.atoms * count), status);
  for (std::size_t k = 0; k < family.atoms && status == 0; ++k) {
    kvd_id_(std::span<const std::int32_t>(atoms[k].span()), numbers.span().subspan(k * count, count), status);
  }
  if (status != 0) return;
  std::array<std::int32_t, 6> of_one{};
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t k = 0; k < family.atoms; ++k) of_one[k] = numbers.span()[k * count + i];
    const auto prefix = family.has_conventions() ? inversion_prefix(inversion_conventions()[i]) : std::string_view{};
    labels[i] = label_of_atoms(prefix, std::span(of_one).first(family.atoms));
  }
  number_equal_labels(labels.first(count));
}

/// What a set-up does once its blocks are made.
void fill(const MeasureFamily& family, std::int32_t model, std::int32_t periodicity, std::int32_t count,
          std::span<const std::int32_t> atoms, std::int32_t& status) {
  const NamedBlock<std::int32_t> flags("pathstat/M/IsA", count, status);
  if (status != 0) return;
  const NamedBlock<std::int32_t> work("pathstat/M/TmpOids", count, status);
  if (status != 0) return;
  AtomBlocks blocks = atom_blocks(family, count, status);
  if (status == 0) getmeasureoids_(model, family.monitor_type, work.span(), status);
  if (status != 0) return;
  remember_monitors(family, work.span());
  fetch_atoms(family.id, work.span(), blocks, status);
  const auto positions = std::span(blocks).first(family.atoms);
  for (const auto& block : positions) {
    if (status == 0 && !allobjsareatoms_(block.span(), flags.span(), status)) status = status != 0 ? status : 1;
  }
  if (status == 0) write_labels(family, positions, status);
  if (status == 0) trjmeasures_i_.*family.count = count;
  for (std::size_t k = 0; k < family.atoms && status == 0; ++k) {
    gettransandparentind_(periodicity, blocks[k].span(), atoms, work.span(), measure_atoms(family, k),
                          measure_images(family, k), status);
  }
}

void set_up(std::int32_t id, std::int32_t model, std::int32_t periodicity, std::int32_t count,
            std::span<const std::int32_t> atoms, std::int32_t& status) {
  const MeasureFamily& family = measure_family(id);
  free_measure_blocks(family);
  status = count < 1 ? 1 : 0;
  if (status == 0) make_measure_blocks(family, count, status);
  if (status == 0) fill(family, model, periodicity, count, atoms, status);
}

}  // namespace

bool allobjsareatoms_(std::span<const std::int32_t> objects, std::span<std::int32_t> flags, std::int32_t& status) {
  kvd_isa_(objects, atom_class, flags, status);
  return status == 0 && std::ranges::all_of(flags.first(objects.size()), [](std::int32_t flag) { return flag != 0; });
}

void gettransandparentind_(std::int32_t periodicity, std::span<const std::int32_t> objects,
                           std::span<const std::int32_t> atoms, std::span<std::int32_t> work,
                           std::span<std::int32_t> indices, std::span<std::int32_t> images, std::int32_t& status) {
  status = 0;
  const auto parents = work.first(objects.size());
  std::ranges::fill(images, 0);
  if (periodicity != 0) kvd_per_translation_(objects, images.first(3 * objects.size()), status);
  if (status == 0) kvd_per_periodicparent_(objects, parents, status);
  if (status != 0) return;
  // The repeat vectors of a layer are b and c, that of a chain is c.
  const std::int32_t shift = periodicity == 1 || periodicity == 2 ? 3 - periodicity : 0;
  for (std::size_t at = 0; shift != 0 && at < images.size(); at += 3) {
    const auto image = images.subspan(at, 3);
    std::shift_right(image.begin(), image.end(), shift);
    std::fill_n(image.begin(), shift, 0);
  }
  std::int32_t failures = 0;
  std::ranges::fill(indices, 0);
  searchnosort_(atoms, parents, indices, failures, status);
  if (failures > 0 || atoms.empty()) status = 1;
}

void setupdistmeasures_(std::int32_t model, std::int32_t periodicity, std::int32_t count,
                        std::span<const std::int32_t> atoms, std::int32_t& status) {
  set_up(501, model, periodicity, count, atoms, status);
}
void setupangmeasures_(std::int32_t model, std::int32_t periodicity, std::int32_t count,
                       std::span<const std::int32_t> atoms, std::int32_t& status) {
  set_up(502, model, periodicity, count, atoms, status);
}
void setuptormeasures_(std::int32_t model, std::int32_t periodicity, std::int32_t count,
                       std::span<const std::int32_t> atoms, std::int32_t& status) {
  set_up(503, model, periodicity, count, atoms, status);
}
void setupplanemeasures_(std::int32_t model, std::int32_t periodicity, std::int32_t count,
                         std::span<const std::int32_t> atoms, std::int32_t& status) {
  set_up(504, model, periodicity, count, atoms, status);
}
void setupinvmeasures_(std::int32_t model, std::int32_t periodicity, std::int32_t count,
                       std::span<const std::int32_t> atoms, std::int32_t& status) {
  set_up(505, model, periodicity, count, atoms, status);
}

void setupmeasures_(std::int32_t model, std::int32_t id, std::int32_t count, std::int32_t& width,
                    std::int32_t periodicity, std::span<const std::int32_t> atoms, std::int32_t& status) {
  width = 0;
  status = is_measure(id) ? 0 : 1;
  if (status == 0) set_up(id, model, periodicity, count, atoms, status);
  if (status == 0 && count > INT32_MAX / measure_family(id).values) status = 1;
  if (status == 0) width = count * measure_family(id).values;
}

void cleanupmeasures_(std::int32_t id, std::int32_t& status) {
  status = is_measure(id) ? 0 : 1;
  if (status == 0) free_measure_blocks(measure_family(id));
}

bool measure_label(std::int32_t id, std::int32_t number, TextField label) {
  if (!is_measure(id) || number < 1) return false;
  const auto labels = measure_labels(measure_family(id));
  if (std::cmp_greater(number, labels.size())) return false;
  label.set(labels[static_cast<std::size_t>(number - 1)]);
  return true;
}

}  // namespace pathstat
