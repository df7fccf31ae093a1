#include "main/applications.h"

#include <array>

#include "analysis/analysis.h"
#include "analysis/analysis_state.h"
#include "building/building.h"

namespace pathstat {
namespace {

constexpr std::array rows{
    Application{application_key,
                false,
                0,
                {set_pathstat_, get_pathstat_, init_pathstat_, terminate_pathstat_, load_pathstat_, save_pathstat_}},
    Application{building_key,
                true,
                0,
                {set_building, get_building, init_building, terminate_building, load_building, save_building}},
};

}  // namespace

std::span<const Application> applications_of_process() { return rows; }

std::span<const WordTable* const> words_of_applications() {
  static const std::array tables{&analysis_words(), &building_words()};
  return tables;
}

}  // namespace pathstat
