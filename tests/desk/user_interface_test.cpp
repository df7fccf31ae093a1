#include "desk/ops/user_interface.h"

#include "surroundings.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

class UserInterfaceTest : public testing::Test {
 protected:
  UserInterfaceTest() { register_interface_operations(server_, ui_); }

  OperationReply serve(const char* name, std::vector<SlotValue> inputs = {}) {
    return server_.serve({*find_operation(name), std::move(inputs)});
  }

  std::vector<Message> messages_;
  std::vector<double> progress_;
  std::vector<std::string> status_;
  bool interrupted_ = false;
  UserInterface ui_{{.message = [this](const Message& message) { messages_.push_back(message); },
                     .progress = [this](double fraction) { progress_.push_back(fraction); },
                     .status = [this](const std::string& text) { status_.push_back(text); },
                     .returned = {},
                     .interrupted = [this] { return interrupted_; }}};
  OperationServer server_;
};

TEST_F(UserInterfaceTest, fills_a_message_with_the_arguments_queued_for_it_and_no_other) {
  serve("kvU_MSG_ArgI", {8});
  serve("kvU_MSG_ArgI", {9});
  serve("kvU_MSG_Display", {2, std::string("PATHSTAT_ERROR_61")});
  serve("kvU_MSG_Display", {2, std::string("PATHSTAT_ERROR_57")});
  ASSERT_EQ(messages_.size(), 2u);
  EXPECT_THAT(messages_[0].text, HasSubstr("frames 8 and 9"));
  EXPECT_THAT(messages_[1].arguments, IsEmpty());
}

TEST_F(UserInterfaceTest, keeps_only_so_many_arguments_of_a_process_that_never_displays) {
  for (int k = 0; k < 1000; ++k) serve("kvU_MSG_ArgD", {0.5});
  serve("kvU_MSG_Display", {2, std::string("PATHSTAT_ERROR_57")});
  EXPECT_LE(messages_[0].arguments.size(), 64u);
}

TEST_F(UserInterfaceTest, drops_the_arguments_of_a_status_that_has_nothing_to_tell) {
  serve("kvU_MSG_ArgI", {3});
  serve("kvU_MSG_DisplayError", {2, -1001, std::string("kvZ_ArgInt")});
  EXPECT_THAT(messages_, IsEmpty());
  serve("kvU_MSG_ArgI", {4});
  const auto reply = serve("kvU_MSG_DisplayError", {2, 1005, std::string("kvZ_ArgInt")});
  EXPECT_EQ(std::get<std::int32_t>(reply.outputs[0]), 2);
  EXPECT_THAT(messages_[0].text, HasSubstr("Argument 4 is missing"));
}

TEST_F(UserInterfaceTest, answers_dialogs_as_settled_and_else_by_their_default) {
  const auto choice = [&](const char* operation, const char* key, const char* options, int unsettled) {
    std::vector<SlotValue> inputs{std::string(key), std::string(options)};
    if (std::string_view(operation) == "kvU_DLG_GetOption") inputs.emplace_back(unsettled);
    return std::get<std::int32_t>(serve(operation, inputs).outputs[0]);
  };
  EXPECT_EQ(choice("kvU_DLG_GetOption", "PATHSTAT_DLG_1", "PATHSTAT_DLG_2", 3), 3);
  EXPECT_EQ(choice("kvU_DLG_GetOption", "PATHSTAT_DLG_1", "PATHSTAT_DLG_2", 0), 1) << "choices count from 1";
  EXPECT_EQ(choice("kvU_MOD_GetOption", "StatFilePrompt", "StatFileOptions", 0), 0) << "nobody was asked";
  ui_.settle_answer("PATHSTAT_DLG_1", 2);
  ui_.settle_answer("StatFilePrompt", 1);
  EXPECT_EQ(choice("kvU_DLG_GetOption", "PATHSTAT_DLG_1", "PATHSTAT_DLG_2", 3), 2);
  EXPECT_THAT(messages_.back().text, HasSubstr("Answer 2: Use the current model"));
  EXPECT_EQ(choice("kvU_MOD_GetOption", "StatFilePrompt", "StatFileOptions", 0), 1);
}

TEST(Dialogs, ask_the_user_unless_the_answer_is_settled_and_tell_how_to_answer_where_nobody_does) {
  std::vector<std::string> told;
  std::vector<Question> asked;
  std::optional<std::int32_t> answer = 2;
  UserInterface ui({.message = [&](const Message& message) { told.push_back(message.text); },
                    .progress = {},
                    .status = {},
                    .returned = {},
                    .interrupted = {},
                    .choose =
                        [&](const Question& question) {
                          asked.push_back(question);
                          return answer;
                        }});
  EXPECT_EQ(ui.ask("PATHSTAT_DLG_1", "PATHSTAT_DLG_2", 1), 2);
  ASSERT_EQ(asked.size(), 1u);
  EXPECT_THAT(asked[0].choices, ElementsAre("Import the model file", "Use the current model", "Cancel"));
  EXPECT_EQ(asked[0].unsettled, 1);
  EXPECT_THAT(told.back(), EndsWith("Answer 2: Use the current model"));
  answer.reset();
  EXPECT_EQ(ui.ask("PATHSTAT_DLG_1", "PATHSTAT_DLG_2", 1), 1);
  EXPECT_THAT(told.back(),
              HasSubstr("(the default; @answer PATHSTAT_DLG_1 takes another: 2 for \"Use the current model\""));
  ui.settle_answer("PATHSTAT_DLG_1", 3);
  EXPECT_EQ(ui.ask("PATHSTAT_DLG_1", "PATHSTAT_DLG_2", 1), 3);
  EXPECT_EQ(asked.size(), 2u);
}

TEST_F(UserInterfaceTest, keeps_a_modal_state_for_each_class) {
  EXPECT_EQ(serve("kvU_TLS_GetModalState", {9, 50}).outputs[0], SlotValue(std::string("DEFAULT")));
  serve("kvU_TLS_SetModalState", {9, std::string("ANALYSIS_PICK")});
  EXPECT_EQ(serve("kvU_TLS_GetModalState", {9, 50}).outputs[0], SlotValue(std::string("ANALYSIS_PICK")));
  EXPECT_EQ(serve("kvU_TLS_GetModalState", {8, 50}).outputs[0], SlotValue(std::string("DEFAULT")));
}

TEST_F(UserInterfaceTest, reports_progress_within_its_bounds_and_a_status_with_its_argument) {
  for (const float fraction : {-1.0f, 0.25f, 7.0f}) serve("kvU_INT_ReportProgress", {fraction});
  EXPECT_THAT(progress_, ElementsAre(0.0, 0.25, 1.0));
  serve("kvU_MSG_ArgI", {150});
  serve("kvU_INT_ReportStatus", {std::string("PATHSTAT_MSG_67"), 1});
  serve("kvU_INT_ReportStatus", {std::string(""), 0});
  EXPECT_THAT(status_, ElementsAre("Counting frames: 150", ""));
}

TEST_F(UserInterfaceTest, passes_the_interrupt_key_on) {
  EXPECT_EQ(serve("kvU_INT_RequestCoreInterrupt").result, 0);
  interrupted_ = true;
  EXPECT_EQ(serve("kvU_INT_RequestCoreInterrupt").result, 1);
}

TEST_F(UserInterfaceTest, gives_the_items_of_a_path_variable_counted_from_1) {
  const std::string name = "PATHDESK_TEST_ITEMS";
  const ScopedVariable items(name, "/a::/b");
  EXPECT_EQ(serve("kvS_GetenvPathItemTotal", {name}).result, 2);
  EXPECT_EQ(serve("kvS_GetenvPathItem", {name, 2, 1024}).outputs[0], SlotValue(std::string("/b")));
  for (const std::int32_t item : {0, -5, 3}) {
    EXPECT_EQ(serve("kvS_GetenvPathItem", {name, item, 1024}).outputs[0], SlotValue(std::string())) << item;
  }
  const ScopedVariable none(name, nullptr);
  EXPECT_EQ(serve("kvS_GetenvPathItemTotal", {name}).result, 0);
}

}  // namespace
}  // namespace pathstat::desk
