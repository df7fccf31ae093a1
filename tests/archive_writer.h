#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <numbers>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "desk/model/model_import.h"
#include "structure/elements.h"
#include "trajectory/archive_lines.h"
#include "trajectory/binary_trajectory.h"

namespace pathstat {

/// A text made as printf makes it.
template <class... Values>
std::string printed(const char* format, Values... values) {
  std::array<char, 200> text{};
  return {text.data(), static_cast<std::size_t>(std::snprintf(text.data(), text.size(), format, values...))};
}

/// Writes an archive or, with one frame, a coordinate file. Molecules, told apart by their residue numbers, end with
/// an END each.
class ArchiveWriter {
 public:
  ArchiveWriter(const std::string& path, ArchiveForm form, std::int32_t directions, const desk::MolecularModel& model)
      : file_(path, std::ios::binary), form_(form), directions_(directions), model_(model) {
    line("!archive of " + model.name);
    if (directions > 0) line(directions == 2 ? "PBC=2" : "PBC=ON");
  }

  /// @param cell  a, b, c, alpha, beta, gamma, or b, c, alpha; degrees
  /// @param xyz   as they lie in the file
  void frame(double energy, std::span<const double> cell, std::span<const double> xyz) {
    line(printed("%-64s%16.6f", "a frame", energy));
    line("!DATE");
    std::string text = "PBC";
    for (const double number : cell) text += printed("%12.6f", number);
    if (directions_ > 0) line(text);
    for (std::size_t k = 0; k < model_.atoms(); ++k) {
      const bool other = k > 0 && model_.residue_ids[k] != model_.residue_ids[k - 1];
      if (other) line("end");
      atom(k, xyz.subspan(3 * k));
    }
    line("end");
    line("end");
  }

 private:
  void atom(std::size_t k, std::span<const double> x) {
    const auto word = [k](const desk::WordColumn& column) {
      return column[k].empty() ? std::string("X") : std::string(column[k]);
    };
    const std::string element(elements()[model_.elements[k]].symbol);
    line(printed("%-5.5s%15.9f%15.9f%15.9f %-4.4s %-7d%-7.6s%-2s %6.3f", word(model_.names).c_str(), x[0], x[1], x[2],
                 word(model_.residues).c_str(), model_.residue_ids[k], word(model_.ff_types).c_str(), element.c_str(),
                 model_.charges[k]));
  }
  void line(std::string text) {
    if (form_ == ArchiveForm::text) {
      text += '\n';
    } else {
      text.resize(ArchiveLines::width, ' ');
    }
    file_ << text;
  }

  std::ofstream file_;
  ArchiveForm form_;
  std::int32_t directions_;
  const desk::MolecularModel& model_;
};

/// Writes frames of a binary trajectory as an archive: every `step`-th from the first on, `most` at most. Its cell is
/// to be rectangular or absent.
inline void write_archive_of_run(const std::string& run, const std::string& model_file, const std::string& path,
                                 ArchiveForm form, std::int32_t step, std::int32_t most) {
  const auto imported = desk::read_model_file(model_file);
  if (imported.models.size() != 1) throw std::runtime_error(imported.problem);
  const auto& model = imported.models.front();
  const std::int32_t directions = model.periodic_type == desk::periodic_3d ? 3 : 0;
  ArchiveWriter writer(path, form, directions, model);
  std::int32_t handle = 0, status = 0, count = 0;
  kvA_TRJ_Open(run, binary_mode::read, handle, status);
  std::vector<double> xyz(3 * model.atoms());
  std::array<double, 6> cell{};
  for (std::int32_t k = 0; k < most; ++k) {
    kvA_TRJ_ReadFrame(handle, 1 + k * step, status);
    if (status != 0) break;
    double energy = 0;
    kvA_TRJ_ValueDouble(handle, 1032, {&energy, 1}, count, status);
    kvA_TRJ_ValueDouble(handle, 1071, xyz, count, status);
    if (directions > 0) kvA_TRJ_ValueDouble(handle, 1058, cell, count, status);
    writer.frame(energy, std::array{cell[0], cell[1], cell[2], 90.0, 90.0, 90.0}, xyz);
  }
  kvA_TRJ_Close(handle, status);
}

}  // namespace pathstat
