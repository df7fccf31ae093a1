#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "extraction/dipole_moment.h"
#include "support/named_memory.h"

// The charges that a dipole is made of.
namespace pathstat {

/// Which atoms of a model take part, and whether each molecule has centres of charge of its own.
struct DipoleChoice {
  bool all_atoms;
  bool by_molecules;

  /// @param atoms  "ALL", or anything else for those selected in the Core
  /// @param kind   "MOLECULES", or anything else for one group of all atoms
  DipoleChoice(std::string_view atoms, std::string_view kind);
};

/// The chosen atoms of a model, molecule by molecule. Atoms are named by their parents in the first cell, and images
/// tell the cells that they are meant in: where molecules or all atoms are listed, those that make molecules whole that
/// the cell's faces cut; where atoms are selected, those that they are selected in.
class DipoleAtoms {
 public:
  /// @param status  0; 1 if the Core does not answer or what it answers does not fit together; that of an allocation
  DipoleAtoms(std::int32_t model, std::int32_t periodic_type, DipoleChoice choice, std::int32_t& status);

  std::span<const std::int32_t> atoms() const { return atoms_.span(); }
  std::span<const std::int32_t> tags() const { return tags_.span(); }
  std::span<const std::int32_t> images() const { return images_.span(); }
  std::span<const double> charges() const { return charges_.span(); }
  std::int32_t molecules() const { return molecules_; }

 private:
  void list_molecules(std::int32_t model, std::int32_t count, std::int32_t& status);
  void list_all(std::int32_t model, std::int32_t count, std::int32_t& status);
  void list_selected(std::int32_t model, std::int32_t& status);
  void make_room(std::int64_t count, std::int32_t& status);
  void keep(std::int32_t listed, std::int32_t error, std::int32_t& status);
  void tag_selected(std::int32_t& status);
  void order_by_molecules(std::int32_t& status);
  void find_images(bool whole_molecules, std::int32_t& status);

  NamedBlock<std::int32_t> atoms_, tags_, images_;
  NamedBlock<double> charges_;
  std::int32_t molecules_ = 1;
};

/// Charged atoms by sign, molecule by molecule. Atoms without a charge are in neither list.
class DipoleCharges {
 public:
  DipoleCharges() = default;
  /// @param places  of the atoms among the coordinates, from 1
  /// @param status  0, or that of an allocation
  DipoleCharges(const DipoleAtoms& atoms, std::span<const std::int32_t> places, std::int32_t& status);

  bool none() const { return positive_.size() + negative_.size() == 0; }
  bool of_one_sign() const { return positive_.size() == 0 || negative_.size() == 0; }

  /// The sum over the molecules. @param status  0; 1 if a place is not among the coordinates
  DipoleMoment moment(std::span<const double> xyz, std::int32_t periodic_type, MatrixIn<double> cell,
                      std::int32_t& status) const;

 private:
  /// The atoms of one sign.
  struct Sign {
    NamedBlock<std::int32_t> tags, atoms, images;
    NamedBlock<double> charges;
    NamedBlock<std::int32_t> counts;  ///< atoms of each molecule

    std::size_t size() const { return tags.size(); }
    ChargeList list() const { return {tags.span(), atoms.span(), images.span(), charges.span()}; }
  };

  /// The labels of a sign's blocks.
  struct Labels {
    std::string_view tags, atoms, images, charges, counts;
  };

  static Sign pick(const DipoleAtoms& atoms, std::span<const std::int32_t> places, bool positive, const Labels& labels,
                   std::int32_t& status);

  Sign positive_, negative_;
};

}  // namespace pathstat
