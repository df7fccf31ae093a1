#include <regex>

#include "desk/messages/message.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

std::vector<MessageArgument> samples(std::string_view types) {
  std::vector<MessageArgument> arguments;
  for (const char type : types) {
    if (type == 's')
      arguments.emplace_back("text" + std::to_string(arguments.size()));
    else if (type == 'i')
      arguments.emplace_back(static_cast<std::int32_t>(10 + arguments.size()));
    else
      arguments.emplace_back(0.5 + static_cast<double>(arguments.size()));
  }
  return arguments;
}

/// Texts of the process's sources that look like the keys of messages.
std::set<std::string> keys_in_sources() {
  const std::regex key(
      "\"((PATHSTAT_(ERROR|WARN|MSG|DLG)_[0-9]+)|(KVZ_[A-Z_]+)|((Traj_|Crystal|FIL_Read|Stat|kvD_TRJ_Open)[A-Za-z0-9]+)"
      ")\"");
  std::set<std::string> keys;
  for (const auto& entry : fs::recursive_directory_iterator(SOURCE_DIR "/src")) {
    const auto path = entry.path().generic_string();
    if (!entry.is_regular_file() || path.find("/src/desk/") != std::string::npos) continue;
    std::ifstream file(entry.path());
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    for (auto match = std::sregex_iterator(text.begin(), text.end(), key); match != std::sregex_iterator(); ++match) {
      keys.insert((*match)[1]);
    }
  }
  return keys;
}

TEST(MessageCatalogue, has_a_row_for_every_key_that_the_process_can_raise) {
  const std::set<std::string> operations{"kvD_TRJ_OpenReadCore", "kvD_TRJ_OpenRead", "kvD_TRJ_OpenWrite"};
  const auto keys = keys_in_sources();
  EXPECT_THAT(keys, Not(IsEmpty()));
  for (const auto& key : keys) {
    EXPECT_TRUE(operations.contains(key) || find_message(key)) << key;
  }
}

TEST(MessageCatalogue, has_no_key_twice) {
  std::set<std::string_view> keys;
  for (const auto& row : message_rows()) EXPECT_TRUE(keys.insert(row.key).second) << row.key;
  std::set<std::int32_t> codes;
  for (const auto& row : status_rows()) EXPECT_TRUE(codes.insert(row.code).second) << row.code;
}

TEST(MessageCatalogue, has_a_place_in_each_text_for_every_argument_of_its_types) {
  const auto check = [](std::string_view text, std::string_view types, const auto& name) {
    const auto arguments = samples(types);
    const auto shown_text = filled(text, arguments);
    EXPECT_THAT(shown_text, Not(HasSubstr("{"))) << name;
    EXPECT_THAT(shown_text, Not(HasSubstr(" ["))) << name << ": an argument has no place";
    for (std::size_t k = 0; k < arguments.size(); ++k) {
      EXPECT_THAT(text, HasSubstr("{" + std::to_string(k))) << name;
    }
  };
  for (const auto& row : message_rows()) check(row.text, row.arguments, row.key);
  for (const auto& row : status_rows()) check(row.text, row.arguments, row.code);
}

TEST(MessageCatalogue, lines_up_the_columns_of_a_heading_with_those_of_its_lines) {
  struct Table {
    const char* heading;
    std::vector<const char*> lines;
  };
  for (const auto& table :
       {Table{"PATHSTAT_MSG_7", {"PATHSTAT_MSG_8", "PATHSTAT_MSG_9"}}, Table{"PATHSTAT_MSG_16", {"PATHSTAT_MSG_8"}},
        Table{"PATHSTAT_MSG_57", {"PATHSTAT_MSG_51"}}, Table{"PATHSTAT_MSG_43", {"PATHSTAT_MSG_10", "PATHSTAT_MSG_11"}},
        Table{"PATHSTAT_MSG_6", {"PATHSTAT_MSG_10", "PATHSTAT_MSG_11"}}, Table{"PATHSTAT_MSG_15", {"PATHSTAT_MSG_11"}},
        Table{"PATHSTAT_MSG_59", {"PATHSTAT_MSG_50"}}, Table{"PATHSTAT_MSG_56", {"PATHSTAT_MSG_50"}},
        Table{"PATHSTAT_MSG_53", {"PATHSTAT_MSG_50"}}, Table{"PATHSTAT_MSG_5", {"PATHSTAT_MSG_12", "PATHSTAT_MSG_13"}},
        Table{"PATHSTAT_MSG_14", {"PATHSTAT_MSG_12", "PATHSTAT_MSG_13"}}, Table{"PATHSTAT_MSG_55", {"PATHSTAT_MSG_49"}},
        Table{"PATHSTAT_MSG_52", {"PATHSTAT_MSG_49"}}, Table{"PATHSTAT_MSG_41", {"PATHSTAT_MSG_9"}},
        Table{"PATHSTAT_MSG_17", {"PATHSTAT_MSG_9"}}, Table{"PATHSTAT_MSG_24", {"PATHSTAT_MSG_26"}},
        Table{"PATHSTAT_MSG_25", {"PATHSTAT_MSG_27"}}, Table{"PATHSTAT_MSG_64", {"PATHSTAT_MSG_65"}}}) {
    const auto text_of = [](const char* key) {
      const auto* row = find_message(key);
      const auto text = filled(row->text, samples(row->arguments));
      return text.substr(text.rfind('\n') + 1);
    };
    for (const auto* line : table.lines)
      EXPECT_EQ(text_of(table.heading).size(), text_of(line).size()) << table.heading << ' ' << line;
  }
}

TEST(Message, loses_no_argument_that_the_text_has_no_place_for_or_that_does_not_fit) {
  EXPECT_EQ(filled("File {0}.", {std::string("a"), 7}), "File a. [7]");
  EXPECT_EQ(filled("{0} atoms and {1} bonds", {1, 11}), "1 atom and 11 bonds");
  EXPECT_EQ(filled("{0} points of {1} frames", {1, 0}), "1 point of 0 frames");
  EXPECT_EQ(filled("{0:>8.2f}", {std::string("a")}), "{0:>8.2f} [\"a\"]");
  EXPECT_EQ(filled("{0} of {1}", {3}), "{0} of {1} [3]");
  EXPECT_EQ(filled("{0:>5.3g}", {-std::numeric_limits<double>::quiet_NaN()}), "  nan");
  EXPECT_EQ(message_of(2, "NO_SUCH_KEY", {1.5, std::string("x")}).text, "NO_SUCH_KEY [1.5, \"x\"]");
}

TEST(MessageCatalogue, headings_tell_the_units_of_response_properties) {
  const auto heading = [](const char* label) {
    const auto text = message_of(2, "PATHSTAT_MSG_7", {std::string("TIME"), std::string(label)}).text;
    return text.substr(text.find_first_not_of(' ', text.find("TIME") + 4));
  };
  EXPECT_EQ(heading("Cp"), "Cp [cal/(mol K)]");
  EXPECT_EQ(heading("Cv - Total Energy               "), "Cv - Total Energy [cal/(mol K)]");
  EXPECT_EQ(heading("Gamma_v - Pressure-Kinetic"), "Gamma_v - Pressure-Kinetic [GPa/K]");
  EXPECT_EQ(heading("Dielectric Constant"), "Dielectric Constant");
  EXPECT_EQ(heading("mu of something"), "mu of something");
}

TEST(Message, of_a_status_names_the_routine_and_is_silent_for_what_is_no_failure) {
  const auto below = message_of_status(1001, "kvZ_ArgInt", {std::string("0"), std::string("1")});
  EXPECT_EQ(below.text, "0 is below the lowest value allowed, 1 (status 1001 of kvZ_ArgInt)");
  EXPECT_EQ(below.kind, MessageKind::error);
  EXPECT_EQ(message_of_status(-1001, "kvZ_ArgInt", {}).text, "");
  EXPECT_THAT(message_of_status(4711, "", {}).text, HasSubstr("4711"));
  EXPECT_EQ(message_of_status(-1000, "", {}).severity, 1);
}

}  // namespace
}  // namespace pathstat::desk
