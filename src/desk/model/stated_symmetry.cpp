#include "desk/model/stated_symmetry.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <gemmi/symmetry.hpp>
#include <set>
#include <stdexcept>
#include <string_view>

#include "desk/model/group_library.h"
#include "desk/model/library_operators.h"
#include "desk/model/symmetry.h"
#include "structure/symmetry_codes.h"

namespace pathstat::desk {
namespace {

using Operations = std::vector<gemmi::Op>;

struct ReadOperations {
  Operations list;
  std::string problem;
};

/// Numbers in a triplet are short; longer ones would run over in the reader of the library.
bool is_sensible(std::string_view triplet) {
  constexpr std::size_t most_characters = 80;
  constexpr int most_digits = 3;
  int digits = 0;
  for (const char c : triplet) {
    digits = std::isdigit(static_cast<unsigned char>(c)) != 0 ? digits + 1 : 0;
    if (digits > most_digits) return false;
  }
  return triplet.size() <= most_characters;
}

ReadOperations from_triplets(const std::vector<std::string>& triplets) {
  if (triplets.size() > most_group_operators) {
    return {{}, fmt::format("there are {} symmetry operators, more than any space group has", triplets.size())};
  }
  ReadOperations read;
  read.list.push_back(gemmi::Op::identity());
  for (const auto& triplet : triplets) {
    try {
      if (!is_sensible(triplet)) throw std::invalid_argument("too long");
      const auto op = gemmi::parse_triplet(triplet).wrap();
      if (std::find(read.list.begin(), read.list.end(), op) == read.list.end()) read.list.push_back(op);
    } catch (const std::exception&) {
      return {{}, fmt::format("\"{}\" is no symmetry operator", triplet.substr(0, 80))};
    }
  }
  return read;
}

/// True if all elements of the rotation are -1, 0 or 1, and it has an inverse.
bool is_rotation(const gemmi::Op& op) {
  constexpr int one = gemmi::Op::DEN;
  const bool small = std::all_of(op.rot.begin(), op.rot.end(), [](const auto& row) {
    return std::all_of(row.begin(), row.end(), [](int x) { return x == 0 || x == one || x == -one; });
  });
  return small && std::abs(op.det_rot()) == one * one * one;
}

/// True if the product of any two operators is one of them.
bool is_group(const Operations& list) {
  const auto key = [](const gemmi::Op& op) { return std::pair(op.rot, op.tran); };
  std::set<std::pair<gemmi::Op::Rot, gemmi::Op::Tran>> known;
  for (const auto& op : list) {
    if (!is_rotation(op)) return false;
    known.insert(key(op));
  }
  return std::all_of(list.begin(), list.end(), [&](const gemmi::Op& one) {
    return std::all_of(list.begin(), list.end(),
                       [&](const gemmi::Op& other) { return known.contains(key(one * other)); });
  });
}

Operations as_operations(const SymmetryOperators& operators) {
  Operations list;
  const auto whole = [](double x) { return static_cast<int>(std::lround(x * gemmi::Op::DEN)); };
  for (std::size_t k = 0; k < operators.size(); ++k) {
    auto op = gemmi::Op::identity();
    for (std::size_t row = 0; row < 3; ++row) {
      for (std::size_t column = 0; column < 3; ++column) {
        op.rot[row][column] = whole(operators.rotations[k][row + 3 * column]);
      }
      op.tran[row] = whole(operators.translations[k][row]);
    }
    list.push_back(op.wrap());
  }
  return list;
}

const gemmi::SpaceGroup* group_of(const Operations& list) {
  return gemmi::find_spacegroup_by_ops(gemmi::split_centering_vectors(list));
}

FoundSymmetry found(const gemmi::GroupOps& group) {
  Operations list;
  for (const auto& op : group) list.push_back(op);
  return {as_operators(list), {}};
}

/// False for a screw whose axis is along no cell vector, for which gemmi would write outside its translation. Without a
/// letter the axis is z for the first symbol of a matrix, and x for a twofold one behind a two- or fourfold one.
bool screws_have_axes(std::string_view hall) {
  constexpr std::string_view blanks = " \t_";
  const auto behind_blanks = [&](std::size_t at) { return std::min(hall.find_first_not_of(blanks, at), hall.size()); };
  std::size_t at = behind_blanks(0);
  if (at < hall.size() && hall[at] == '-') at = behind_blanks(at + 1);
  at = behind_blanks(at + 1);  // of the lattice
  char before = 0;
  for (int place = 1; at < hall.size() && hall[at] != '('; ++place) {
    const auto symbol = hall.substr(at, std::min(hall.find_first_of(blanks, at), hall.size()) - at);
    at = behind_blanks(at + symbol.size());
    if (symbol == "1") continue;
    const auto digit = symbol.find_first_of("0123456789");
    if (digit == symbol.npos) continue;
    const bool screw = symbol.find_first_of("0123456789", digit + 1) != symbol.npos;
    const bool on_vector = symbol.find_first_of("xyz") != symbol.npos;
    const bool on_diagonal = symbol.find_first_of("'\"*") != symbol.npos;
    const bool implied = place == 1 || (place == 2 && symbol[digit] == '2' && (before == '2' || before == '4'));
    if (screw && !on_vector && (on_diagonal || !implied)) return false;
    before = symbol[digit];
  }
  return true;
}

FoundSymmetry of_hall_symbol(const std::string& hall) {
  constexpr std::size_t most_characters = 40;
  try {
    if (hall.size() > most_characters || !screws_have_axes(hall)) throw std::invalid_argument("not to be read");
    const auto group = gemmi::symops_from_hall(hall.c_str());
    if (group.order() <= most_group_operators) return found(group);
  } catch (const std::exception&) {
    // Told below.
  }
  return {{}, fmt::format("\"{}\" is no Hall symbol of a space group", hall.substr(0, most_characters))};
}

}  // namespace

FoundSymmetry find_symmetry(const StatedSymmetry& stated) {
  if (!stated.triplets.empty()) {
    const auto read = from_triplets(stated.triplets);
    if (!read.problem.empty()) return {{}, read.problem};
    if (read.list.size() > most_group_operators || !is_group(read.list))
      return {{}, "the symmetry operators are not a group"};
    const auto* group = group_of(read.list);
    return group ? found(group->operations()) : FoundSymmetry{as_operators(read.list), {}};
  }
  if (!stated.hall.empty()) return of_hall_symbol(stated.hall);
  if (!stated.name.empty()) {
    const auto* group = gemmi::find_spacegroup_by_name(stated.name, stated.alpha, stated.gamma);
    if (group) return found(group->operations());
    return {{}, fmt::format("there is no space group \"{}\"", stated.name.substr(0, 80))};
  }
  const auto* group = gemmi::find_spacegroup_by_number(stated.number == 0 ? 1 : stated.number);
  if (group) return found(group->operations());
  return {{}, fmt::format("there is no space group of number {}", stated.number)};
}

StatedSymmetry stated_symmetry(const SymmetryOperators& operators) {
  StatedSymmetry stated;
  const auto list = as_operations(operators);
  for (const auto& op : list) stated.triplets.push_back(op.triplet());
  if (const auto* group = group_of(list)) {
    stated.hall = group->hall;
    stated.name = group->xhm();
    stated.number = group->number;
  }
  return stated;
}

}  // namespace pathstat::desk
