#include "structure/space_groups.h"

#include "in_process_core.h"
#include "structure/crystal_vectors.h"
#include "structure/lattice_types.h"
#include "testing.h"

namespace pathstat {
namespace {

constexpr Matrix3 identity{1, 0, 0, 0, 1, 0, 0, 0, 1};

struct Group {
  std::string name;
  std::int32_t number, option, lattice, centring;
};

/// A Core whose library holds these groups, with the identifiers 901, 902, and so on.
class Library : public testing::Test {
 protected:
  Library() {
    using desk::OperationCall, desk::OperationReply;
    const auto listed = [this](auto matches, std::int32_t capacity, OperationReply& reply) {
      std::vector<std::int32_t> ids;
      for (std::size_t k = 0; k < groups.size(); ++k) {
        if (matches(groups[k])) ids.push_back(first + static_cast<std::int32_t>(k));
      }
      const auto count = static_cast<std::int32_t>(ids.size());
      ids.resize(std::min(ids.size(), static_cast<std::size_t>(capacity)));
      reply.put(ids);
      reply.put(count);
      reply.error = search_error;
    };
    core.server.on("kvD_SGR_FindByName", [=](const OperationCall& call, OperationReply& reply) {
      listed([&](const Group& group) { return group.name == call.text(1); }, call.integer(3), reply);
    });
    core.server.on("kvD_SGR_FindByITNum", [=](const OperationCall& call, OperationReply& reply) {
      listed([&](const Group& group) { return group.number == call.integer(1) && group.option == call.integer(2); },
             call.integer(3), reply);
    });
    serve("kvD_SGR_OptionId", &Group::option);
    serve("kvD_SGR_LatticeType", &Group::lattice);
    serve("kvD_SGR_CenteringType", &Group::centring);
    core.server.on("kvD_SGR_Name", [this](const OperationCall& call, OperationReply& reply) {
      reply.put(groups.at(static_cast<std::size_t>(call.integer(0) - first)).name);
    });
    core.server.on("kvD_MOD_3DSymmetry",
                   [this](const OperationCall&, OperationReply& reply) { reply.put(group_of_model); });
    model = core.import_text(
        "(1 Model box\n (A I PeriodicType 100)\n (A V Cell ((5 0 0) (0 6 0) (0 0 8)))\n"
        " (A I AtomId (1))\n (A C Element (Ar))\n (A V XYZ ((1 1 1)))\n)\n");
  }

  void serve(std::string_view operation, std::int32_t Group::*member) {
    core.server.on(operation, [=, this](const desk::OperationCall& call, desk::OperationReply& reply) {
      reply.put(groups.at(static_cast<std::size_t>(call.integer(0) - first)).*member);
    });
  }

  void attach(const std::string& name, desk::UserValue::Kind kind, std::vector<std::int32_t> values) {
    core.model.set_user_value(model, name, {kind, std::move(values)});
  }
  void attach_number(std::int32_t number, std::int32_t option) {
    attach("CRY/CONVENTIONAL_SGSYMMETRY", desk::UserValue::Kind::int_array, {number, option});
  }

  static constexpr std::int32_t first = 901;
  std::vector<Group> groups{{"P 1", 1, 1, 0, 0},      {"F d d d", 70, 2, 4, 2},  {"F d d d", 70, 1, 4, 2},
                            {"F d d d", 70, 1, 4, 2}, {"F m 3 m", 225, 1, 9, 2}, {"R 3", 146, 1, 5, 6},
                            {"R 3", 146, 2, 6, 0},    {"odd", 300, 1, 9, 3},     {"C mF", 301, 1, 16, 0}};
  std::int32_t search_error = 0, group_of_model = 0, model = 0;
  InProcessCore core;
};

TEST_F(Library, is_searched_by_name_or_number) {
  struct Case {
    const char* name;
    std::int32_t number, option, group, option_out, status;
    const char* name_out;
  };
  for (const Case& c : std::vector<Case>{
           {"P 1", 0, 0, 901, 1, 0, "P 1"},
           {"F d d d", 0, 0, 903, 1, 0, "F d d d"},   // the lowest option, the first of equals
           {"F d d d", -7, 1, 904, 1, 0, "F d d d"},  // the last of equals
           {"F d d d", 0, 2, 902, 2, 0, "F d d d"},
           {"F d d d", 0, 3, 0, 3, 1, "F d d d"},
           {"nothing", 0, 0, 0, 0, 1, "nothing"},
           {"", 225, 0, 905, 1, 0, "F m 3 m"},
           {"P 1", 146, 2, 907, 2, 0, "R 3"},
           {"P 1", 146, 3, 0, 3, 1, "P 1"},
           {"P 1", 70, 0, 0, 1, 1, "P 1"},  // two of that number and option
       }) {
    Text<12> name = c.name;
    std::int32_t option = c.option, group = 99, status = -1;
    kva_sgr_getspaceid_(name, c.number, option, group, status);
    EXPECT_EQ(group, c.group) << c.name << c.number;
    EXPECT_EQ(option, c.option_out) << c.name << c.number;
    EXPECT_EQ(status, c.status) << c.name << c.number;
    EXPECT_EQ(name.str(), c.name_out) << c.number;
  }
  EXPECT_TRUE(core.messages.empty());
}

TEST_F(Library, gives_at_most_eighteen_groups) {
  groups.assign(30, {"many", 1, 5, 0, 0});
  groups[17].option = 2;
  groups[18].option = 1;
  Text<12> name = "many";
  std::int32_t option = 0, group = 0, status = -1;
  kva_sgr_getspaceid_(name, 0, option, group, status);
  EXPECT_EQ(group, 901 + 17);
  EXPECT_EQ(option, 2);
}

TEST_F(Library, that_fails_is_a_status_and_no_message) {
  search_error = 5;
  for (const std::int32_t number : {0, 225}) {
    Text<12> name = "P 1";
    std::int32_t option = 0, group = 99, status = -1;
    kva_sgr_getspaceid_(name, number, option, group, status);
    EXPECT_TRUE(group == 0 && status == 1);
  }
  core.server.on("kvD_SGR_FindLibraryByName",
                 [](const desk::OperationCall&, desk::OperationReply& reply) { reply.error = 1; });
  search_error = 0;
  Text<12> name = "P 1";
  std::int32_t option = 0, group = 99, status = -1;
  kva_sgr_getspaceid_(name, 0, option, group, status);
  EXPECT_TRUE(group == 0 && status == 1);
  EXPECT_TRUE(core.messages.empty());
}

TEST_F(Library, tells_a_primitive_form_by_either_record) {
  const auto primitive_form = [&](std::int32_t lattice) {
    groups[0].lattice = lattice;
    std::int32_t form = 99;
    EXPECT_EQ(status_of(kva_sgr_islatticebravais_, model, first, form), 0);
    return form;
  };
  EXPECT_EQ(primitive_form(16), 0);
  attach_number(225, 1);
  for (std::int32_t lattice = -1; lattice <= 17; ++lattice) {
    EXPECT_EQ(primitive_form(lattice), lattice == 6 || (lattice >= 10 && lattice <= 16) ? 1 : 0) << lattice;
  }
  core.model.remove_user_value(model, "CRY/CONVENTIONAL_SGSYMMETRY");
  EXPECT_EQ(primitive_form(10), 0);
  attach("CRY/CONVENTIONAL_SGSYMMETRY", desk::UserValue::Kind::int_array, {225});  // half a record is none
  EXPECT_EQ(primitive_form(10), 0);
  attach("CRY/CONVENTIONAL_GPSYMMETRY", desk::UserValue::Kind::object, {905});
  EXPECT_EQ(primitive_form(10), 1);
}

class Transform : public Library {
 protected:
  void expect(std::int32_t direction, const Matrix3& m_expected, std::int32_t lattice_expected,
              std::int32_t centring_expected, std::int32_t status_expected) {
    Matrix3 m{};
    std::int32_t lattice = 99, centring = 99, status = -1;
    kva_sgr_latticetransform_(model, direction, m, lattice, centring, status);
    for (std::size_t k = 0; k < 9; ++k) EXPECT_NEAR(m[k], m_expected[k], 1e-12);
    EXPECT_EQ(lattice, lattice_expected);
    EXPECT_EQ(centring, centring_expected);
    EXPECT_EQ(status, status_expected);
  }
  const Matrix3 face{0, .5, .5, .5, 0, .5, .5, .5, 0};
  const Matrix3 face_back{-1, 1, 1, 1, -1, 1, 1, 1, -1};
};

TEST_F(Transform, to_the_primitive_setting_goes_by_the_group_of_the_model) {
  group_of_model = 905;
  expect(1, face, 16, 0, 0);
  group_of_model = 901;
  expect(1, identity, 0, 0, 0);
  group_of_model = 908;  // a cubic lattice with one pair of faces centred
  expect(1, identity, 9, 0, 1);
}

TEST_F(Transform, to_the_conventional_setting_goes_by_the_records) {
  expect(2, identity, 0, 0, 0);
  attach("CRY/CONVENTIONAL_GPSYMMETRY", desk::UserValue::Kind::object, {902});
  expect(2, face_back, 4, 2, 0);
  attach_number(225, 0);  // goes before the object
  expect(2, face_back, 9, 2, 0);
  attach_number(146, 1);
  expect(2, {1, -1, 0, 0, 1, -1, 1, 1, 1}, 5, 6, 0);
  attach_number(230, 1);
  expect(2, identity, 0, 0, 1);
}

TEST_F(Transform, knows_no_other_direction) {
  group_of_model = 905;
  attach_number(225, 1);
  for (const std::int32_t direction : {0, 3, -1}) expect(direction, identity, 0, 0, 1);
}

}  // namespace
}  // namespace pathstat
