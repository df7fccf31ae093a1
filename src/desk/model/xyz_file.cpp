#include "desk/model/xyz_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "desk/model/bond_search.h"
#include "desk/model/model_edit.h"
#include "structure/elements.h"
#include "structure/model_numbers.h"

namespace pathstat::desk {
namespace {

class XyzReader {
 public:
  explicit XyzReader(const std::string& path) : path_(path), file_(path) {
    model_.name = std::filesystem::path(path).stem().string();
  }

  ImportedModels read() {
    if (!file_.is_open()) return {{}, fmt::format("{} can't be opened", path_)};
    if (!(count() && comment() && atoms())) return {{}, fmt::format("{}, line {}: {}", path_, line_number_, problem_)};
    find_bonds(model_);
    ImportedModels result;
    result.models.push_back(std::move(model_));
    return result;
  }

 private:
  bool fail(std::string problem) {
    problem_ = std::move(problem);
    return false;
  }
  bool next_line() {
    ++line_number_;
    return bool(std::getline(file_, line_)) || fail("the file ends here, in front of the end of its frame");
  }

  bool count() {
    if (!next_line()) return false;
    std::vector<std::int32_t> numbers;
    if (!read_numbers(line_, numbers) || numbers.size() != 1 || numbers.front() < 1) {
      return fail("here stands the number of atoms");
    }
    count_ = static_cast<std::size_t>(numbers.front());
    return true;
  }

  /// The text in quotes behind a name and "="; empty without it.
  std::string_view quoted(std::string_view name) const {
    const auto start = line_.find(name);
    if (start == std::string::npos) return {};
    const auto from = start + name.size();
    const auto end = line_.find('"', from);
    return end == std::string::npos ? std::string_view{} : std::string_view(line_).substr(from, end - from);
  }

  bool comment() {
    if (!next_line()) return false;
    constexpr std::string_view lattice = "Lattice=\"",
                               properties = "Properties=", usual = "Properties=species:S:1:pos:R:3";
    const auto columns = line_.find(properties);
    if (columns != std::string::npos && line_.compare(columns, usual.size(), usual) != 0) {
      return fail("the columns have to begin with species:S:1:pos:R:3");
    }
    if (line_.find(lattice) == std::string::npos) return true;
    std::vector<double> numbers;
    if (!read_numbers(quoted(lattice), numbers) || numbers.size() != 9) return fail("a lattice has nine numbers");
    for (std::size_t k = 0; k < 9; ++k) model_.cell[k / 3][k % 3] = numbers[k];
    model_.periodic_type = periodic_3d;
    return is_usable_cell(periodic_3d, model_.cell) || fail("the cell spans no space");
  }

  bool atoms() {
    for (std::size_t k = 0; k < count_; ++k) {
      if (!next_line() || !atom()) return false;
    }
    return true;
  }

  bool atom() {
    const auto words = split_words(line_);
    std::vector<double> x;
    if (words.size() >= 4) {
      const auto* end = words[3].data() + words[3].size();
      if (!read_numbers({words[1].data(), static_cast<std::size_t>(end - words[1].data())}, x)) x.clear();
    }
    const bool good = x.size() == 3 && std::all_of(x.begin(), x.end(), [](double each) { return std::isfinite(each); });
    if (!good) return fail("an atom is an element and three coordinates");
    const auto element = element_of_symbol(words[0]);
    if (element == 0) return fail(fmt::format("\"{}\" is no element", words[0].substr(0, 16)));
    append_atom(model_, static_cast<std::int32_t>(model_.atoms() + 1),
                {.element = element, .position = {x[0], x[1], x[2]}});
    return true;
  }

  std::string path_;
  std::ifstream file_;
  std::string line_;
  std::int32_t line_number_ = 0;
  std::size_t count_ = 0;
  MolecularModel model_;
  std::string problem_;
};

}  // namespace

ImportedModels read_xyz_file(const std::string& path) { return XyzReader(path).read(); }

}  // namespace pathstat::desk
