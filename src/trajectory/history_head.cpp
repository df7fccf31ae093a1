#include "trajectory/history_head.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>
#include <vector>

#include "trajectory/front_end.h"
#include "trajectory/history_file.h"

namespace pathstat {
namespace {

using namespace trajectory_status;

constexpr double first_with_movable_list = 2.5999999;  // later ones have it
constexpr double first_with_separate_bonds = 2.8;
constexpr double first_with_long_names = 2.9;
constexpr std::size_t line_characters = 80;
constexpr std::size_t name_characters = 4;
constexpr std::size_t long_name_characters = 5;

/// Takes in the records of the head in turn; the first failure stays in the status.
class HeadReader {
 public:
  HeadReader(RecordReader& file, std::int32_t& status) : file_(file), status_(status) {}

  bool ok() const { return status_ == 0; }
  void fail(std::int32_t status) {
    if (status_ == 0) status_ = status;
  }
  std::int32_t records() const { return records_; }

  /// Loads the next record, whose payload the calls below take values out of.
  void next() {
    if (status_ != 0) return;
    const auto found = file_.expect_any(INT32_MAX);
    if (found != RecordStatus::ok) {
      return fail(found == RecordStatus::end || found == RecordStatus::cut ? end_of_file : read_error);
    }
    if (file_.load() != RecordStatus::ok) return fail(read_error);
    payload_ = BigEndian(file_.payload());
    ++records_;
  }
  /// The record has so many more bytes. @return false after any failure
  bool has_left(std::int64_t bytes) {
    if (ok() && static_cast<std::int64_t>(payload_.left()) != bytes) fail(read_error);
    return ok();
  }
  BigEndian& payload() { return payload_; }
  /// A count of at least one.
  std::int32_t count() {
    const auto left = payload_.left();
    const std::int32_t count = ok() ? payload_.i32() : 0;
    if (left < sizeof count) fail(read_error);
    if (count < 1) fail(count_too_small);
    return count;
  }

  template <class T>
  void block(NamedBlock<T>& block, std::string_view name, std::int64_t count) {
    if (!ok()) return;
    block = NamedBlock<T>("Trj/His/" + std::string(name), count, status_);
    if constexpr (std::is_same_v<T, char>) {
      if (ok()) copy_text(payload_.text(static_cast<std::size_t>(count)), block.span().data());
    } else {
      if (ok()) payload_.fill(block.span());
    }
  }
  /// Names of 4 or 5 characters, kept in fields of 5.
  void atom_names(NamedBlock<char>& block, std::int32_t count, std::size_t width) {
    if (!ok()) return;
    block = NamedBlock<char>("Trj/His/AtomNames", std::int64_t{long_name_characters} * count, status_);
    if (!ok()) return;
    std::ranges::fill(block.span(), ' ');
    for (std::size_t k = 0; k < static_cast<std::size_t>(count); ++k) {
      copy_text(payload_.text(width), &block.span()[long_name_characters * k]);
    }
  }

 private:
  static void copy_text(std::string_view text, char* to) { std::copy(text.begin(), text.end(), to); }

  RecordReader& file_;
  std::int32_t& status_;
  BigEndian payload_{{}};
  std::int32_t records_ = 0;
};

/// H1 to H4: what the file is, and its texts.
void read_lines(HeadReader& head) {
  head.next();
  if (head.has_left(4) && head.payload().i32() != 0) head.fail(not_history);
  for (std::size_t k = 0; k < 3; ++k) {
    head.next();
    if (!head.has_left(line_characters + (k == 0 ? 8 : 0))) return;
    histrj_c_.lines[k] = head.payload().text(line_characters);
    if (k == 0) histrj_d_.his_version = head.payload().f64();
  }
  const double version = std::isfinite(histrj_d_.his_version) ? std::clamp(histrj_d_.his_version, -1e6, 1e6) : 0.0;
  histrj_i_.his_version_major = static_cast<std::int32_t>(version);
  histrj_i_.his_version_minor = static_cast<std::int32_t>(std::lround((version - histrj_i_.his_version_major) * 100));
}

/// H5 to H7: force field types, residue types and atoms.
void read_types(HeadReader& head) {
  head.next();
  const std::int64_t types = histrj_i_.his_ff_types = head.count();
  if (!head.has_left(12 * types)) return;
  head.block(histrj_p_.ff_type_names, "FFTypeNames", 4 * types);
  head.block(histrj_p_.ff_type_mass, "FFTypeMass", types);

  head.next();
  const std::int64_t residues = histrj_i_.his_residue_types = head.count();
  if (!head.has_left(4 * residues)) return;
  head.block(histrj_p_.residue_names, "ResidueNames", 4 * residues);

  head.next();
  const std::int64_t atoms = histrj_i_.his_atoms = head.count();
  const auto width = histrj_d_.his_version >= first_with_long_names ? long_name_characters : name_characters;
  if (!head.has_left((4 + static_cast<std::int64_t>(width)) * atoms)) return;
  head.block(histrj_p_.atom_ff_index, "AtomFFIndex", atoms);
  head.atom_names(histrj_p_.atom_names, histrj_i_.his_atoms, width);
}

/// True if the list names atoms of the file, each once.
bool names_atoms(std::span<const std::int32_t> list) {
  std::vector<bool> named(static_cast<std::size_t>(histrj_i_.his_atoms));
  return std::ranges::all_of(list, [&](std::int32_t atom) {
    if (atom < 1 || atom > histrj_i_.his_atoms || named[static_cast<std::size_t>(atom - 1)]) return false;
    return static_cast<bool>(named[static_cast<std::size_t>(atom - 1)] = true);
  });
}

/// H8: which atoms move.
void read_movable(HeadReader& head) {
  const bool has_list = histrj_d_.his_version > first_with_movable_list;
  head.next();
  head.payload().skip(4);
  const std::int64_t movable = histrj_i_.his_movable = head.count();
  histrj_i_.his_stored_atoms = has_list ? histrj_i_.his_movable : histrj_i_.his_atoms;
  if (head.ok() && movable > histrj_i_.his_atoms) head.fail(read_error);
  if (!head.has_left(has_list ? 4 * movable : 0) || !has_list) return;
  head.block(histrj_p_.mov_atom_index, "MovAtomIndex", movable);
  if (head.ok() && !names_atoms(histrj_p_.mov_atom_index.span())) head.fail(read_error);
}

/// H9 and H10.
void read_molecules(HeadReader& head) {
  head.next();
  const std::int64_t molecules = histrj_i_.his_molecules = head.count();
  if (!head.has_left(8 * molecules)) return;
  head.block(histrj_p_.atoms_per_mol, "NAtomsPermol", molecules);
  head.block(histrj_p_.residues_per_mol, "NResPermol", molecules);

  head.next();
  const std::int64_t residues = histrj_i_.his_residues = head.count();
  if (!head.has_left(12 * residues)) return;
  head.block(histrj_p_.res_atom_index, "ResAtomIndex", 2 * residues);
  head.block(histrj_p_.res_name_index, "ResNameIndex", residues);
}

/// H11 and H12.
void read_bonds(HeadReader& head) {
  const bool separate = histrj_d_.his_version >= first_with_separate_bonds;
  head.next();
  const std::int64_t bonds = histrj_i_.his_bonds = head.payload().i32();
  if (!head.payload().ok() || bonds < 0) head.fail(read_error);
  if (separate && head.has_left(0) && bonds > 0) head.next();
  if (!head.has_left(8 * bonds) || bonds == 0) return;
  head.block(histrj_p_.bond_index, "BondIndex", 2 * bonds);
}

}  // namespace

void read_history_head(RecordReader& file, std::int32_t& status) {
  status = 0;
  HeadReader head(file, status);
  for (const auto part : {read_lines, read_types, read_movable, read_molecules, read_bonds}) {
    if (head.ok()) part(head);
  }
  histrj_i_.his_header_records = head.records();
}

}  // namespace pathstat
