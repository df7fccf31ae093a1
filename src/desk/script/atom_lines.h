#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "desk/model/data_model.h"
#include "desk/script/script.h"

namespace pathstat::desk {

/// What a line fails with that needs a model.
constexpr auto* no_model = "there is no model; TRAJECTORY brings in the one that lies beside its file";

/// The lines that choose atoms and measure what is between them. Each returns what went wrong, or nothing.
class AtomLines {
 public:
  AtomLines(DataModel& model, std::function<void(const std::string& text)> tell,
            std::function<void(std::string text)> warn);

  std::string select(const ScriptLine& line);
  std::string name_group(const ScriptLine& line);
  std::string measure(const std::vector<std::string>& words);
  std::string list_measures();
  /// @param which  its number, or "all"
  std::string remove_measures(const std::string& which);

  const AtomGroups& groups() const { return groups_; }

 private:
  void tell_notes(std::vector<std::string> notes);
  std::string why_no_measure(const std::vector<std::string>& words, const std::vector<std::string>& replaced) const;
  void tell_measure(const MolecularModel& model, std::size_t place);

  DataModel& model_;
  const std::function<void(const std::string& text)> tell_;
  const std::function<void(std::string text)> warn_;
  AtomGroups groups_;  ///< that lines have named
};

}  // namespace pathstat::desk
