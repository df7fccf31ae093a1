#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "desk/model/data_model.h"

namespace pathstat::desk {

/// One flag per atom of a model, in the order of its columns: 1 for an atom that is chosen.
using AtomFlags = std::vector<std::uint8_t>;

/// What a selection chooses from.
struct SelectionScope {
  const MolecularModel& model;
  std::function<const Connectivity&()> molecules;
  std::span<const std::uint8_t> selected;  ///< what "selected" means; empty if no atom is
  std::vector<std::string> notes;          ///< takes sentences about words that fit no atom
};

/// A selection that has been read. It chooses anew wherever it is used, by the model and the coordinates of then.
struct Selection {
  std::function<AtomFlags(SelectionScope& scope)> choose;
  int depth = 1;          ///< of parts within parts
  std::size_t parts = 1;  ///< that choosing goes through
};
using SelectionPointer = std::shared_ptr<const Selection>;

/// Selections that a user has given names.
using AtomGroups = std::map<std::string, SelectionPointer, std::less<>>;

std::vector<std::string> group_names(const AtomGroups& groups);

/// Why a name can't be one of a group; empty for one that can.
std::string why_no_group_name(std::string_view name);

/// The words that a selection may begin with, without the names of groups.
std::vector<std::string> selection_words();

/// A selection, or what is wrong with its words: a sentence, and below it the words with a mark under the wrong one.
struct ReadSelection {
  SelectionPointer selection;
  std::string problem;
};

/// Reads a selection, such as element O and not within 3 of (name NA or water), where water is a group.
ReadSelection read_selection(std::string_view text, const AtomGroups& groups = {});

/// What a selection chooses.
struct ChosenAtoms {
  std::vector<AtomFlags> flags;    ///< model by model
  std::size_t count = 0;           ///< in all
  std::vector<std::string> notes;  ///< sentences about words that fit no atom of any model
};
ChosenAtoms chosen_atoms(DataModel& data, std::span<ModelObject* const> models, const Selection& selection);

/// Selects atoms of all models instead of those selected now. @return sentences about words that fit no atom
std::vector<std::string> select_atoms(DataModel& data, const Selection& selection);

/// The words with the names of groups replaced by the numbers of their atoms in a model, for lines that name single
/// atoms.
struct ReplacedGroups {
  std::vector<std::string> words;
  std::string problem;
};
ReplacedGroups with_groups_replaced(DataModel& data, ModelObject& model, std::span<const std::string> words,
                                    const AtomGroups& groups);

}  // namespace pathstat::desk
