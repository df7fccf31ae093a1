#include "desk/messages/message.h"

namespace pathstat::desk {
namespace {

using enum MessageKind;

// Columns of the printed tables. A heading and the lines below it share one of these layouts:
//   frames  14 characters of time or conformer number, then one column of 24, three of 20 or six of 14
//   models  20 characters of model name, then the same columns
// Numbers come as 32-bit floats, which have no more than seven digits to show; all are shown, so that points stand
// under each other.
constexpr std::string_view frame_heading_1 = "\n{0:>14}{1:>24}";
constexpr std::string_view model_heading_1 = "\n{0:<20}{1:>24}";
constexpr std::string_view time_line_1 = "{0:>14.7g}{1:>#24.7g}";
constexpr std::string_view conformer_line_1 = "{0:>14d}{1:>#24.7g}";
constexpr std::string_view model_line_1 = "{0:<20}{1:>#24.7g}";
constexpr std::string_view frame_heading_3 = "\n{0:>14}{1:>20}{2:>20}{3:>20}";
constexpr std::string_view model_heading_3 = "\n{0:<20}{1:>20}{2:>20}{3:>20}";
constexpr std::string_view time_line_3 = "{0:>14.7g}{1:>#20.7g}{2:>#20.7g}{3:>#20.7g}";
constexpr std::string_view conformer_line_3 = "{0:>14d}{1:>#20.7g}{2:>#20.7g}{3:>#20.7g}";
constexpr std::string_view model_line_3 = "{0:<20}{1:>#20.7g}{2:>#20.7g}{3:>#20.7g}";
constexpr std::string_view time_line_6 = "{0:>14.7g}{1:>#14.6g}{2:>#14.6g}{3:>#14.6g}{4:>#14.6g}{5:>#14.6g}{6:>#14.6g}";
constexpr std::string_view conformer_line_6 =
    "{0:>14d}{1:>#14.6g}{2:>#14.6g}{3:>#14.6g}{4:>#14.6g}{5:>#14.6g}{6:>#14.6g}";
constexpr std::string_view model_line_6 = "{0:<20}{1:>#14.6g}{2:>#14.6g}{3:>#14.6g}{4:>#14.6g}{5:>#14.6g}{6:>#14.6g}";

constexpr MessageRow rows[] = {
    // Commands and requests
    {"KVZ_APP_UNDEF", error, "s", "There is no application \"{0}\"."},
    {"KVZ_CMD_UNDEF", error, "ss", "{0} does not know the word \"{1}\"."},
    {"KVZ_KWORD_HEAD", error, "s", "In the argument \"{0}\":"},
    {"KVZ_CONFIRM_PROMPT", dialog, "s", "Set everything in {0} back to its start?"},
    {"KVZ_CONFIRM_OPTIONS", dialog, "", "Reset|Leave as it is"},

    // Structures
    {"STRUCTURE_BUILD_FAILED", error, "i", "Nothing could be built of these atoms in this cell (status {0})."},
    {"STRUCTURE_CELL_IMPOSSIBLE", error, "ddd", "No cell has the angles {0}, {1} and {2} degrees."},
    {"STRUCTURE_CRYSTAL", note, "ssiis", "{0}, {1}: {2} atoms and {3} bonds in a cell; atoms of each site: {4}."},
    {"STRUCTURE_MASS_DENSITY", note, "dd", "Its cell has {0:.3f} Å³, which makes {1:.4f} g/cm³."},
    {"STRUCTURE_ELEMENT_UNKNOWN", error, "s", "There is no element \"{0}\"."},
    {"STRUCTURE_NO_VOLUME", error, "", "No volume is open: open one with VOLUME, or make one with DENSITY."},
    {"STRUCTURE_NO_TABLE", error, "", "No table is open: open one with TABLE."},
    {"STRUCTURE_DENSITY", note, "iid", "{0} atoms over {1} frames, {2:.4g} in each Å³ on average."},
    {"STRUCTURE_DENSITY_ATOMS", error, "", "There are no atoms to make a density of."},
    {"STRUCTURE_DENSITY_AXES", error, "",
     "DENSITY_CENTRE, DENSITY_AXIS and DENSITY_PLANE number three atoms of one molecule that do not stand on a line."},
    {"STRUCTURE_DENSITY_CELL", error, "", "A density needs a cell that is periodic in three directions and not flat."},
    {"STRUCTURE_DENSITY_CENTRE", error, "i", "DENSITY_CENTRE is the number of an atom, of which the model has {0}."},
    {"STRUCTURE_DENSITY_FILE", error, "s", "The density cannot be written to {0}."},
    {"STRUCTURE_DENSITY_FRAME", error, "i", "Frame {0} cannot be read, and there is no density."},
    {"STRUCTURE_DENSITY_INTERRUPTED", warning, "i", "Interrupted: the density is that of the first {0} frames."},
    {"STRUCTURE_DENSITY_TURNED", warning, "",
     "The cell stands otherwise than a volume file can say: the volume is turned against the atoms."},
    {"STRUCTURE_DENSITY_TYPE", error, "i", "A density has the type 1, 2 or 4, not {0}."},
    {"STRUCTURE_GRID_TOO_LARGE", error, "di",
     "The grid would have {0:.6g} points on an axis and may have {1}: raise DENSITY_SPACING."},
    {"STRUCTURE_TABLE", note, "siis", "{0}: lines of data: {2}, functions: {1}: {3}."},
    {"STRUCTURE_TABLE_EMPTY", error, "s", "The function \"{0}\" has no values."},
    {"STRUCTURE_TABLE_MISSING", error, "ss", "The table file {0} {1}."},
    {"STRUCTURE_TABLE_NO_COLUMN", error, "s", "The table has no function \"{0}\"."},
    {"STRUCTURE_TABLE_UNUSABLE", error, "s",
     "{0} is no table file: its functions are named between lines that begin with #."},
    {"STRUCTURE_VOLUME", note, "siiiiff", "{0}: {1} x {2} x {3} points of type {4}, values from {5:.5g} to {6:.5g}."},
    {"STRUCTURE_VOLUME_CUT", error, "s", "Not all of {0} can be read."},
    {"STRUCTURE_VOLUME_NOTHING", error, "", "The volume has no point there."},
    {"STRUCTURE_VOLUME_REGION", note, "iffffffffd",
     "{0} points from {1:.5g} {2:.5g} {3:.5g} to {4:.5g} {5:.5g} {6:.5g} Å: values from {7:.5g} to {8:.5g}, "
     "mean {9:.5g}."},
    {"STRUCTURE_VOLUME_UNUSABLE", error, "ss", "{0} is no volume that can be used: {1}."},
    {"STRUCTURE_VOLUME_VALUES", note, "iffd", "{0} points of values from {1:.5g} to {2:.5g}: {3:.4g} % of the volume."},
    {"STRUCTURE_EXPORT_FAILED", error, "s", "{0} could not be written."},
    {"STRUCTURE_FILE_FORMAT", error, "s",
     "{0} is no structure file by its name: it has to end in .cif, .xyz, .qfx or .car."},
    {"STRUCTURE_GROUP_UNKNOWN", error, "s", "There is no space group \"{0}\"."},
    {"STRUCTURE_IMPORTED", note, "si", "Model {0} has been read, with {1} atoms."},
    {"STRUCTURE_IMPORT_FAILED", error, "s", "{0} could not be read; the models are as they were."},
    {"STRUCTURE_NO_CELL", error, "", "There is no cell: give one with CELL."},
    {"STRUCTURE_NO_CONVENTIONAL", error, "",
     "The current model is not in a primitive setting that PRIMITIVE_CELL made."},
    {"STRUCTURE_NO_CRYSTAL", error, "", "The current model is no crystal: build one with BUILD_CRYSTAL."},
    {"STRUCTURE_NO_MODEL", error, "",
     "There is nothing to work on: give sites with SITE, or a model with IMPORT_STRUCTURE."},
    {"STRUCTURE_NO_PRIMITIVE", error, "", "No smaller, primitive cell is known for the lattice of the current model."},
    {"STRUCTURE_NO_SITES", error, "", "No sites wait to be added: give some with SITE."},
    {"STRUCTURE_NO_SLAB", error, "", "The current model is no slab: build one with BUILD_SLAB."},
    {"STRUCTURE_NO_UNIT", error, "",
     "The current model is neither a crystal nor an asymmetric unit with a space group."},
    {"STRUCTURE_PERIODIC_ALREADY", error, "", "The current model repeats already: take it apart first."},
    {"STRUCTURE_SLAB", note, "siid", "{0}: a slab with {1} atoms and {2} bonds on {3:.3f} Å²."},
    {"STRUCTURE_SLAB_OF_UNIT", error, "", "The current model is an asymmetric unit: build its crystal first."},
    {"STRUCTURE_TOO_MANY_ATOMS", error, "i", "So many layers would have more than {0} atoms."},

    // What a command needs before it can run
    {"PATHSTAT_MSG_30", error, "", "No property is selected: choose one with SELECT_PROPERTIES."},
    {"PATHSTAT_MSG_34", error, "", "No fluctuation property is selected: choose one with SELECT_FLUCTUATIONS."},
    {"PATHSTAT_ERROR_28", error, "", "There is no mean square displacement to fit: run MSD first."},
    {"PATHSTAT_ERROR_57", error, "", "No trajectory is loaded: load one with TRAJECTORY."},
    {"PATHSTAT_ERROR_71", error, "", "There is no radial distribution function to transform: run RDF first."},
    {"PATHSTAT_ERROR_73", error, "", "There is no velocity autocorrelation to transform: run VAC first."},
    {"PATHSTAT_ERROR_77", error, "s", "{0} needs a trajectory and cannot run on selected models."},
    {"PATHSTAT_ERROR_113", error, "", "The frames of this trajectory carry no times, which this analysis needs."},
    {"PATHSTAT_ERROR_114", error, "", "The power spectrum needs DAC_MAX_INTERVAL_NO above 0."},

    // Settings
    {"PATHSTAT_WARN_2", error, "i", "The block width must lie between 1 and the {0} selected frames."},
    {"PATHSTAT_WARN_3", error, "i", "The block interval does not fit the block width and the {0} selected frames."},
    {"PATHSTAT_ERROR_9", error, "", "More than 131073 bins: lower RDF_CUTOFF or raise RDF_INTERVAL."},
    {"PATHSTAT_ERROR_10", error, "", "Fewer than 4 bins: raise RDF_CUTOFF or lower RDF_INTERVAL."},
    {"PATHSTAT_ERROR_54", error, "", "K_SPACE_INTERVAL is so small that the transform would exceed 131072 points."},
    {"PATHSTAT_ERROR_55", error, "", "R_SPACE_CUTOFF is so large that the transform would exceed 131072 points."},
    {"PATHSTAT_ERROR_105", error, "sss",
     "No atoms of {0} \"{1}\" or \"{2}\": both types must be ones that the model has."},
    {"PATHSTAT_MSG_1", warning, "s", "{0} cannot be selected: it has not been calculated."},
    {"PATHSTAT_MSG_2", warning, "s", "{0} cannot be selected: the present input does not hold it."},
    {"PATHSTAT_MSG_44", warning, "", "The dipole cannot be selected: calculate it first with DIPOLE."},
    {"PATHSTAT_WARN_13", warning, "ss", "{0} is left out: it has no meaning for the {1}."},

    // Loading a trajectory
    {"PATHSTAT_ERROR_66", error, "s",
     "No trajectory file begins with {0}: none of .trj .qtrj .atrj .arc .his is there."},
    {"PATHSTAT_ERROR_67", error, "s", "There is no file {0}."},
    {"PATHSTAT_ERROR_68", error, "s", "More than one trajectory file begins with {0}: give the extension too."},
    {"PATHSTAT_ERROR_115", error, "", "History files of the kind .fhis cannot be read."},
    {"PATHSTAT_ERROR_117", error, "s", "{0} is not a trajectory file of a kind that can be read."},
    {"PATHSTAT_ERROR_47", error, "", "Not one frame of the trajectory can be read."},
    {"PATHSTAT_WARN_7", warning, "", "The trajectory breaks off: only the frames ahead of the break are used."},
    {"PATHSTAT_WARN_19", warning, "i", "Counting was interrupted: only the first {0} frames are used."},
    {"PATHSTAT_MSG_66", note, "s", "{0} is loaded again, with its model as it is."},
    {"PATHSTAT_MSG_67", note, "i", "Counting frames: {0}"},
    {"PATHSTAT_DLG_1", dialog, "", "A model is there already. Which model goes with the trajectory?"},
    {"PATHSTAT_DLG_2", dialog, "", "Import the model file|Use the current model|Cancel"},
    {"Traj_BadTrajectory", error, "s", "The trajectory {0} cannot be used."},
    {"Traj_OpenProblem", error, "s", "The trajectory {0} cannot be opened."},
    {"Traj_NoSuchFile", warning, "ss", "There is no model file {0} beside the trajectory {1}."},
    {"Traj_UseModel", note, "", "The current model is used for the trajectory."},
    {"Traj_ModelEmpty", error, "", "The current model has no atoms, and no model file was found."},
    {"PATHSTAT_ERROR_106", error, "", "A trajectory can only be opened for reading here."},
    {"PATHSTAT_ERROR_107", error, "s", "There is no trajectory file {0}."},
    {"PATHSTAT_ERROR_108", error, "", "A trajectory file must be called .trj, .qtrj, .atrj, .arc or .his."},
    {"PATHSTAT_ERROR_110", error, "", "Archives of helical systems cannot be read."},
    {"PATHSTAT_ERROR_111", error, "", "A trajectory can be attached to one model only."},
    {"PATHSTAT_ERROR_112", error, "",
     "The model does not fit the trajectory: the number of atoms or the periodicity differs."},
    {"PATHSTAT_ERROR_119", error, "", "The archive has a PBC line that is neither ON, OFF, 2 nor 3."},
    {"kvD_TRJ_OpenRead1", error, "s", "The frame file {0} cannot be opened for reading."},

    // Frames and the shown model
    {"PATHSTAT_ERROR_76", error, "s",
     "The graph \"{0}\" does not belong to the loaded trajectory and range of frames."},
    {"PATHSTAT_ERROR_120", error, "s", "Frames cannot be picked on the graph \"{0}\": pick on a profile."},
    {"PATHSTAT_ERROR_101", error, "", "The trajectory has no frame of that number."},
    {"PATHSTAT_ERROR_102", error, "", "The model has no atoms."},
    {"PATHSTAT_ERROR_103", error, "", "The model and the trajectory differ in periodicity."},
    {"PATHSTAT_ERROR_104", error, "", "The trajectory moves more atoms than the model has."},
    {"PATHSTAT_ERROR_116", error, "", "The model has changed since stepping through its frames began."},
    {"PATHSTAT_MSG_46", dialog, "", "The model of the trajectory is gone. Bring it back?"},
    {"PATHSTAT_MSG_47", dialog, "", "Import the saved model|Cancel"},
    {"PATHSTAT_MSG_48", note, "s", "The current model is not the one of the trajectory, which is {0}."},

    // Extraction of properties
    {"PATHSTAT_ERROR_94", error, "", "The radius of gyration needs a model that is not periodic."},
    {"PATHSTAT_ERROR_95", error, "", "The volume needs a model that is periodic in three dimensions."},
    {"PATHSTAT_ERROR_96", error, "", "The area needs a model that is periodic in two dimensions."},
    {"PATHSTAT_ERROR_97", error, "", "The density needs a model that is periodic in three dimensions."},
    {"PATHSTAT_ERROR_98", error, "", "Cell parameters need a model that is periodic in two or three dimensions."},
    {"PATHSTAT_ERROR_99", error, "", "Cell parameters cannot mix models of two and of three periodic dimensions."},
    {"PATHSTAT_ERROR_100", error, "", "The atoms of the trajectory do not match those of the model."},
    {"PATHSTAT_MSG_4", error, "", "A work file of a property cannot be opened or read."},
    {"DisplayText", warning, "s", "{0}"},
    {"PATHSTAT_WARN_6", warning, "s", "There is nothing to measure: the model has no {0} monitor."},

    // Profiles, averages and distributions
    {"PATHSTAT_ERROR_64", error, "",
     "Nothing to do: the table file cannot be written, and neither plot nor text is wanted."},
    {"PATHSTAT_ERROR_65", error, "", "The table file cannot be written: the results go without it."},
    {"PATHSTAT_ERROR_80", error, "s", "{0} of selected models can be had as a distribution only."},
    {"PATHSTAT_ERROR_118", error, "s", "The graph \"{0}\" cannot be made."},
    {"PATHSTAT_WARN_1", warning, "", "All values are the same: the distribution has no width."},
    {"PATHSTAT_WARN_5", warning, "i", "Only the first {0} curves are drawn."},
    {"PATHSTAT_WARN_16", warning, "s", "{0} of selected models does not go into the table file."},
    {"PATHSTAT_MSG_3", warning, "i",
     "There are {0} graphs, which is the most at one time: further ones are not drawn."},

    // Statistics and ranking
    {"PATHSTAT_MSG_60", table, "s", "\nStatistics of {0}"},
    {"PATHSTAT_MSG_62", table, "ss", "\nStatistics of {1}, component {0}"},
    {"PATHSTAT_MSG_61", table, "ffffff",
     "  mean               {0:>#14.7g}\n  standard deviation {1:>#14.7g}\n  skewness           {2:>#14.7g}\n"
     "  kurtosis (excess)  {3:>#14.7g}\n  minimum            {4:>#14.7g}\n  maximum            {5:>#14.7g}"},
    {"PATHSTAT_MSG_63", warning, "", "Statistics need at least two values."},
    {"PATHSTAT_WARN_17", warning, "", "The values do not spread, so that their skewness is not defined: 0 is shown."},
    {"PATHSTAT_WARN_18", warning, "", "The values do not spread, so that their kurtosis is not defined: 0 is shown."},
    {"PATHSTAT_MSG_28", table, "is", "\nThe {0} {1} values among the models"},
    {"PATHSTAT_MSG_29", table, "is", "\nThe {0} {1} values among the frames"},
    {"PATHSTAT_MSG_64", table, "s", "{0}\n    rank  model                              value"},
    {"PATHSTAT_MSG_65", table, "isf", "{0:>8d}  {1:<20}{2:>#20.7g}"},
    {"PATHSTAT_MSG_24", table, "s", "{0}\n    rank   entry   frame        time/ps               value"},
    {"PATHSTAT_MSG_26", table, "iiiff", "{0:>8d}{1:>8d}{2:>8d}{3:>15.5f}{4:>#20.7g}"},
    {"PATHSTAT_MSG_25", table, "s", "{0}\n    rank   entry   frame      conformer               value"},
    {"PATHSTAT_MSG_27", table, "iiiif", "{0:>8d}{1:>8d}{2:>8d}{3:>15d}{4:>#20.7g}"},

    // Printed profiles and distributions
    {"PATHSTAT_MSG_17", table, "s", "\nDistribution of {0}\n         value               frequency"},
    {"PATHSTAT_MSG_41", table, "s", "\nDistribution of {0}\n         value               frequency"},
    {"PATHSTAT_MSG_7", table, "ss", frame_heading_1},
    {"PATHSTAT_MSG_16", table, "ss", "\nStress component\n{0:>14}{1:>24}"},
    {"PATHSTAT_MSG_57", table, "ss", model_heading_1},
    {"PATHSTAT_MSG_54", table, "ss", "\nStress component\n{0:<20}{1:>24}"},
    {"PATHSTAT_MSG_8", table, "if", conformer_line_1},
    {"PATHSTAT_MSG_9", table, "ff", time_line_1},
    {"PATHSTAT_MSG_51", table, "sf", model_line_1},
    {"PATHSTAT_MSG_6", table, "s",
     "\nCell parameters\n{0:>14}                 |u|                 |v|               theta"},
    {"PATHSTAT_MSG_56", table, "s",
     "\nCell parameters\n{0:<20}                 |u|                 |v|               theta"},
    {"PATHSTAT_MSG_15", table, "s",
     "\nStress components\n{0:>14}                  yy                  zz                  yz"},
    {"PATHSTAT_MSG_53", table, "s",
     "\nStress components\n{0:<20}                  yy                  zz                  yz"},
    {"PATHSTAT_MSG_43", table, "ssss", frame_heading_3},
    {"PATHSTAT_MSG_59", table, "ssss", model_heading_3},
    {"PATHSTAT_MSG_10", table, "ifff", conformer_line_3},
    {"PATHSTAT_MSG_11", table, "ffff", time_line_3},
    {"PATHSTAT_MSG_50", table, "sfff", model_line_3},
    {"PATHSTAT_MSG_5", table, "s",
     "\nCell parameters\n{0:>14}           |a|           |b|           |c|         alpha          beta         gamma"},
    {"PATHSTAT_MSG_55", table, "s",
     "\nCell parameters\n{0:<20}           |a|           |b|           |c|         alpha          beta         gamma"},
    {"PATHSTAT_MSG_14", table, "s",
     "\nStress components\n{0:>14}            xx            yy            zz            yz            xz            "
     "xy"},
    {"PATHSTAT_MSG_52", table, "s",
     "\nStress components\n{0:<20}            xx            yy            zz            yz            xz            "
     "xy"},
    {"PATHSTAT_MSG_12", table, "iffffff", conformer_line_6},
    {"PATHSTAT_MSG_13", table, "fffffff", time_line_6},
    {"PATHSTAT_MSG_49", table, "sffffff", model_line_6},
    {"PATHSTAT_MSG_42", table, "sssssss", "\n{0:>8}{1:>12}{2:>12}{3:>12}{4:>12}{5:>12}{6:>12}"},
    {"PATHSTAT_MSG_58", table, "sssssss", "\n{0:<20}{1:>12}{2:>12}{3:>12}{4:>12}{5:>12}{6:>12}"},
    {"PATHSTAT_MSG_22", table, "s", "{0}"},

    // The table file
    {"StatFilePrompt", dialog, "s", "The table file {0} exists. Replace it?"},
    {"StatFileOptions", dialog, "", "Replace it|Keep it"},
    {"PATHSTAT_MSG_31", note, "s", "The table file {0} is replaced."},
    {"PATHSTAT_WARN_8", warning, "s", "The table file {0} is kept, and no table is written."},
    {"PATHSTAT_ERROR_56", error, "s", "The old table file {0} cannot be deleted."},

    // Fluctuations
    {"PATHSTAT_MSG_32", table, "sds", "{0:<40}{1:>16.8g}  {2}"},
    {"PATHSTAT_MSG_33", table, "sdsssdss", "{0:<40}{1:>16.8g}  {2} ({3})\n{4:<40}{5:>16.8g}  {6} ({7})"},
    {"PATHSTAT_MSG_35", error, "", "Block averages of fluctuations need a block width of at least 2 frames."},

    // Dipoles
    {"PATHSTAT_ERROR_1", error, "", "Dipoles need a system that is periodic in three dimensions or not at all."},
    {"PATHSTAT_ERROR_2", error, "", "No atom of the trajectory's model has a charge."},
    {"PATHSTAT_ERROR_3", error, "", "All charges of the trajectory's model have the same sign."},
    {"PATHSTAT_ERROR_11", error, "", "A movable atom of the model is not in the frames of the trajectory."},
    {"PATHSTAT_ERROR_79", error, "", "There is no model whose dipole could be calculated."},
    {"PATHSTAT_WARN_11", warning, "ii",
     "The times of frames {0} and {1} are unevenly spaced: no dipole autocorrelation."},
    {"PATHSTAT_WARN_14", warning, "s", "No atom of {0} has a charge: its dipole is set to 0."},
    {"PATHSTAT_WARN_15", warning, "s", "All charges of {0} have the same sign: its dipole is set to 0."},
    {"PATHSTAT_MSG_37", note, "", "The dipoles are calculated first."},
    {"PATHSTAT_MSG_38", note, "", "The dipole autocorrelation is calculated first."},
    {"PATHSTAT_ERROR_63", error, "", "The frames of the dipole series are unevenly spaced in time."},

    // Displacements, autocorrelations and spectra
    {"PATHSTAT_ERROR_12", error, "", "Too many files are open to make the cache of frames."},
    {"PATHSTAT_ERROR_13", error, "", "The frames hold no velocities."},
    {"PATHSTAT_ERROR_14", error, "", "The velocities of this trajectory cannot be used for a correlation."},
    {"PATHSTAT_ERROR_15", error, "", "No velocity autocorrelation: the selection of atoms cannot be used."},
    {"PATHSTAT_ERROR_16", error, "", "A frame inside the selected range cannot be read."},
    {"PATHSTAT_ERROR_17", error, "", "The cache of frames cannot be written, or there is too little memory."},
    {"PATHSTAT_ERROR_25", error, "", "The frames of this trajectory cannot be used for a correlation."},
    {"PATHSTAT_ERROR_26", error, "", "No mean square displacement: the selection of atoms cannot be used."},
    {"PATHSTAT_ERROR_27", error, "", "There is too little memory for the mean square displacement."},
    {"PATHSTAT_ERROR_29", error, "", "The mean square displacement has fewer than two points."},
    {"PATHSTAT_ERROR_30", error, "", "The points of the mean square displacement are unevenly spaced in time."},
    {"PATHSTAT_ERROR_31", error, "", "The points of the mean square displacement do not advance in time."},
    {"PATHSTAT_ERROR_32", error, "", "A line needs three points: widen MIN_FIT_TIME to MAX_FIT_TIME."},
    {"PATHSTAT_ERROR_33", error, "", "There is too little memory for the linear fit."},
    {"PATHSTAT_ERROR_34", error, "", "There is too little memory for the Fourier transform."},
    {"PATHSTAT_ERROR_35", error, "", "A cosine transform needs at least three points."},
    {"PATHSTAT_ERROR_36", error, "", "A sine transform needs at least three points."},
    {"PATHSTAT_ERROR_41", error, "", "There is too little memory to cache the frames."},
    {"PATHSTAT_ERROR_42", error, "", "A selected atom has no identifier, so that it cannot be found in the frames."},
    {"PATHSTAT_ERROR_43", error, "", "None of the selected atoms moves in the trajectory."},
    {"PATHSTAT_ERROR_49", error, "", "The velocity autocorrelation has fewer than two points to transform."},
    {"PATHSTAT_ERROR_50", error, "", "The points of the velocity autocorrelation are unevenly spaced in time."},
    {"PATHSTAT_ERROR_51", error, "", "The points of the velocity autocorrelation do not advance in time."},
    {"PATHSTAT_ERROR_52", error, "",
     "The power spectrum would need more than 131073 points: lower VAC_MAX_TIME_TRANSFORM."},
    {"PATHSTAT_ERROR_53", error, "", "There is too little memory for the power spectrum."},
    {"PATHSTAT_ERROR_61", error, "ii",
     "The times of frames {0} and {1} are unevenly spaced, which a correlation cannot use."},
    {"PATHSTAT_ERROR_69", error, "s", "The result file {0} cannot be opened."},
    {"PATHSTAT_ERROR_70", error, "s", "There is no result file {0}."},
    {"PATHSTAT_ERROR_93", error, "", "A frame of the trajectory cannot be read."},
    {"PATHSTAT_MSG_40", note, "i", "{0} of the selected atoms do not move in the trajectory and are left out."},

    // Radial distribution functions
    {"PATHSTAT_ERROR_72", error, "", "No atoms are selected."},
    {"PATHSTAT_ERROR_75", error, "s", "\"{0}\" is no normalization: use PARTIAL or TOTAL."},
    {"PATHSTAT_ERROR_81", error, "", "The selected models differ in periodicity."},
    {"PATHSTAT_ERROR_82", error, "", "Without periodicity, a radial distribution needs at least two atoms."},
    {"PATHSTAT_ERROR_83", error, "", "There are no atoms for the radial distribution."},
    {"PATHSTAT_ERROR_84", error, "", "The model lacks atoms of one of the two types of RDF_TYPE."},
    {"PATHSTAT_ERROR_85", error, "", "The model has no atoms of the type of RDF_TYPE."},
    {"PATHSTAT_ERROR_86", error, "", "The model and the trajectory differ in periodicity."},
    {"PATHSTAT_ERROR_87", error, "", "A movable atom of the model is not in the frames of the trajectory."},
    {"PATHSTAT_ERROR_88", error, "",
     "Radial distributions of models that are periodic in one dimension cannot be had."},
    {"PATHSTAT_ERROR_89", error, "s",
     "Without periodicity, a radial distribution needs at least two atoms: {0} has fewer."},
    {"PATHSTAT_ERROR_90", error, "s", "{0} has no atoms for the radial distribution."},
    {"PATHSTAT_ERROR_91", error, "s", "{0} lacks atoms of a type of RDF_TYPE."},
    {"PATHSTAT_WARN_12", warning, "", "Interrupted: the radial distribution is that of the frames done so far."},

    // Model files
    {"FIL_ReadError", error, "is", "Line {0} of {1} cannot be read."},
    {"FIL_ReadObjOrAttr1", error, "s", "The character \"{0}\" cannot stand where an item begins."},
    {"FIL_ReadObjOrAttr2", error, "s", "The character \"{0}\" cannot stand inside an item."},
    {"FIL_ReadObjOrAttr3", error, "is", "The character \"{1}\" cannot stand behind {0} characters of a value."},

    // Crystals
    {"CrystalBadLattice", error, "", "The space group has a lattice type that is not known."},
    {"CrystalPolAlignErr", error, "", "The polymer cannot be laid along the cell's c axis."},
    {"CrystalNoPolSeg", error, "", "No repeating segment was found along the polymer."},
    {"CrystalPolLength", note, "f", "The c axis takes the repeat length of the polymer, {0:.6g} Å."},
    {"CrystalNoGroup", error, "", "The model's space group is not one that is known."},
    {"CrystalInconsistentLattice", error, "", "The cell does not fit the lattice type of the space group."},
    {"CrystalTooManyBonds", error, "", "Too many atoms lie within bonding distance of each other."},
    {"sfcBuild1", error, "", "Too many atoms of the slab lie within bonding distance of each other."},
    {"CrystalOverSpecCell", warning, "", "Some atoms are translational copies of others in the cell."},
    {"CrystalWarnCharge", warning, "", "An atom that is a copy of another has a charge."},
    {"CrystalTransCopy", note, "ii", "Atom {0} is a translational copy of atom {1}."},
    {"CrystalRemoveDup", note, "", "Copies of atoms are removed."},
    {"CrystalOverSpecSymm", warning, "", "Some atoms are symmetry copies of others."},
    {"CrystalSymmCopy", note, "ii", "Atom {0} is a symmetry copy of atom {1}."},
    {"CrystalSymmDiffCopy", warning, "ii", "Atoms {0} and {1} are of different types and fall together by symmetry."},
    {"CrystalBadPolAlign", error, "", "A polymer segment needs exactly one head and one tail atom."},
    {"Crystal2J1", error, "ii", "Atoms {0} and {1} of one molecule are both head atoms."},
    {"Crystal2J2", error, "ii", "Atoms {0} and {1} of one molecule are both tail atoms."},
};

// Statuses of the process's routines. What an optional argument or an absent file reports has nothing to tell.
constexpr StatusRow statuses[] = {
    {1, "", "There is not enough memory"},
    {1001, "ss", "{0} is below the lowest value allowed, {1}"},
    {1002, "ss", "{0} is above the highest value allowed, {1}"},
    {1003, "", "The argument is none of the words allowed here"},
    {1004, "", "A range is written low:high"},
    {1005, "i", "Argument {0} is missing"},
    {1006, "ii", "There are {0} arguments, and at least {1} are needed"},
    {1007, "", "A flag takes no argument"},
    {1008, "s", "\"{0}\" names no object"},
    {-1000, "", "A text was cut to fit"},
    {-1001, "", ""},
    {-1002, "", ""},
    {-21001, "", ""},
    {-21002, "", "A file may not be removed"},
    {21005, "", "A file cannot be opened"},
    {21008, "", "Too many files are open"},
    {-50101, "", "The field does not take this value anywhere"},
    {100, "", "There is not enough memory"},
    {50003, "", "A frame of the trajectory is damaged, or the system cannot read it"},
    {50101, "", "The number of values does not match the grid"},
    {50301, "", "The three angles cannot form a cell"},
    {50302, "", "A cell length is zero"},
    {50303, "", "A matrix cannot be inverted"},
    {50304, "", "The cell is flat or left-handed"},
    {50305, "", "The two cell vectors are parallel"},
    {50306, "", "The orientation code is not known"},
    {50307, "", "The model is periodic already"},
    {50308, "", "The model is not periodic"},
    {50309, "", "The model has no symmetry"},
    {50310, "", "The cell does not fit its lattice"},
    {50311, "", "The number of atoms does not match"},
    {50503, "", "The file cannot be opened, or its head is damaged"},
    {50510, "", "A record of the trajectory is damaged, or the system cannot read it"},
    {50516, "", "The file is no table file"},
};

}  // namespace

const std::vector<MessageRow>& message_rows() {
  static const std::vector<MessageRow> all(std::begin(rows), std::end(rows));
  return all;
}

const std::vector<StatusRow>& status_rows() {
  static const std::vector<StatusRow> all(std::begin(statuses), std::end(statuses));
  return all;
}

}  // namespace pathstat::desk
