#include "desk/advice/word_groups.h"

#include <array>

#include "desk/script/script.h"

namespace pathstat::desk {
namespace {

struct GroupRow {
  std::string_view name;
  std::string_view about;
  std::string_view words;  ///< with blanks between; one that ends with * means all words that begin so
};

// A word belongs to the group that names it with the most letters.
constexpr std::array group_rows{
    GroupRow{"Trajectory and models", "file load open input source coordinates restart value",
             "TRAJECTORY ANALYSIS_INPUT_SOURCE SELECTED_TRAJECTORY GET RESET STOP"},
    GroupRow{"The range of frames that analyses work on", "time step stride equilibration skip part",
             "FIRST_FRAME* LAST_FRAME* INCREMENT* USE_ALL_FRAMES"},
    GroupRow{"Frames on the model", "show play movie animate extract snapshot energies of a frame",
             "CURRENT_FRAME* FRAME_* SHOW_* EXTRACT_* ANALYSIS_STRUCTURE_FROM_PLOT"},
    GroupRow{
        "Properties over the frames",
        "temperature pressure energy volume density cell stress radius of gyration distance angle torsion time series "
        "mean average standard deviation histogram",
        "SELECT_PROPERTIES PROPERTY* PROFILE RUNNING_AVERAGE BLOCK_* DISTRIBUTION CALCULATE_HISTOGRAM NUMBER_OF_BINS "
        "FIND_* EXTREMA* MAXIMA MINIMA"},
    GroupRow{"Fluctuations", "heat capacity compressibility expansion thermal pressure coefficient dielectric constant",
             "SELECT_FLUCTUATIONS CALCULATE_FLUCTUATIONS RUNNING_AVERAGE_FLUCTUATIONS BLOCK_AVERAGE_FLUCTUATIONS"},
    GroupRow{"Displacement and diffusion", "msd diffusion coefficient mobility mean square displacement",
             "MSD* LINEAR_FIT MIN_FIT_TIME MAX_FIT_TIME"},
    GroupRow{"Velocity autocorrelation and its spectrum", "vacf vibration density of states phonon infrared frequency",
             "VAC* POWER_SPECTRUM"},
    GroupRow{"Dipoles, their autocorrelation and spectrum", "dielectric charge polarisation infrared frequency",
             "DIPOLE* DAC*"},
    GroupRow{"All correlations at once", "lag origin component anisotropy spectrum frequency",
             "ANISOTROPIC ATOMS MAX_INTERVAL* ORIGIN_STEP* FREQUENCY_INTERVAL MAX_TIME_TRANSFORM MONITOR*"},
    GroupRow{"Radial distribution", "g(r) rdf pair correlation coordination number neighbours shells", "RDF*"},
    GroupRow{"Structure factor", "s(k) scattering diffraction x-ray neutron",
             "STRUCTURE_FACTOR K_SPACE_INTERVAL R_SPACE_CUTOFF"},
    GroupRow{"Free volume", "void cavity", "FREE_VOLUME*"},
    GroupRow{"Asymmetric unit of a crystal", "cell lattice parameters space group symmetry atom site structure",
             "CELL SITE CLEAR_SITES SPACE_GROUP"},
    GroupRow{"Densities, volumes and surfaces", "grid map field isosurface number density contour mesh",
             "DENSITY* VOLUME* ISOSURFACE NORMALS"},
    GroupRow{"Table files", "column function graph draw", "TABLE*"},
    GroupRow{"Crystals and slabs", "build symmetry special position bond primitive conventional surface layer polymer",
             "BUILD_* ADD_TO_CRYSTAL UNBUILD_* SPECIAL_POSITIONS BONDING CELL_DISPLAY FACE_DISPLAY SYMMETRY_TOLERANCE "
             "ALIGN_POLYMER PRIMITIVE_CELL CONVENTIONAL_CELL"},
    GroupRow{"Structure files", "cif xyz qfx car read write open save import export",
             "IMPORT_STRUCTURE EXPORT_STRUCTURE"},
    GroupRow{"Where results go", "output table text plot graph print save",
             "STATISTICS_* SELECTED_STATISTICS_FILENAME"},
};
constexpr std::string_view others = "Others";

/// The letters with which a list of words names this one; 0 if it does not.
std::size_t letters_named(std::string_view list, std::string_view word) {
  std::size_t most = 0;
  for (auto& name : words_of(list)) {
    const bool is_start = name.ends_with('*');
    if (is_start) name.pop_back();
    if (is_start ? word.starts_with(name) : word == name) most = std::max(most, name.size());
  }
  return most;
}

std::size_t group_of(std::string_view word) {
  std::size_t best = group_rows.size(), most = 0;
  for (std::size_t k = 0; k < group_rows.size(); ++k) {
    const auto letters = letters_named(group_rows[k].words, word);
    if (letters <= most) continue;
    most = letters;
    best = k;
  }
  return best;
}

std::vector<WordGroup> make_groups() {
  std::vector<WordGroup> groups;
  groups.reserve(group_rows.size() + 1);
  for (const auto& row : group_rows) groups.push_back({row.name, row.about, {}});
  groups.push_back({others, {}, {}});
  for (const auto& row : command_helps()) groups[group_of(row.word)].words.push_back(&row);
  std::erase_if(groups, [](const WordGroup& group) { return group.words.empty(); });
  return groups;
}

}  // namespace

std::span<const WordGroup> word_groups() {
  static const auto groups = make_groups();
  return groups;
}

}  // namespace pathstat::desk
