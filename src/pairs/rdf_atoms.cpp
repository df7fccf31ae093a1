#include "pairs/rdf_atoms.h"

#include <algorithm>
#include <array>

#include "coreapi/messages.h"
#include "coreapi/object_counts.h"
#include "coreapi/operations.h"
#include "pairs/pair_histogram.h"
#include "state/rdf_settings.h"
#include "support/identifier_index.h"
#include "support/named_memory.h"
#include "support/searching.h"
#include "support/sorting.h"
#include "support/text_field.h"

namespace pathstat {
namespace {

constexpr std::int32_t failed = 1;
constexpr std::int32_t small_molecule = 64;

/// Atoms on their way into the sets, with their molecules and cells.
class Candidates {
 public:
  Candidates(const RdfRequest& request, std::int32_t model) : request_(request), model_(model) {}

  void list(std::int32_t& status) {
    if (request_.set_type == rdf_between::selected) {
      list_selected(status);
    } else if (request_.components) {
      list_by_molecules(status);
    } else {
      list_all(status);
    }
    if (status != 0) return;
    if (!request_.components) tag_as_one();
    if (status == 0) check_tags(status);
    if (status == 0) find_translations(status);
  }

  std::span<const std::int32_t> atoms() const { return atoms_.span().first(count_); }
  std::span<const std::int32_t> tags() const { return tags_.span().first(count_); }
  std::span<const std::int32_t> translations() const { return translations_.span().first(3 * count_); }
  std::int32_t molecules() const { return molecules_; }

 private:
  void make_room(std::int32_t count, std::int32_t& status) {
    if (!is_object_count(count)) status = failed;
    if (status != 0) return;
    atoms_.release();
    atoms_ = NamedBlock<std::int32_t>("PathStat/gr/iWork1", count, status);
    if (status != 0) return;
    tags_.release();
    tags_ = NamedBlock<std::int32_t>("PathStat/gr/MolIds", count, status);
  }
  void take_count(std::int32_t listed, std::int32_t error, std::int32_t& status) {
    if (error != 0) status = failed;
    count_ = static_cast<std::size_t>(std::clamp<std::int64_t>(listed, 0, std::ssize(atoms_.span())));
  }

  void list_all(std::int32_t& status) {
    make_room(gr_i_.model_atoms, status);
    if (status != 0) return;
    std::int32_t listed = 0, error = 0;
    kvd_mod_atomlist_(model_, with_images, atoms_.span(), listed, error);
    take_count(listed, error, status);
  }

  /// A list may be longer than the model has atoms, where it gives an atom in several cells.
  void list_by_molecules(std::int32_t& status) {
    std::int32_t listed = gr_i_.model_atoms, error = 0;
    for (int tries = 0; tries < 2 && error == 0 && listed > std::ssize(atoms_.span()); ++tries) {
      make_room(listed, status);
      if (status != 0) return;
      kva_con_molecularlist_(model_, atoms_.span(), listed, tags_.span(), molecules_, error);
    }
    take_count(listed, error, status);
  }

  void list_selected(std::int32_t& status) {
    std::int32_t listed = 0, error = 0;
    count_selected(model_, atom_class, listed, error);
    if (error != 0) status = failed;
    make_room(listed, status);
    if (status != 0) return;
    kvd_sel_findselected_(model_, atom_class, atoms_.span(), listed, error);
    take_count(listed, error, status);
    if (status == 0) replace_by_parents(status);
    if (status != 0) return;
    iuniquenosort_(atoms(), atoms_.span(), listed);
    take_count(listed, 0, status);
    if (!request_.components) return;
    if (gr_i_.periodic_type != 0) return tag_by_walk(status);
    kva_con_moleculartag_(atoms(), tags_.span().first(count_), molecules_, error);
    if (error != 0) status = failed;
  }

  void replace_by_parents(std::int32_t& status) {
    if (count_ == 0) return;
    const NamedBlock<std::int32_t> parents("PathStat/gr/iWork2", static_cast<std::int64_t>(count_), status);
    if (status != 0) return;
    std::int32_t error = 0;
    kvd_per_periodicparent_(atoms(), parents.span(), error);
    if (error != 0) status = failed;
    if (status == 0) std::ranges::copy(parents.span(), atoms_.span().begin());
  }

  /// Each atom without a molecule starts the next one, and takes with it all atoms of the list that are of it.
  void tag_by_walk(std::int32_t& status) {
    const IdentifierIndex places(atoms(), status);
    molecules_ = 0;
    std::ranges::fill(tags_.span(), 0);
    for (std::size_t k = 0; k < count_ && status == 0; ++k) {
      if (tags_.span()[k] != 0) continue;
      tags_.span()[k] = ++molecules_;
      const auto parents = molecule_of(atoms()[k], status);
      for (const auto parent : parents) {
        const auto place = places.find(parent);
        if (place >= 0 && tags_.span()[static_cast<std::size_t>(place)] == 0) {
          tags_.span()[static_cast<std::size_t>(place)] = molecules_;
        }
      }
    }
    molecule_.release();
    parents_.release();
  }

  /// The parents of a molecule's atoms. Room grows with the molecules, as the Core fills what it is given.
  std::span<const std::int32_t> molecule_of(std::int32_t atom, std::int32_t& status) {
    std::int32_t listed = 0, error = 0;
    if (molecule_.size() == 0) make_molecule_room(small_molecule, status);
    if (status == 0) kva_con_molecule_(atom, molecule_.span(), listed, error);
    if (status == 0 && error == 0 && listed > std::ssize(molecule_.span())) {
      make_molecule_room(listed, status);
      if (status == 0) kva_con_molecule_(atom, molecule_.span(), listed, error);
    }
    if (error != 0 || listed < 0) status = failed;
    if (status != 0) return {};
    const auto found = std::min(static_cast<std::size_t>(listed), molecule_.size());
    kvd_per_periodicparent_(molecule_.span().first(found), parents_.span().first(found), error);
    if (error != 0) status = failed;
    return parents_.span().first(found);
  }

  void make_molecule_room(std::int32_t count, std::int32_t& status) {
    if (!is_object_count(count)) status = failed;
    if (status != 0) return;
    molecule_.release();
    molecule_ = NamedBlock<std::int32_t>("PathStat/gr/iWork2", count, status);
    if (status != 0) return;
    parents_.release();
    parents_ = NamedBlock<std::int32_t>("PathStat/gr/iWork3", count, status);
  }

  void tag_as_one() {
    std::ranges::fill(tags_.span(), 1);
    molecules_ = 1;
  }

  void check_tags(std::int32_t& status) {
    const bool known = std::ranges::all_of(tags(), [&](std::int32_t tag) { return tag >= 1 && tag <= molecules_; });
    if (!known || molecules_ < 0 || molecules_ > std::max<std::int64_t>(1, std::ssize(atoms()))) status = failed;
  }

  /// Keeps one of each run of equal identifiers, in their order, and how far its cell is from its parent's.
  void find_translations(std::int32_t& status) {
    translations_ = NamedBlock<std::int32_t>("PathStat/gr/TmpTrans", 3 * static_cast<std::int64_t>(count_), status);
    if (status != 0 || gr_i_.periodic_type == 0 || count_ == 0) return;
    keep_unequal(status);
    if (status != 0) return;
    std::int32_t error = 0;
    kvd_per_translation_(atoms(), translations_.span().first(3 * count_), error);
    if (error != 0) status = failed;
    if (status == 0) replace_by_parents(status);
  }

  void keep_unequal(std::int32_t& status) {
    const auto size = static_cast<std::int64_t>(count_);
    const NamedBlock<std::int32_t> identifiers("PathStat/gr/AtIds", size, status);
    if (status != 0) return;
    const NamedBlock<std::int32_t> order("PathStat/gr/iWork2", size, status);
    if (status != 0) return;
    const NamedBlock<std::int32_t> kept("PathStat/gr/iWork3", 2 * size, status);
    if (status != 0) return;
    std::int32_t error = 0;
    kvd_id_(atoms(), identifiers.span(), error);
    if (error != 0) status = failed;
    if (status != 0) return;
    isortidx_(identifiers.span(), order.span());
    std::size_t unequal = 0;
    for (std::size_t k = 0; k < count_; ++k) {
      const auto at = static_cast<std::size_t>(order.span()[k] - 1);
      if (k > 0 && identifiers.span()[at] == identifiers.span()[static_cast<std::size_t>(order.span()[k - 1] - 1)]) {
        continue;
      }
      kept.span()[2 * unequal] = atoms_.span()[at];
      kept.span()[2 * unequal + 1] = tags_.span()[at];
      ++unequal;
    }
    count_ = unequal;
    for (std::size_t k = 0; k < count_; ++k) {
      atoms_.span()[k] = kept.span()[2 * k];
      tags_.span()[k] = kept.span()[2 * k + 1];
    }
  }

  const RdfRequest& request_;
  std::int32_t model_;
  NamedBlock<std::int32_t> atoms_, tags_, translations_;
  NamedBlock<std::int32_t> molecule_, parents_;
  std::size_t count_ = 0;
  std::int32_t molecules_ = 0;
};

bool has_names(std::int32_t set_type) { return set_type == rdf_between::elements || set_type == rdf_between::fftypes; }

std::int32_t set_of(bool is_first, bool is_second) { return is_first ? 1 : is_second ? 2 : 0; }

/// Sets by element. @return true if both names are the same element
bool element_sets(const RdfRequest& request, std::span<const std::int32_t> atoms, std::span<std::int32_t> sets,
                  std::int32_t& status) {
  constexpr std::int32_t no_element = -1;
  std::array<std::int32_t, 2> codes{no_element, no_element};
  const std::array names{request.name1, request.name2};
  for (std::size_t k = 0; k < 2; ++k) {
    std::int32_t code = no_element, error = 0;
    kvd_acl_findsymbol_(names[k], code, error);
    if (error == 0) codes[k] = code;
  }
  std::int32_t error = 0;
  kvd_type_(atoms, sets, error);
  if (error != 0) status = failed;
  for (auto& set : sets) set = set_of(set == codes[0], set == codes[1]);
  return codes[0] == codes[1];
}

/// Sets by force-field type. @return true if both names are the same
bool fftype_sets(const RdfRequest& request, std::span<const std::int32_t> atoms, std::span<std::int32_t> sets,
                 std::int32_t& status) {
  using Label = Text<8>;
  const NamedBlock<Label> labels("PathStat/gr/FFLabels", std::ssize(atoms), status);
  if (status != 0) return false;
  for (std::size_t k = 0; k < atoms.size() && status == 0; ++k) {
    std::int32_t error = 0;
    kvd_atm_fftype_(atoms[k], labels.span()[k], error);
    if (error != 0) status = failed;
    sets[k] = set_of(labels.span()[k] == request.name1, labels.span()[k] == request.name2);
  }
  return same_text(request.name1, request.name2);
}

/// The key that refuses the sets, or nothing. With one set of any kind, pairs are those within it.
std::string_view refusal(const RdfRequest& request, bool like, const RdfRefusals& refusals) {
  const std::int32_t first = gr_i_.set1_count, second = gr_i_.set2_count;
  if (has_names(request.set_type)) {
    if (like) return first == 0 ? refusals.no_like : std::string_view{};
    return first == 0 || second == 0 ? refusals.no_unlike : std::string_view{};
  }
  if (gr_i_.periodic_type == 0) return first < 2 ? refusals.fewer_than_two : std::string_view{};
  return first == 0 ? refusals.none : std::string_view{};
}

/// A translation with the repeat directions in the order of the cell vectors: those of a slab are b and c, that of a
/// chain is c.
std::array<std::int32_t, 3> by_cell_vectors(std::span<const std::int32_t> t) {
  if (gr_i_.periodic_type == 101) return {0, t[0], t[1]};
  if (gr_i_.periodic_type == 102) return {0, 0, t[0]};
  return {t[0], t[1], t[2]};
}

/// Puts the atoms that are in a set into the order of sets and, within them, of molecules.
void order_atoms(const Candidates& from, std::span<const std::int32_t> sets, RdfBlocks& blocks, std::int32_t& status) {
  gr_i_.atom_count = gr_i_.set1_count + gr_i_.set2_count;
  blocks.nxyz.make(2 * std::int64_t{gr_i_.mol_count}, status);
  blocks.at_oids.make(gr_i_.atom_count, status);
  blocks.trans.make(3 * std::int64_t{gr_i_.atom_count}, status);
  if (status != 0) return;
  const NamedBlock<std::int32_t> next("PathStat/gr/iWork2", 2 * std::int64_t{gr_i_.mol_count}, status);
  if (status != 0) return;
  const auto group = [&](std::size_t k) {
    return static_cast<std::size_t>((sets[k] - 1) * gr_i_.mol_count + from.tags()[k] - 1);
  };
  for (std::size_t k = 0; k < sets.size(); ++k) {
    if (sets[k] != 0) ++blocks.nxyz.span()[group(k)];
  }
  std::int32_t sum = 0;
  for (std::size_t g = 0; g < next.size(); ++g) {
    next.span()[g] = sum;
    sum += blocks.nxyz.span()[g];
  }
  for (std::size_t k = 0; k < sets.size(); ++k) {
    if (sets[k] == 0) continue;
    const auto to = static_cast<std::size_t>(next.span()[group(k)]++);
    blocks.at_oids.span()[to] = from.atoms()[k];
    const auto t = by_cell_vectors(from.translations().subspan(3 * k, 3));
    std::ranges::copy(t, blocks.trans.span().begin() + static_cast<std::ptrdiff_t>(3 * to));
  }
}

/// Asks for the periodicity of each molecule by its first listed atom.
void find_networks(RdfBlocks& blocks, std::int32_t& status) {
  constexpr std::array<std::int32_t, 4> types{0, 102, 101, 100};
  blocks.mol_basis.make(9 * std::int64_t{gr_i_.mol_count}, status);
  blocks.mol_period.make(gr_i_.mol_count, status);
  if (status != 0) return;
  const auto molecules = static_cast<std::size_t>(gr_i_.mol_count);
  const auto nxyz = blocks.nxyz.span();
  std::size_t first = 0, second = static_cast<std::size_t>(gr_i_.set1_count);
  for (std::size_t m = 0; m < molecules && status == 0; ++m) {
    const auto in_first = static_cast<std::size_t>(nxyz[m]), in_second = static_cast<std::size_t>(nxyz[molecules + m]);
    if (in_first + in_second > 0) {
      const std::int32_t atom = blocks.at_oids.span()[in_first > 0 ? first : second];
      // One atom is all that is asked for of the list, which is filled up to its room.
      std::int32_t listed = 0, count = 0, periodicity = 0, error = 0;
      kva_con_moleculartagnetwork_(atom, std::span(&listed, 1), count, blocks.mol_basis.span().subspan(9 * m, 9),
                                   periodicity, error);
      if (error != 0 || periodicity < 0 || periodicity > 3) status = failed;
      if (status == 0) blocks.mol_period.span()[m] = types[static_cast<std::size_t>(periodicity)];
    }
    first += in_first;
    second += in_second;
  }
}

}  // namespace

void list_rdf_atoms(const RdfRequest& request, std::int32_t model, const RdfRefusals& refusals, RdfBlocks& blocks,
                    std::int32_t& status) {
  Candidates candidates(request, model);
  candidates.list(status);
  if (status != 0) return;
  const auto atoms = candidates.atoms();
  gr_i_.mol_tag_slots = gr_i_.mol_count = candidates.molecules();
  const NamedBlock<std::int32_t> sets("PathStat/gr/iWork3", std::ssize(atoms), status);
  if (status != 0) return;
  bool like = true;
  if (request.set_type == rdf_between::elements) {
    like = element_sets(request, atoms, sets.span(), status);
  } else if (request.set_type == rdf_between::fftypes) {
    like = fftype_sets(request, atoms, sets.span(), status);
  } else {
    std::ranges::fill(sets.span(), 1);
  }
  if (status != 0) return;
  gr_i_.set1_count = static_cast<std::int32_t>(std::ranges::count(sets.span(), 1));
  gr_i_.set2_count = static_cast<std::int32_t>(std::ranges::count(sets.span(), 2));
  gr_i_.self_count = like ? static_cast<std::int32_t>(atoms.size()) : 0;
  gr_i_.set_mode = like ? pair_sets::within_one : pair_sets::between_two;
  const auto key = refusal(request, like, refusals);
  if (!key.empty() && refusals.name_model) {
    Text<80> name;
    std::int32_t error = 0;
    kvd_mod_name_(model, name, error);
    kvu_msg_args_(name);
  }
  if (!key.empty()) status = refuse(key);
  if (status == 0) order_atoms(candidates, sets.span(), blocks, status);
  if (status == 0) find_networks(blocks, status);
}

}  // namespace pathstat
