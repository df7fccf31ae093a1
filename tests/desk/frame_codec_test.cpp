#include "desk/ops/frame_codec.h"

#include "desk/ops/operation_server.h"
#include "memory_stream.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

std::vector<SlotValue> read_ok(const char* name, std::vector<std::byte> bytes) {
  MemoryStream stream(std::move(bytes));
  std::vector<SlotValue> inputs;
  EXPECT_THAT(read_call(stream, *find_operation(name), inputs), IsEmpty());
  EXPECT_EQ(stream.left(), 0u);
  return inputs;
}

std::vector<std::byte> written(const OperationCall& call, const OperationReply& reply) {
  MemoryStream stream;
  EXPECT_THAT(write_reply(stream, call, reply), IsEmpty());
  return stream.output;
}

TEST(FrameCodec, reads_a_count_then_as_many_integers_and_three_doubles_each) {
  const auto inputs = read_ok(
      "kvD_SetXYZ", bytes_of({0,    0,    0, 2, 0, 0, 0, 5, 0, 0, 0, 1, 0, 0, 1, 1, 0x3f, 0xf0, 0, 0, 0, 0, 0, 0,  // 1
                              0xc0, 0x00, 0, 0, 0, 0, 0, 0,                                                        // -2
                              0x3f, 0xe0, 0, 0, 0, 0, 0, 0}));  // 0.5
  ASSERT_EQ(inputs.size(), 3u);
  EXPECT_EQ(std::get<std::int32_t>(inputs[0]), 1);
  EXPECT_THAT(std::get<std::vector<std::int32_t>>(inputs[1]), ElementsAre(257));
  EXPECT_THAT(std::get<std::vector<double>>(inputs[2]), ElementsAre(1.0, -2.0, 0.5));
}

TEST(FrameCodec, reads_a_text_between_a_count_and_its_array) {
  const auto inputs =
      read_ok("kvD_UD_SetVector", bytes_of({0, 0, 0, 2, 0, 0, 0, 5, 0, 0, 0, 1, 0, 2, 'V', 0, 0, 0, 0, 9, 0, 0,
                                            0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,   0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(std::get<std::string>(inputs[1]), "V");
  EXPECT_THAT(std::get<std::vector<std::int32_t>>(inputs[2]), ElementsAre(9));
  EXPECT_EQ(std::get<std::vector<double>>(inputs[3]).size(), 3u);
}

TEST(FrameCodec, counts_the_sets_of_a_graph_by_its_set_count_and_not_by_the_integer_next_to_them) {
  const auto inputs = read_ok("kvP_GRF_SetMethodXY",
                              bytes_of({0, 0, 0,   2, 0,    0,    0,    1, 0, 0, 0, 5,  0, 0, 0, 1, 0, 0, 8,   12,
                                        0, 0, 0,   0, 0x45, 0x9c, 0x40, 0, 0, 0, 0, 0,  0, 0, 0, 0, 0, 0, 0,   1,
                                        0, 2, 'T', 0, 0,    2,    'x',  0, 0, 0, 0, 11, 0, 0, 0, 6, 0, 2, 'y', 0}));
  ASSERT_EQ(inputs.size(), 13u);
  EXPECT_EQ(std::get<float>(inputs[4]), 5000.0f);
  EXPECT_THAT(std::get<std::vector<std::int32_t>>(inputs[11]), ElementsAre(6));
  EXPECT_EQ(std::get<std::string>(inputs[12]), "y");
}

struct HostileFrame {
  const char* rule;
  const char* operation;
  std::vector<std::byte> bytes;
  const char* reason;
};

const HostileFrame cases[] = {
    {"negative_count", "kvD_Id", bytes_of({0, 0, 0, 2, 0, 0, 0, 5, 0xff, 0xff, 0xff, 0xff}), "a length of -1"},
    {"huge_count", "kvD_Id", bytes_of({0, 0, 0, 2, 0, 0, 0, 5, 0x7f, 0xff, 0xff, 0xff}), "a length of 2147483647"},
    {"count_beyond_the_stream", "kvD_XYZ", bytes_of({0, 0, 0, 2, 0, 0, 0, 5, 0x05, 0, 0, 0, 0, 0, 0, 1}), "broke off"},
    {"huge_capacity", "kvD_MOD_AtomList", bytes_of({0, 0, 0, 2, 0, 0, 0, 5, 0, 0, 0, 1, 0, 0, 0, 1, 0x7f, 0, 0, 0}),
     "a length of"},
    {"text_without_length", "kvU_MSG_ArgS", bytes_of({0, 0, 0, 2, 0, 0, 0, 1, 0, 0}), "broke off"},
    {"negative_text", "kvU_MSG_ArgS", bytes_of({0, 0, 0, 2, 0, 0, 0, 1, 0x80, 0, 'a'}), "broke off"},
    {"wrong_first_word", "kvD_Root", bytes_of({0, 0, 0, 3, 0, 0, 0, 5}), "begins with 3"},
    {"word_of_another_family", "kvD_Root", bytes_of({0, 0, 0, 2, 0, 0, 0, 1}), "instead of 2 and 5"},
    {"no_words", "kvD_Root", bytes_of({0, 0, 0, 2}), "broke off"}};

TEST(HostileFrames, are_refused_with_a_reason) {
  for (const auto& row : cases) {
    SCOPED_TRACE(row.rule);
    MemoryStream stream(row.bytes);
    std::vector<SlotValue> inputs;
    EXPECT_THAT(read_call(stream, *find_operation(row.operation), inputs), HasSubstr(row.reason));
  }
}

TEST(FrameCodec, pads_an_output_array_to_the_capacity_before_its_count) {
  const OperationCall call{*find_operation("kvD_MOD_AtomList"), {7, 1, 3}};
  OperationReply reply;
  reply.put(std::vector<std::int32_t>{21, 22});
  reply.put(std::int32_t{2});
  EXPECT_EQ(written(call, reply), bytes_of({0, 0, 0, 1, 0, 0, 0, 21, 0, 0, 0, 22, 0, 0, 0, 0,  //
                                            0, 0, 0, 2, 0, 0, 0, 0,  0, 0, 0, 0}));
}

TEST(FrameCodec, cuts_an_array_at_the_count_of_the_call_and_fills_what_a_failed_call_left_out) {
  OperationReply cut;
  cut.put(std::vector<std::int32_t>{5, 6, 7});
  const OperationCall one{*find_operation("kvD_Id"), {1, std::vector<std::int32_t>{5}}};
  EXPECT_EQ(written(one, cut), bytes_of({0, 0, 0, 1, 0, 0, 0, 5, 0, 0, 0, 0, 0, 0, 0, 0}));

  OperationReply failed;
  failed.error = 4;
  failed.result = -1;
  EXPECT_EQ(written(one, failed), bytes_of({0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 4, 0xff, 0xff, 0xff, 0xff}));
}

TEST(FrameCodec, cuts_a_text_at_the_capacity_and_ends_it_with_a_nul) {
  const OperationCall call{*find_operation("kvU_TLS_GetModalState"), {9, 4}};
  OperationReply reply;
  reply.put(std::string("DEFAULT"));
  EXPECT_EQ(written(call, reply), bytes_of({0, 0, 0, 1, 0, 5, 'D', 'E', 'F', 'A', 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(FrameCodec, refuses_an_answer_of_another_type_than_the_row_says) {
  const OperationCall call{*find_operation("kvD_MOD_Current"), {}};
  OperationReply reply;
  reply.put(std::string("seven"));
  MemoryStream stream;
  EXPECT_THAT(write_reply(stream, call, reply), HasSubstr("kvD_MOD_Current"));
}

TEST(FrameCodec, carries_arrays_longer_than_its_own_blocks_unchanged) {
  const std::int32_t count = 50001;
  std::vector<float> values(static_cast<std::size_t>(2 * count));
  for (std::size_t k = 0; k < values.size(); ++k) values[k] = static_cast<float>(k) * 0.5f;
  MemoryStream frame;
  for (const std::int32_t word : {2, 1, 3, 801, count}) write_value(frame, word);
  write_array<float>(frame, values, values.size());
  const auto inputs = read_ok("kvP_DAT_WriteXY", frame.output);
  EXPECT_EQ(std::get<std::vector<float>>(inputs[3]), values);
}

TEST(OperationServer, hands_out_a_number_of_its_own_for_each_operation_that_no_code_of_the_wire_equals) {
  const OperationServer server;
  for (const auto& row : all_operations()) {
    const auto binding = server.bind(static_cast<std::int32_t>(row.family), row.name);
    EXPECT_GT(binding, 80000) << row.name;
    EXPECT_EQ(server.bound(binding), &row);
  }
  EXPECT_EQ(server.bind(20000, "kvD_XYZ"), 0);
  EXPECT_EQ(server.bind(10000, "kvD_Missing"), 0);
  for (const std::int32_t number : {-64, -1, 0, 1, 10000, 99999, OperationServer::first_binding + 100000}) {
    EXPECT_EQ(server.bound(number), nullptr) << number;
  }
}

TEST(OperationServer, answers_with_an_error_where_nobody_serves_or_the_server_fails) {
  OperationServer server;
  const OperationCall call{*find_operation("kvD_Root"), {}};
  EXPECT_NE(server.serve(call).error, 0);
  server.on("kvD_Root", [](const OperationCall&, OperationReply& reply) {
    reply.put(std::int32_t{3});
    throw std::bad_alloc();
  });
  const auto reply = server.serve(call);
  EXPECT_NE(reply.error, 0);
  EXPECT_THAT(reply.outputs, IsEmpty());
}

}  // namespace
}  // namespace pathstat::desk
