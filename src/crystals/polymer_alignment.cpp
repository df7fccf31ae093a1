#include "crystals/polymer_alignment.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <unordered_map>

#include "coreapi/messages.h"
#include "structure/crystal_vectors.h"

namespace pathstat {

using namespace crystal;

namespace {

constexpr std::string_view dummy_type = "XX", head_type = "J1", tail_type = "J2";
constexpr double equal_lengths = 0.001;  // Å

/// The atoms of a model as the alignment needs them.
struct Polymer {
  std::vector<std::int32_t> objects, molecules;
  std::vector<double> xyz;
  std::unordered_map<std::int32_t, std::size_t> places;
  std::unordered_map<std::int32_t, std::vector<std::size_t>> members;  ///< of each molecule the places of its atoms
  std::unordered_map<std::int32_t, std::int32_t> neighbours;  ///< the one atom that an atom is bonded to; 0 for several

  Polymer(std::int32_t model, std::int32_t& status) : objects(atoms_of(model, AtomSelector::with_images, status)) {
    if (status != 0 || objects.empty()) return;
    std::int32_t molecule_count = 0;
    molecules.resize(objects.size()), xyz.resize(3 * objects.size());
    kva_con_moleculartag_(objects, molecules, molecule_count, status);
    if (status == 0) kvd_xyz_(objects, xyz, status);
    if (status != 0) return;
    for (std::size_t k = 0; k < objects.size(); ++k) {
      places.emplace(objects[k], k);
      members[molecules[k]].push_back(k);
    }
    for (const auto& bond : bonds_of_model(model, status)) {
      if (!places.contains(bond.first) || !places.contains(bond.second)) continue;
      add_neighbour(bond.first, bond.second);
      if (bond.first != bond.second) add_neighbour(bond.second, bond.first);
    }
  }

  void add_neighbour(std::int32_t object, std::int32_t other) {
    const auto [known, is_first] = neighbours.try_emplace(object, other);
    if (!is_first) known->second = 0;
  }
  /// @param object  an atom of the model
  Vector3 position(std::int32_t object) const {
    const auto at = std::span(xyz).subspan(3 * places.at(object));
    return {at[0], at[1], at[2]};
  }
  std::int32_t molecule(std::int32_t object) const {
    const auto found = places.find(object);
    return found == places.end() ? 0 : molecules[found->second];
  }
  /// The one atom that an atom is bonded to; 0 with none or several.
  std::int32_t neighbour(std::int32_t object) const {
    const auto found = neighbours.find(object);
    return found == neighbours.end() ? 0 : found->second;
  }
};

/// Turns one molecule, and tells the Core.
void lay_along(const Polymer& polymer, std::int32_t molecule, const Vector3& vector, const Vector3& axis,
               std::int32_t& status) {
  std::vector<std::int32_t> objects;
  std::vector<double> xyz;
  for (const auto k : polymer.members.at(molecule)) {
    objects.push_back(polymer.objects[k]);
    xyz.insert(xyz.end(), polymer.xyz.begin() + std::ptrdiff_t(3 * k), polymer.xyz.begin() + std::ptrdiff_t(3 * k + 3));
  }
  alignpolsegment_(xyz, vector, axis);
  kvd_setxyz_(objects, xyz, status);
}

std::vector<std::int32_t> atoms_of_type(std::int32_t model, const Polymer& polymer, std::string_view type,
                                        std::int32_t& status) {
  std::vector<std::int32_t> list(polymer.objects.size());
  std::int32_t count = 0;
  if (status == 0 && !list.empty()) kva_lnk_findatoms_(model, type, list, count, status);
  list.resize(status == 0 ? std::min(list.size(), static_cast<std::size_t>(std::max(count, 0))) : 0);
  std::erase_if(list, [&](std::int32_t object) { return !polymer.places.contains(object); });
  return list;
}

/// The link atoms of a molecule that holds a dummy.
struct Segment {
  std::int32_t molecule = 0;
  std::vector<std::int32_t> dummies{};
  std::int32_t head = 0, tail = 0;
  bool good = true;
};

struct Segments {
  std::vector<Segment> list;
  std::unordered_map<std::int32_t, std::size_t> places;  ///< in the list, by the number of the molecule
};

void take_links(Segments& segments, const Polymer& polymer, std::span<const std::int32_t> atoms,
                std::int32_t Segment::*end, std::string_view message_key) {
  for (const auto atom : atoms) {
    const auto found = segments.places.find(polymer.molecule(atom));
    if (found == segments.places.end()) continue;
    auto& segment = segments.list[found->second];
    if (segment.*end == 0) {
      segment.*end = atom;
      continue;
    }
    std::array<std::int32_t, 2> objects{segment.*end, atom}, ids{};
    std::int32_t error = 0;
    kvd_id_(objects, ids, error);
    show_message(message_key, ids[0], ids[1]);
    segment.good = false;
  }
}

/// From where the previous segment ends to the end of this one; a zero vector without a dummy at either end.
Vector3 head_to_tail(const Polymer& polymer, const Segment& segment) {
  for (const bool at_head : {true, false}) {
    for (const auto dummy : segment.dummies) {
      if (polymer.neighbour(dummy) != (at_head ? segment.head : segment.tail)) continue;
      Vector3 vector;
      if (at_head) {
        dvecsub_(polymer.position(segment.tail), polymer.position(dummy), vector);
      } else {
        dvecsub_(polymer.position(dummy), polymer.position(segment.head), vector);
      }
      return vector;
    }
  }
  return {};
}

bool align_segment(const Polymer& polymer, const Segment& segment, const Vector3& axis, AlignedPolymer& aligned,
                   std::int32_t& status) {
  if (!segment.good || segment.head == 0 || segment.tail == 0) return false;
  const auto vector = head_to_tail(polymer, segment);
  const double repeat = length(vector);
  if (repeat == 0 || (aligned.length > 0 && std::abs(repeat - aligned.length) > equal_lengths)) return false;
  aligned.length = repeat;
  aligned.links.push_back({segment.tail, segment.head, {0, 0, 1}});
  lay_along(polymer, segment.molecule, vector, axis, status);
  return true;
}

}  // namespace

void alignpolsegment_(std::span<double> xyz, const Vector3& vector, const Vector3& axis) {
  const Vector3 from = unit(vector), to = unit(axis);
  const double cosine = dot(from, to);
  Vector3 turning = cross(from, to);
  double sine = length(turning);
  if (sine < 1e-12) {  // any axis beside the vector turns it round
    turning = cross(from, std::abs(from[0]) < 0.9 ? Vector3{1, 0, 0} : Vector3{0, 1, 0});
    sine = 0;
  }
  turning = unit(turning);
  Vector3 centre{};
  const auto atoms = static_cast<double>(xyz.size() / 3);
  for (std::size_t k = 0; k < xyz.size(); ++k) centre[k % 3] += xyz[k] / atoms;
  for (std::size_t at = 0; at + 3 <= xyz.size(); at += 3) {
    const Vector3 v{xyz[at] - centre[0], xyz[at + 1] - centre[1], xyz[at + 2] - centre[2]};
    const auto around = cross(turning, v);  // Rodrigues' formula
    const double along = dot(turning, v) * (1 - cosine);
    for (std::size_t axis_of = 0; axis_of < 3; ++axis_of) {
      xyz[at + axis_of] = centre[axis_of] + v[axis_of] * cosine + around[axis_of] * sine + turning[axis_of] * along;
    }
  }
}

void align_polymer_(std::int32_t model, std::int32_t head, std::int32_t tail, const Vector3& axis,
                    AlignedPolymer& aligned, std::int32_t& status) {
  const Polymer polymer(model, status);
  if (status != 0) return;
  const auto end = polymer.neighbour(tail);
  if (end == 0 || polymer.neighbour(head) == 0) return void(status = 1);
  Vector3 vector;
  dvecsub_(polymer.position(end), polymer.position(head), vector);
  aligned.length = length(vector);
  lay_along(polymer, polymer.molecule(head), vector, axis, status);
  if (status == 0) kvd_delete_(std::array{head, tail}, status);
}

void align_links_(std::int32_t model, const Vector3& axis, AlignedPolymer& aligned, std::int32_t& status) {
  const Polymer polymer(model, status);
  const auto dummies = atoms_of_type(model, polymer, dummy_type, status);
  const auto heads = atoms_of_type(model, polymer, head_type, status);
  const auto tails = atoms_of_type(model, polymer, tail_type, status);
  if (status != 0) return;
  Segments segments;
  for (const auto dummy : dummies) {
    const auto molecule = polymer.molecule(dummy);
    const auto [place, is_new] = segments.places.try_emplace(molecule, segments.list.size());
    if (is_new) segments.list.push_back({molecule});
    segments.list[place->second].dummies.push_back(dummy);
  }
  take_links(segments, polymer, heads, &Segment::head, "Crystal2J1");
  take_links(segments, polymer, tails, &Segment::tail, "Crystal2J2");
  for (const auto& segment : segments.list) {
    if (align_segment(polymer, segment, axis, aligned, status)) continue;
    status = refuse("CrystalBadPolAlign");
    return;
  }
  if (status == 0 && !dummies.empty()) kvd_delete_(dummies, status);
}

}  // namespace pathstat
