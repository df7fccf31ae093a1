#include "building/building.h"

#include "building/asymmetric_unit.h"
#include "building/build_settings.h"
#include "building/command_words.h"
#include "building/field_actions.h"
#include "building/queries.h"

namespace pathstat {

const WordTable& building_words() {
  static const WordTable table{building_key, "Structures", building_command_words(), building_queries()};
  return table;
}

std::int32_t set_building(std::string_view command, std::string_view arguments) {
  return run_command(building_words(), command, arguments);
}

void get_building(std::string_view key) { answer_request(building_words(), key); }

void init_building() {
  asymmetric_unit = {};
  field_actions::forget_fields();
  build_settings = {};
}

// What was built stands in the Core, and nothing of this application outlives the process.
void terminate_building() { field_actions::forget_fields(); }
void load_building() {}
void save_building() {}

}  // namespace pathstat
