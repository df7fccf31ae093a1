#include "building/structure_report.h"

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "building/model_draft.h"
#include "coreapi/messages.h"
#include "crystals/model_contents.h"
#include "state/analysis_settings.h"
#include "structure/crystal_cell.h"
#include "structure/elements.h"
#include "support/text_field.h"

namespace pathstat {
namespace {

constexpr double grams_per_cubic_centimetre = 1.66053906660;  ///< in atomic mass units per Å³ (CODATA 2018)

struct Contents {
  std::vector<std::int32_t> atoms, elements, parents;
  double mass = 0.0;  ///< of a cell, atomic mass units
  std::int32_t bonds = 0;
};

Contents contents_of(std::int32_t model, std::int32_t& status) {
  Contents found;
  found.atoms = atoms_of(model, AtomSelector::with_images, status);
  const auto count = found.atoms.size();
  found.elements.resize(count), found.parents.resize(count);
  std::vector<double> masses(count), occupancies(count);
  std::vector<std::int32_t> operators(count), shifts(3 * count);
  if (status == 0 && count > 0) kvd_type_(found.atoms, found.elements, status);
  if (status == 0 && count > 0) kvd_atm_dmass_(found.atoms, masses, status);
  if (status == 0 && count > 0) kvd_atm_occupancy_(found.atoms, occupancies, status);
  if (status == 0 && count > 0) kvd_sym_parents_(found.atoms, found.parents, operators, shifts, status);
  if (status == 0) kvd_mod_numbonds_(model, found.bonds, status);
  for (std::size_t k = 0; k < count; ++k) found.mass += masses[k] * occupancies[k];
  return found;
}

/// "4 Na, 4 Cl": the atoms of each site in the order of the sites; "1000 sites" where a line has no room for them.
std::string sites_text(const Contents& contents) {
  constexpr std::size_t most = 16;
  std::map<std::int32_t, std::int32_t> multiplicity;
  for (const auto parent : contents.parents) ++multiplicity[parent];
  if (multiplicity.size() > most) return std::to_string(multiplicity.size()) + " sites";
  std::string text;
  for (std::size_t k = 0; k < contents.atoms.size(); ++k) {
    if (contents.parents[k] != contents.atoms[k]) continue;
    if (!text.empty()) text += ", ";
    text += std::to_string(multiplicity[contents.atoms[k]]) + " ";
    text += symbol_of_element(contents.elements[k]);
  }
  return text;
}

}  // namespace

void report_structure(std::int32_t model) {
  std::int32_t status = 0;
  const auto contents = contents_of(model, status);
  if (status != 0) return;
  const auto name = name_of_model(model);
  const auto atoms = static_cast<std::int32_t>(contents.atoms.size());
  if (type_of_model(model) == periodic_type::two_dimensional) {
    Vector3 u{}, v{};
    double area = 0.0;
    kvd_mod_2dcellvector_(model, u, v, status);
    if (status == 0) kva_cry_2duvtocellarea_(u, v, area, status);
    if (status == 0) show_message("STRUCTURE_SLAB", std::string_view(name), atoms, contents.bonds, area);
    return;
  }
  Vector3 a{}, b{}, c{};
  Text<80> group;
  double volume = 0.0;
  kvd_mod_3dcellvector_(model, a, b, c, status);
  if (status == 0) kva_cry_3dabctocellvolume_(a, b, c, volume, status);
  if (status == 0) kvd_sgr_name_(group_of_model(model), group, status);
  if (status != 0) return;
  show_message("STRUCTURE_CRYSTAL", std::string_view(name), group.view(), atoms, contents.bonds,
               std::string_view(sites_text(contents)));
  show_message("STRUCTURE_MASS_DENSITY", std::abs(volume),
               contents.mass * grams_per_cubic_centimetre / std::abs(volume));
}

}  // namespace pathstat
