#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "support/logical.h"
#include "support/text_field.h"
#include "support/vectors.h"

// The monitors that the user has marked in a model, as series. A set-up turns each monitor once into places of atoms in
// the coordinates of a frame and multiples of the cell vectors, so that a frame costs arithmetic alone.
//
// `id` is a catalogue row of measures: 501 distance, 502 angle, 503 torsion, 504 plane-to-plane angle, 505 inversion,
// 506 distance vector.

namespace pathstat {

/// The monitors of a type, ascending.
/// @param status  0; 1 if the Core lists fewer or more than there is room for, or its error
void getmeasureoids_(std::int32_t model, std::int32_t type, std::span<std::int32_t> monitors, std::int32_t& status);

/// True if the model's monitors of a type are not those that the last set-up remembered, or that cannot be told.
bool measureschanged_(std::int32_t model, std::int32_t type, std::int32_t& status);

/// Decides whether a row has to be extracted. A file made from other monitors is deleted; without monitors the row is
/// not on disk, and PATHSTAT_WARN_6 is shown.
/// @param count   monitors
/// @param status  0; 1 for an id that is no measure
void domeasures_(std::int32_t model, std::int32_t id, std::string_view file, Logical& on_disk, bool& do_it,
                 std::int32_t& count, std::int32_t& status);

/// True if every object is an atom. @param flags  one per object, out. @param status  the Core's error
bool allobjsareatoms_(std::span<const std::int32_t> objects, std::span<std::int32_t> flags, std::int32_t& status);

/// Where atoms of monitors stand in a frame.
///
/// @param periodicity  directions in which the model repeats, 0 to 3
/// @param objects      n atoms of monitors, some in other cells
/// @param atoms        the atoms of a frame, in its order
/// @param work         n integers: the atoms without their images, out
/// @param indices      n places in `atoms`, from 1, out
/// @param images       3n multiples of a, b, c, out. A two-dimensional model repeats along b and c, a one-dimensional
///                     one along c; the Core counts its repeat vectors from the first place on
/// @param status       0; 1 for an atom that is not in the list; the Core's error
void gettransandparentind_(std::int32_t periodicity, std::span<const std::int32_t> objects,
                           std::span<const std::int32_t> atoms, std::span<std::int32_t> work,
                           std::span<std::int32_t> indices, std::span<std::int32_t> images, std::int32_t& status);

/// Prepares a family: its blocks and labels, and the memory of its monitors in the Core.
///
/// @param count        of domeasures_
/// @param width        numbers of a frame, out: count, or three times that for distance vectors
/// @param periodicity  as above
/// @param atoms        as above
/// @param status       0; 1 for an id that is no measure, fewer monitors than counted, a monitor of something other
///                     than atoms, or an atom that is not in the list; the Core's error; that of an allocation
void setupmeasures_(std::int32_t model, std::int32_t id, std::int32_t count, std::int32_t& width,
                    std::int32_t periodicity, std::span<const std::int32_t> atoms, std::int32_t& status);

void setupdistmeasures_(std::int32_t model, std::int32_t periodicity, std::int32_t count,
                        std::span<const std::int32_t> atoms, std::int32_t& status);
void setupangmeasures_(std::int32_t model, std::int32_t periodicity, std::int32_t count,
                       std::span<const std::int32_t> atoms, std::int32_t& status);
void setuptormeasures_(std::int32_t model, std::int32_t periodicity, std::int32_t count,
                       std::span<const std::int32_t> atoms, std::int32_t& status);
void setupplanemeasures_(std::int32_t model, std::int32_t periodicity, std::int32_t count,
                         std::span<const std::int32_t> atoms, std::int32_t& status);
void setupinvmeasures_(std::int32_t model, std::int32_t periodicity, std::int32_t count,
                       std::span<const std::int32_t> atoms, std::int32_t& status);

/// Frees the blocks of a family, but not its labels. @param status  0; 1 for an id that is no measure
void cleanupmeasures_(std::int32_t id, std::int32_t& status);

/// point = atom + ta a + tb b + tc c, Å. @param image  ta, tb, tc
void measurescoords_(VectorIn<double> atom, VectorIn<double> a, VectorIn<double> b, VectorIn<double> c,
                     VectorIn<std::int32_t> image, VectorOut<double> point);

// The measures of one frame, with the family set up.
//
// xyz      x, y, z of each atom that the set-up was given, Å
// a, b, c  the cell vectors, Å
// out      a number for each measure, Å or degrees; three, Å, of a distance vector: second atom minus first
// status   0; 1 if fewer than `count` measures are set up, out is too short or xyz has too few atoms; -1 if an
//          inversion is undefined, which is told by "DisplayText" and counts as 0

void calcdistmeasures_(std::int32_t count, std::span<const double> xyz, VectorIn<double> a, VectorIn<double> b,
                       VectorIn<double> c, std::span<double> out, std::int32_t& status);
void calcangmeasures_(std::int32_t count, std::span<const double> xyz, VectorIn<double> a, VectorIn<double> b,
                      VectorIn<double> c, std::span<double> out, std::int32_t& status);
void calctormeasures_(std::int32_t count, std::span<const double> xyz, VectorIn<double> a, VectorIn<double> b,
                      VectorIn<double> c, std::span<double> out, std::int32_t& status);
void calcplanemeasures_(std::int32_t count, std::span<const double> xyz, VectorIn<double> a, VectorIn<double> b,
                        VectorIn<double> c, std::span<double> out, std::int32_t& status);
void calcinvmeasures_(std::int32_t count, std::span<const double> xyz, VectorIn<double> a, VectorIn<double> b,
                      VectorIn<double> c, std::span<double> out, std::int32_t& status);
void calcdistvecmeasures_(std::int32_t count, std::span<const double> xyz, VectorIn<double> a, VectorIn<double> b,
                          VectorIn<double> c, std::span<double> out, std::int32_t& status);

/// The inversion of four points by a convention, 1, 2 or 4; 0 for any other.
/// @param out     radians
/// @param status  0; -1 if it is undefined, which is told by "DisplayText", with out 0
void calcinversion_(const Vector3& p1, const Vector3& p2, const Vector3& p3, const Vector3& p4, std::int32_t convention,
                    double& out, std::int32_t& status);

/// The largest number of monitors over the models. @param status  0; 1 for an id that is no measure
std::int32_t maxnummodelmeasures_(std::span<const std::int32_t> models, std::int32_t id, std::int32_t& status);

/// The present values of the monitors of a type, by the Core.
/// @param values  room for all; Å or degrees
/// @param count   values, out; 0 on an error
/// @param status  0; 1 for an unknown type or too little room; the Core's error
void getmodelmeasures_(std::int32_t type, std::int32_t model, std::span<double> values, std::int32_t& count,
                       std::int32_t& status);

/// The vectors from the first to the second atom of each distance monitor, Å; count is three for each.
void getmodeldistvectors_(std::int32_t model, std::int32_t& count, std::span<double> values, std::int32_t& status);

/// Writes the label of a measure that is set up; as MeasureLabels has it.
bool measure_label(std::int32_t id, std::int32_t number, TextField label);

}  // namespace pathstat
