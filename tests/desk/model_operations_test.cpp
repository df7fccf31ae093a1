#include "desk/ops/model_operations.h"

#include "desk/ops/frame_codec.h"
#include "desk/selection/selection.h"
#include "memory_stream.h"
#include "small_models.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

using Ints = std::vector<std::int32_t>;
using Doubles = std::vector<double>;
using Slots = std::vector<SlotValue>;

/// A data model with the two waters, served.
class ModelOperations : public testing::Test {
 protected:
  ModelOperations() {
    register_data_model_operations(server_, data_);
    register_analysis_operations(server_, data_);
    data_.set_folder(folder_.path());
    data_.set_problem_sink([this](const std::string& text) { problem_ = text; });
    folder_.write("pair.qfx", water_pair);
    model_ = std::get<std::int32_t>(call("kvD_FIL_ImportModel", {"pair.qfx", 1, 1, 0}).outputs.at(0));
    atom_ = data_.model(model_)->first_atom;
    monitor_ = data_.model(model_)->monitor_ids.front();
    plane_ = data_.model(model_)->plane_ids.front();
  }

  /// Texts may be given as literals.
  struct Input : SlotValue {
    using SlotValue::SlotValue;
    Input(const char* text) : SlotValue(std::string(text)) {}
  };

  OperationReply call(const char* name, const std::vector<Input>& inputs) {
    const OperationCall call{*find_operation(name), Slots(inputs.begin(), inputs.end())};
    const auto reply = server_.serve(call);
    MemoryStream stream;
    EXPECT_THAT(write_reply(stream, call, reply), IsEmpty()) << name;
    return reply;
  }

  void expect(const char* name, const std::vector<Input>& inputs, const Slots& outputs, std::int32_t result = 0) {
    const auto reply = call(name, inputs);
    EXPECT_EQ(reply.error, 0) << name;
    EXPECT_EQ(reply.result, result) << name;
    ASSERT_EQ(reply.outputs.size(), outputs.size()) << name;
    for (std::size_t k = 0; k < outputs.size(); ++k) expect_equal(name, reply.outputs[k], outputs[k]);
  }

  void expect_error(const char* name, const std::vector<Input>& inputs, std::int32_t error) {
    EXPECT_EQ(call(name, inputs).error, error) << name;
  }

  static void expect_equal(const char* name, const SlotValue& value, const SlotValue& expected) {
    if (const auto* doubles = std::get_if<Doubles>(&expected)) {
      ASSERT_TRUE(std::holds_alternative<Doubles>(value)) << name;
      EXPECT_THAT(std::get<Doubles>(value), Pointwise(DoubleNear(1e-9), *doubles)) << name;
    } else {
      EXPECT_EQ(value, expected) << name;
    }
  }

  Ints atoms(Ints places) const { return offset(std::move(places), atom_); }
  Ints offset(Ints places, std::int32_t first) const {
    for (auto& place : places) place += first;
    return places;
  }

  ScratchFolder folder_;
  DataModel data_;
  OperationServer server_;
  std::string problem_;
  std::int32_t model_ = 0, atom_ = 0, monitor_ = 0, plane_ = 0;
};

TEST_F(ModelOperations, answer_for_objects_and_models) {
  const auto root = data_.root();
  const auto group = data_.model(model_)->space_group;
  expect("kvD_Root", {}, {root});
  expect("kvD_MOD_Current", {}, {model_});
  expect("kvD_MOD_SetCurrent", {model_}, {});
  expect("kvD_MOD_IsClear", {model_}, {0});
  expect("kvD_MOD_IsClear", {0}, {1});
  expect("kvD_MOD_Name", {12, 1, Ints{model_}}, {std::string("pair")});
  expect("kvD_MOD_NumAtoms", {model_, 1}, {6});
  expect("kvD_MOD_AtomList", {model_, 3, 6}, {atoms({0, 1, 2, 3, 4, 5}), 6});
  expect("kvD_MOD_AtomList", {model_, 3, 2}, {atoms({0, 1}), 6});
  expect("kvA_FIL_CarAtomIdOrder", {model_, 6}, {atoms({0, 1, 2, 3, 4, 5})});
  expect("kvD_MOD_PeriodicType", {model_}, {100});
  expect("kvD_MOD_3DCellVector", {model_}, {Doubles{10, 0, 0}, Doubles{0, 10, 0}, Doubles{0, 0, 10}});
  expect("kvD_MOD_Set3DCellVector", {model_, Doubles{11, 0, 0}, Doubles{1, 12, 0}, Doubles{0, 0, 13}}, {});
  EXPECT_EQ(data_.model(model_)->data.cell, (Cell{{{11, 0, 0}, {1, 12, 0}, {0, 0, 13}}}));
  expect_error("kvD_MOD_Set3DCellVector", {model_, Doubles{11, 0, 0}, Doubles{11, 0, 0}, Doubles{0, 0, 13}}, bad_value);
  expect_error("kvD_MOD_2DCellVector", {model_}, not_there);
  expect("kvD_MOD_3DSymmetry", {model_}, {group});
  expect("kvD_ValidateOID", {4, Ints{model_, 0, atom_ + 5, -7}}, {Ints{1, 0, 1, 0}});
  expect("kvD_IsA", {3, 3, Ints{atom_, model_, root}}, {Ints{1, 0, 0}});
  expect("kvD_IsA", {13, 3, Ints{atom_, model_, root}}, {Ints{0, 1, 0}});
  expect("kvD_Type", {4, Ints{atom_, atom_ + 1, model_, monitor_}}, {Ints{8, 1, 13, 60}});
  expect("kvD_Id", {4, Ints{atom_, atom_ + 5, model_, monitor_ + 2}}, {Ints{11, 23, 1, 3}});
  expect("kvD_APP_FindByName", {"MD_ANALYSIS"}, {data_.application("MD_ANALYSIS")});
  expect_error("kvD_APP_FindByName", {"NO_SUCH_APPLICATION"}, not_there);
  expect("kvA_REF_DereferenceObject", {"pair"}, {model_});
  expect("kvD_ACL_FindSymbol", {1, "Fe"}, {Ints{26}}, 1);
  expect("kvD_ACL_Symbol", {5, 1, Ints{26}}, {std::string("Fe")});
}

TEST_F(ModelOperations, answer_for_a_slab_by_its_two_vectors) {
  auto text = water_pair;
  text.replace(text.find("Type 100"), 8, "Type 101");
  folder_.write("slab.qfx", text);
  const auto slab = std::get<std::int32_t>(call("kvD_FIL_ImportModel", {"slab.qfx", 1, 1, 0}).outputs.at(0));
  const auto first = data_.model(slab)->first_atom;
  expect("kvD_MOD_2DCellVector", {slab}, {Doubles{0, 10, 0}, Doubles{0, 0, 10}});
  // Of the vectors that repeat, the one that the molecule crosses is the second.
  expect("kvD_ATM_Cell0Offset", {2, Ints{first, first + 4}}, {Ints{0, 0, 0, 0, 1, 0}});
  expect("kvD_MOD_Set2DCellVector", {slab, Doubles{0, 9, 0}, Doubles{0, 0, 8}}, {});
  EXPECT_EQ(data_.model(slab)->data.cell[2], (Vector3{0, 0, 8}));
  expect_error("kvD_MOD_Set2DCellVector", {model_, Doubles{0, 9, 0}, Doubles{0, 0, 8}}, not_there);
  EXPECT_NE(call("kvD_MOD_3DSymmetry", {slab}).error, 0);
}

TEST_F(ModelOperations, answer_for_atoms) {
  const Ints some = atoms({3, 5});
  expect("kvD_ATM_Charge", {2, some}, {Doubles{-0.8, 0.4}});
  expect("kvD_ATM_dMass", {2, some}, {Doubles{16, 1}});
  expect("kvD_ATM_Occupancy", {2, some}, {Doubles{1, 0.5}});
  expect("kvD_ATM_FFType", {9, 1, atoms({3})}, {std::string("OX")});
  expect("kvD_IsMovable", {2, some}, {Ints{0, 1}});
  expect("kvD_SetMovable", {2, some, Ints{1, 0}}, {});
  expect("kvD_IsMovable", {2, some}, {Ints{1, 0}});
  expect("kvD_XYZ", {2, some}, {Doubles{1, 2, 9.5, 1, 3, 9.5}});
  const auto version = data_.version();
  expect("kvD_SetXYZ", {2, some, Doubles{7, 8, 9, 4, 5, 6}}, {});
  EXPECT_GT(data_.version(), version);
  expect("kvD_XYZ", {2, atoms({5, 3})}, {Doubles{4, 5, 6, 7, 8, 9}});
  expect_error("kvD_SetXYZ", {2, Ints{atom_, 0}, Doubles(6)}, unknown_object);
  expect("kvD_XYZ", {1, Ints{atom_}}, {Doubles{1, 1, 1}});
  expect("kvA_CMP_Mass", {2, Ints{model_, atom_}}, {Doubles{16 + 1 + 1 + 16 + 1 + 0.5, 16}});
  expect("kvD_UD_SetVector", {2, "Velocity", some, Doubles{1, 2, 3, 4, 5, 6}}, {});
  expect("kvA_UD_SetDoubleVec", {1, "Force", atoms({3}), Doubles{7, 8, 9}}, {});
  EXPECT_EQ(data_.model(model_)->data.vectors.at("Velocity")[5], (Vector3{4, 5, 6}));
  EXPECT_EQ(data_.model(model_)->data.vectors.at("Force")[3], (Vector3{7, 8, 9}));
  EXPECT_EQ(data_.model(model_)->data.vectors.at("Force")[0], (Vector3{}));
  expect("kvA_UD_DoubleVecSetMagnitude", {1, 1, Ints{model_}, "Force"}, {});
  EXPECT_EQ(data_.model(model_)->vector_magnitudes.at("Force"), 1);
  expect_error("kvA_UD_DoubleVecSetMagnitude", {1, 1, Ints{model_}, "Spin"}, not_there);
}

TEST_F(ModelOperations, answer_for_molecules_and_the_images_that_make_them_whole) {
  expect("kvA_BND_RecalculationPermitted", {}, {}, 1);
  expect("kvA_BND_Recalculate", {1, 1, Ints{model_}}, {});
  const auto list = call("kvA_CON_MolecularList", {model_, 6});
  const auto image = std::get<Ints>(list.outputs[0])[4];
  const Ints whole{atom_, atom_ + 1, atom_ + 2, atom_ + 3, image, atom_ + 5};
  EXPECT_GT(image, atom_ + 5);
  expect("kvA_CON_MolecularList", {model_, 6}, {whole, 6, Ints{1, 1, 1, 2, 2, 2}, 2});
  expect("kvA_CON_MolecularList", {model_, 4}, {Ints(whole.begin(), whole.begin() + 4), 6, Ints{1, 1, 1, 2}, 2});
  expect("kvA_CON_Molecule", {atom_ + 4, 6}, {Ints{atom_ + 3, image, atom_ + 5}, 3});
  expect("kvA_CON_MolecularTag", {4, Ints{image, atom_, atom_ + 3, atom_ + 2}}, {Ints{1, 2, 1, 2}, 2});
  expect("kvA_CON_MolecularTagNetwork", {3, 1, Ints{image}},
         {Ints{atom_ + 3, image, atom_ + 5}, 3, Ints{0, 0, 0, 0, 0, 0, 0, 0, 0}, 0});
  expect("kvA_CON_IsSameMolecule", {2, Ints{atom_ + 3, image}}, {}, 1);
  expect("kvA_CON_IsSameMolecule", {2, Ints{atom_, image}}, {}, 0);
  expect("kvD_ATM_Cell0Offset", {3, Ints{atom_ + 3, atom_ + 4, image}}, {Ints{0, 0, 0, 0, 0, 1, 0, 0, 2}});
  // An image is an atom with its atom's properties, in another place.
  expect("kvD_PER_PeriodicParent", {2, Ints{image, atom_ + 1}}, {Ints{atom_ + 4, atom_ + 1}});
  expect("kvD_PER_Translation", {2, Ints{image, atom_ + 1}}, {Ints{0, 0, 1, 0, 0, 0}});
  expect("kvD_IsA", {3, 1, Ints{image}}, {Ints{1}});
  expect("kvD_Type", {1, Ints{image}}, {Ints{1}});
  expect("kvD_Id", {1, Ints{image}}, {Ints{22}});
  expect("kvD_XYZ", {1, Ints{image}}, {Doubles{1, 2, 10.5}});
  expect("kvD_ATM_Charge", {1, Ints{image}}, {Doubles{0.4}});
  expect_error("kvD_SetXYZ", {1, Ints{image}, Doubles{0, 0, 0}}, unknown_object);
}

TEST_F(ModelOperations, answer_for_a_network_that_repeats) {
  auto chain = carbon_model({{0, 0, 0}, {0, 0, 1.5}, {0, 0, 3}});
  chain.bonds = {{0, 1}, {1, 2}, {2, 0}};
  chain.cell = {{{1, 0, 0}, {0, 9, 0}, {0, 0, 4.5}}};
  chain.periodic_type = periodic_2d;
  const auto first = data_.model(data_.add_model(std::move(chain)))->first_atom;
  const auto reply = call("kvA_CON_MolecularTagNetwork", {3, 1, Ints{first}});
  EXPECT_EQ(reply.outputs[1], SlotValue(3));
  EXPECT_EQ(std::abs(std::get<Ints>(reply.outputs[2])[2]), 1);
  EXPECT_EQ(reply.outputs[3], SlotValue(1));
}

TEST_F(ModelOperations, answer_for_selections) {
  const auto root = data_.root();
  expect("kvD_SEL_NumSelected", {13, 2, Ints{root, model_}}, {Ints{0, 0}});
  expect("kvD_SEL_FindSelected", {root, 13, 4}, {Ints{}, 0});
  data_.select_models(std::vector<std::string>{"pair"});
  select_atoms(data_, *read_selection("fftype HW").selection);
  expect("kvD_SEL_NumSelected", {13, 2, Ints{root, model_}}, {Ints{1, 1}});
  expect("kvD_SEL_NumSelected", {3, 2, Ints{root, model_}}, {Ints{4, 4}});
  expect("kvD_SEL_FindSelected", {root, 13, 4}, {Ints{model_}, 1});
  // The second molecule is cut by the cell: a hydrogen comes as the image beside its oxygen.
  auto whole = atoms({1, 2, 4});
  whole[2] = data_.atom_image(*data_.model(model_), 4, {0, 0, 1});
  expect("kvD_SEL_FindSelected", {model_, 3, 3}, {whole, 4});
  expect_error("kvD_SEL_FindSelected", {root, 50, 4}, bad_value);
}

TEST_F(ModelOperations, answer_for_monitors) {
  const auto degrees = [](double radians) { return radians * 180 / std::numbers::pi; };
  for (const auto type : {60, 54, 61, 50, 59}) expect("kvD_MON_NumMonitors", {model_, type, 4}, {1});
  expect("kvD_MON_NumMonitors", {model_, 55, 4}, {0});
  expect("kvD_MON_MonitorList", {model_, 61, 4, 3}, {Ints{monitor_ + 2}, 1});
  expect("kvD_MON_DistanceObjects", {1, Ints{monitor_}}, {atoms({0}), atoms({3})});
  expect("kvD_MON_DistCurrent", {1, Ints{monitor_}}, {Doubles{std::sqrt(73.25)}});
  expect("kvD_MON_PlanePlaneObjects", {1, Ints{monitor_ + 1}}, {Ints{plane_}, Ints{plane_ + 1}});
  expect("kvD_MON_PlaneObjects", {plane_, 3}, {atoms({1, 0, 2}), 3});
  expect("kvD_MON_PlaneObjects", {plane_ + 1, 2}, {atoms({3, 4}), 3});
  expect("kvD_MON_PlanePlaneCurrent", {1, Ints{monitor_ + 1}}, {Doubles{90}});
  expect("kvD_MON_AngleObjects", {1, Ints{monitor_ + 2}}, {atoms({1}), atoms({0}), atoms({2})});
  expect("kvD_MON_AngleCurrent", {1, Ints{monitor_ + 2}}, {Doubles{90}});
  expect("kvD_MON_TorsionObjects", {1, Ints{monitor_ + 3}}, {atoms({2}), atoms({0}), atoms({1}), atoms({3})});
  expect("kvD_MON_TorsionCurrent", {1, Ints{monitor_ + 3}}, {Doubles{-90}});
  expect("kvD_MON_InversionObjects", {1, Ints{monitor_ + 4}}, {atoms({0}), atoms({1}), atoms({2}), atoms({3})});
  expect("kvD_MON_InversionType", {1, Ints{monitor_ + 4}}, {Ints{4}});
  expect("kvD_MON_InversionCurrent", {1, Ints{monitor_ + 4}}, {Doubles{-90 - degrees(std::atan(1 / 8.5))}});
  expect_error("kvD_MON_DistCurrent", {1, Ints{monitor_ + 1}}, unknown_object);
}

TEST_F(ModelOperations, answer_for_monitors_that_come_and_go) {
  auto& model = *data_.model(model_);
  constexpr Translation below{0, 0, -1};
  ASSERT_TRUE(data_.add_monitor(model, {plane_monitor, 0, {0, 1, 2, 3, 4, 5}, {{}, {}, {}, below, {}, below}}));
  const auto added = model.monitor_ids.back(), planes = model.plane_ids.at(2);
  const auto below_oxygen = data_.atom_image(model, 3, below), below_hydrogen = data_.atom_image(model, 5, below);
  expect("kvD_MON_PlanePlaneObjects", {1, Ints{added}}, {Ints{planes}, Ints{planes + 1}});
  expect("kvD_MON_PlaneObjects", {planes + 1, 3}, {Ints{below_oxygen, atom_ + 4, below_hydrogen}, 3});
  expect("kvD_MON_PlanePlaneCurrent", {1, Ints{added}}, {Doubles{90}});

  data_.remove_monitor(model, 1);  // the first plane monitor
  for (const auto gone : {monitor_ + 1, plane_, plane_ + 1}) EXPECT_FALSE(data_.exists(gone));
  expect_error("kvD_MON_PlaneObjects", {plane_, 3}, unknown_object);
  expect("kvD_MON_MonitorList", {model_, 54, 4, 3}, {Ints{added}, 1});
  expect("kvD_MON_PlanePlaneObjects", {1, Ints{added}}, {Ints{planes}, Ints{planes + 1}});
  expect("kvD_MON_PlaneObjects", {planes, 3}, {atoms({0, 1, 2}), 3});
  expect("kvD_MON_AngleObjects", {1, Ints{monitor_ + 2}}, {atoms({1}), atoms({0}), atoms({2})});
  expect("kvD_Id", {3, Ints{monitor_, monitor_ + 2, added}}, {Ints{1, 2, 5}});
  while (!model.monitor_ids.empty()) data_.remove_monitor(model, 0);
  expect("kvD_MON_NumMonitors", {model_, 54, 4}, {0});
  ASSERT_TRUE(data_.add_monitor(model, {distance_monitor, 0, {0, 3}, {}}));
  EXPECT_GT(model.monitor_ids.front(), added) << "no identifier is given twice";
}

TEST_F(ModelOperations, answer_for_symmetry) {
  auto text = water_pair;
  text.insert(text.find(" (A C Residue"),
              " (A D Rotation (1 0 0 0 1 0 0 0 1 -1 0 0 0 -1 0 0 0 1))\n (A D Translation (0 0 0 0 0 0.5))\n");
  folder_.write("screw.qfx", text);
  const auto model = std::get<std::int32_t>(call("kvD_FIL_ImportModel", {"screw.qfx", 1, 1, 0}).outputs.at(0));
  const auto first = data_.model(model)->first_atom;
  const auto group = data_.model(model)->space_group;
  const auto p1 = data_.model(model_)->space_group;
  const auto library = data_.group_library();
  expect("kvD_MOD_NumAtoms", {model, 1}, {6});
  expect("kvD_MOD_NumAtoms", {model, 3}, {12});
  expect("kvD_MOD_3DSymmetry", {model}, {group});
  expect("kvD_SGR_NumOperators", {group}, {2});
  const Doubles rotations{1, 0, 0, 0, 1, 0, 0, 0, 1, -1, 0, 0, 0, -1, 0, 0, 0, 1};
  expect("kvD_SGR_Operators", {group, 2}, {rotations, Doubles{0, 0, 0, 0, 0, 0.5}, 2});
  expect("kvD_SGR_Operators", {group, 1}, {Doubles(rotations.begin(), rotations.begin() + 9), Doubles{0, 0, 0}, 2});
  expect("kvD_SYM_SymmetryChildren", {first + 1, 4}, {Ints{first + 7}, 1});
  expect("kvD_SYM_SymmetryChildren", {first + 7, 4}, {Ints{}, 0});
  expect("kvD_SYM_Operators", {first + 1, 1}, {Ints{1}, 1});
  expect("kvD_SYM_Operators", {first + 7, 1}, {Ints{2}, 1});
  expect("kvD_XYZ", {1, Ints{first + 7}}, {Doubles{-1, -2, 6}});
  expect("kvD_Id", {1, Ints{first + 7}}, {Ints{25}});
  expect("kvD_SGR_LatticeType", {group}, {3});
  expect("kvD_SGR_CenteringType", {group}, {0});
  expect("kvD_SGR_Name", {group, 20}, {std::string("P 1 1 21")});
  expect("kvD_SGR_OptionId", {p1}, {1});
  expect("kvD_SGR_FindLibraryByName", {"QFX_SpaceGroups"}, {library});
  expect("kvD_SGR_FindByITNum", {library, 1, 1, 18}, {Ints{p1}, 1});
  expect("kvD_SGR_FindByITNum", {library, 231, 1, 18}, {Ints{}, 0});
  expect("kvD_SGR_FindByName", {library, "P 1", 0, 18}, {Ints{p1}, 1});
}

TEST_F(ModelOperations, keep_user_data_of_any_object) {
  const auto owner = data_.application("MD_ANALYSIS");
  expect("kvD_UD_AddObjectArray", {owner, "DistMeas", 2, Ints{9, 7}}, {});
  expect("kvD_UD_AddObjectArray", {owner, "DistMeas", 3, Ints{9, 7, 8}}, {});
  expect("kvD_UD_FindObjectArray", {owner, "DistMeas", 3}, {Ints{9, 7, 8}}, 3);
  expect_error("kvD_UD_FindIntArray", {owner, "DistMeas", 3}, not_there);
  expect("kvD_UD_Remove", {owner, "DistMeas"}, {});
  expect("kvD_UD_Remove", {owner, "DistMeas"}, {});
  expect_error("kvD_UD_FindObjectArray", {owner, "DistMeas", 3}, not_there);
  data_.set_user_value(model_, "i", {UserValue::Kind::int_array, {62, 1}});
  data_.set_user_value(model_, "o", {UserValue::Kind::object, {owner}});
  expect("kvD_UD_FindIntArray", {model_, "i", 2}, {Ints{62, 1}}, 2);
  expect("kvD_UD_FindObject", {model_, "o"}, {owner});
}

TEST_F(ModelOperations, import_and_export_models) {
  expect("kvD_FIL_ExportModel", {"./copy.qfx", model_, 1}, {});
  const auto copy = std::get<std::int32_t>(call("kvD_FIL_ImportModel", {"copy.qfx", 1, 1, model_}).outputs.at(0));
  EXPECT_NE(copy, model_);
  EXPECT_EQ(data_.current_model(), copy);
  EXPECT_EQ(data_.model(copy)->data.positions, data_.model(model_)->data.positions);
  folder_.write("one.car", "t\nf\nd\nHe1 1 2 3 R 1 he He 0\nEND\nEND\n");
  const auto car = std::get<std::int32_t>(call("kvD_FIL_ImportModel", {"one.car", 14, 1, 0}).outputs.at(0));
  EXPECT_EQ(data_.model(car)->data.name, "one");

  expect_error("kvD_FIL_ImportModel", {"missing.qfx", 1, 1, 0}, file_problem);
  EXPECT_THAT(problem_, HasSubstr("missing.qfx"));
  expect_error("kvD_FIL_ImportModel", {"copy.qfx", 2, 1, 0}, bad_value);
  expect_error("kvD_FIL_ExportModel", {"none/copy.qfx", model_, 1}, file_problem);
  EXPECT_EQ(data_.current_model(), car);
  EXPECT_EQ(data_.models().size(), 3u);

  expect("kvD_TRJ_OpenReadCore", {"copy.qfx"}, {});
  expect_error("kvD_TRJ_OpenReadCore", {"copy.qfx"}, file_problem);
  expect("kvD_TRJ_CloseCore", {}, {});
  expect_error("kvD_TRJ_CloseCore", {}, not_there);
  expect_error("kvD_TRJ_OpenReadCore", {"missing.qfx"}, file_problem);
}

/// Whatever an operation is asked about objects that there are not, it answers with an error.
TEST_F(ModelOperations, refuse_unknown_objects) {
  const std::set<std::string_view> without_objects{
      "kvD_Root", "kvD_ValidateOID", "kvD_MOD_Current", "kvD_SEL_ClearAll", "kvA_BND_RecalculationPermitted",
  };
  for (const auto& row : all_operations()) {
    if (row.family != Family::data_model && row.family != Family::analysis) continue;
    if (row.name == "kvD_MOD_Create") continue;  // takes any name
    for (const auto id : {0, -1, 99999999, atom_ + 1000000}) {
      Slots inputs;
      const auto slots = slots_of(row.sends);
      for (const auto& slot : slots.view()) {
        switch (slot.kind) {
          case SlotKind::text:
            inputs.emplace_back(std::string("nothing of that name"));
            break;
          case SlotKind::integers:
            inputs.emplace_back(Ints(slot.factor, id));
            break;
          case SlotKind::reals64:
            inputs.emplace_back(Doubles(slot.factor, 1.0));
            break;
          case SlotKind::count:
          case SlotKind::presence:
            inputs.emplace_back(1);
            break;
          case SlotKind::capacity:
            inputs.emplace_back(2);
            break;
          default:
            inputs.emplace_back(id);
            break;
        }
      }
      const OperationCall call{row, inputs};
      const auto reply = server_.serve(call);
      const bool may = without_objects.contains(row.name) || (row.name == "kvD_MOD_IsClear" && id == 0);
      EXPECT_EQ(reply.error == 0, may) << row.name << " of " << id;
      MemoryStream stream;
      EXPECT_THAT(write_reply(stream, call, reply), IsEmpty()) << row.name;
    }
  }
}

}  // namespace
}  // namespace pathstat::desk
