#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "desk/link/core_session.h"

namespace pathstat::desk {

/// Where the present state of a run can be asked for.
struct StateSources {
  std::function<WordAnswer(const std::string& word)> answer;    ///< values and ranges of a word; empty if unknown
  std::function<std::string(const std::string& key)> returned;  ///< what GET returns for a key; empty if nothing
  std::function<double()> cell_width = [] { return 0.0; };      ///< smallest width of the model's cell, Å; 0: none
  std::function<std::size_t()> selected_atoms = [] { return std::size_t{0}; };
  std::function<std::size_t()> model_atoms = [] { return std::size_t{0}; };  ///< of the current model; 0: none
  std::function<bool()> charged = [] { return true; };  ///< some atom of the current model has a charge
};

/// The present settings and limits of the process, asked for when they are first wanted.
class Present {
 public:
  explicit Present(const StateSources& sources) : sources_(sources) {}

  const WordAnswer& answer(const std::string& word);
  /// The first value of a word, without its padding.
  std::string text(const std::string& word);
  /// The first value of a word as a number; none if it is not one.
  std::optional<double> number(const std::string& word);

  bool loaded() { return !returned("TRAJECTORY_FILE_NAME").empty(); }
  bool has_times() { return number("INCREMENT_TIME").has_value(); }
  std::optional<double> frames_in_file();
  /// Frames of the range; none where the words are not answered.
  std::optional<double> frames_in_range();
  /// Time between two frames of the file, ps.
  std::optional<double> frame_time();
  /// The time of a frame of the file, ps.
  std::optional<double> time_of(std::optional<double> frame);
  std::optional<double> cell_width();
  std::size_t selected_atoms() const { return sources_.selected_atoms(); }
  std::size_t model_atoms() const { return sources_.model_atoms(); }
  bool charged() const { return sources_.charged(); }

 private:
  std::string returned(const std::string& key);

  const StateSources& sources_;
  std::map<std::string, WordAnswer> answers_;
  std::map<std::string, std::string> returned_;
};

/// A whole text as a number; none if it is not one, or not a finite one.
std::optional<double> number_in(std::string_view text);

/// The text without blanks at its ends.
std::string without_blanks(std::string_view text);

}  // namespace pathstat::desk
