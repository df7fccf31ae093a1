#pragma once

#include <map>
#include <string>
#include <vector>

namespace pathstat::desk {

/// A data block of a Crystallographic Information File: the values of each tag, one where the tag is in no loop. Tags
/// are in lower case, values without their quotes; those that are not known ("?", ".") are empty.
struct CifBlock {
  std::string name;
  std::map<std::string, std::vector<std::string>> columns;
};

struct CifText {
  std::vector<CifBlock> blocks;
  std::string problem;  ///< where and why the text is no such file; empty if all is well
};

/// Splits the text of a file. @param name  of the file, for the problem
CifText split_cif(const std::string& text, const std::string& name);

}  // namespace pathstat::desk
