#include "trajectory/frame_report.h"

#include "state/analysis_settings.h"
#include "support/number_format.h"

namespace pathstat {
namespace {

std::string fixed(double value) { return formatted(value, "(F12.4)"); }
std::string whole(std::int32_t value) { return formatted(value, "(I12)"); }

constexpr std::size_t left_margin = 7;
constexpr std::size_t gap = 8;

/// A line of one labelled value, or of two side by side.
std::string line(std::string_view label, const std::string& value, std::string_view second_label = {},
                 const std::string& second = {}) {
  std::string text(left_margin, ' ');
  text.append(label).append(value);
  if (!second_label.empty()) text.append(gap, ' ').append(second_label).append(second);
  return text += '\n';
}

std::string indented(std::size_t blanks, std::string_view text) { return std::string(blanks, ' ').append(text); }

}  // namespace

std::string frame_report_text(std::span<const Text<80>> comments, const FrameReport& report) {
  constexpr std::size_t comment_width = 60;
  std::string text;
  for (const auto& comment : comments) {
    text.append("REMARK : ").append(comment.full().substr(0, comment_width)).append("\n");
  }
  text += indented(28, "Frame Information \n");
  text += line("Frame No     :", whole(report.frame), "Frame time      :", fixed(report.time));
  text += line("No of atoms  :", whole(report.atoms), "Time step       :", fixed(report.time_step));
  text += line("Total Energy :", fixed(report.total_energy), "Potential Energy:", fixed(report.potential_energy));
  if (report.periodic_type == periodic_type::two_dimensional) {
    text += line("Area         :", fixed(report.cell_size), "Pressure        :", fixed(report.pressure));
  }
  if (report.periodic_type == periodic_type::three_dimensional) {
    text += line("Volume       :", fixed(report.cell_size), "Pressure        :", fixed(report.pressure));
  }
  text += indented(28, "Energy Decomposition     \n");
  text += indented(15, "Internal") + indented(28, "Nonbond\n");
  text += line("Bonds        :", fixed(report.bonds), "van der Waals  :", fixed(report.van_der_waals));
  text += line("Angles       :", fixed(report.angles), "Electrostatic  :", fixed(report.electrostatic));
  text += line("Torsions     :", fixed(report.torsions), "Hbonds         :", fixed(report.hydrogen_bonds));
  text += line("Inversions   :", fixed(report.inversions), "Restraints     :", fixed(report.restraints));
  text += line("Cross terms  :", fixed(report.cross_terms), "Three body     :", fixed(report.three_body));
  text += line("User energy  :", fixed(report.user));
  return text;
}

}  // namespace pathstat
