// Edits of models in which one request for memory fails, or all from one on.
#ifndef __SANITIZE_ADDRESS__  // which brings its own allocation

#include <new>

#include "desk/model/model_edit.h"
#include "desk/ops/model_operations.h"
#include "small_models.h"
#include "testing.h"

namespace {

/// Requests that are met before one fails, and how many fail then.
constexpr auto all = std::numeric_limits<std::size_t>::max();
std::size_t met = all, failing = 0;

}  // namespace

// Not inline: the compiler would take the pairs for strangers.
[[gnu::noinline]] void* operator new(std::size_t size) {
  const bool fails = met == 0 && failing > 0;
  if (fails) --failing;
  if (met > 0 && met != all) --met;
  void* block = fails ? nullptr : std::malloc(size > 0 ? size : 1);
  return block ? block : throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { std::free(block); }

namespace pathstat::desk {
namespace {

using Ints = std::vector<std::int32_t>;
using Doubles = std::vector<double>;
using namespace std::string_literals;

constexpr const char* own_group = "of its own";

/// A served data model: two waters and copies of two of their atoms, one as a periodic and one as a symmetry image,
/// with monitors, a selection and a surface.
class Edited {
 public:
  Edited() {
    register_data_model_operations(server_, data_);
    register_analysis_operations(server_, data_);
    static const auto pair = imported(water_pair).models.at(0);
    id_ = data_.add_model(MolecularModel(pair));
    surface_ = static_cast<std::int32_t>(data_.next_identifier());
    copy_ = surface_ + 1;
    EXPECT_TRUE(call("kvD_SetId", 3, atoms(0, 1, 2), Ints{30, 20, 10}) &&
                call("kvD_UD_SetVector", 1, "Velocity"s, atoms(3), Doubles{1, 2, 3}) &&
                call("kvD_ATM_SetCell0Offset", 1, atoms(4), Ints{0, 0, 1}) && call("kvD_SUR_CreateSurface", id_, 1) &&
                call("kvD_Copy", 2, atoms(1, 2)) &&
                call("kvD_PER_MakePeriodic", 1, Ints{copy_}, atoms(1), Ints{1, 0, 0}) &&
                call("kvD_SYM_SetParents", 1, Ints{copy_ + 1}, atoms(2), Ints{2}, Ints{0, 0, 1}));
    data_.set_selected_atoms(model(), {1, 0, 0, 1, 0, 0, 0});
  }

  /// Of the requests for memory of the next call so many are met, then so many fail.
  void limit(std::size_t met, std::size_t failing) { met_ = met, failing_ = failing; }

  /// @return false if the step has found no memory or says so itself
  template <class Step>
  bool within_limit(Step step) {
    met = met_, failing = failing_;
    bool done = false;
    try {
      done = step();
    } catch (const std::bad_alloc&) {
    }
    met = all, failing = 0;
    return done;
  }

  template <class... Inputs>
  bool call(const char* name, Inputs... inputs) {
    const OperationCall call{*find_operation(name), {SlotValue(inputs)...}};
    return within_limit([&] { return server_.serve(call).error == 0; });
  }

  DataModel& data() { return data_; }
  ModelObject& model() { return *data_.model(id_); }
  std::int32_t id() const { return id_; }
  std::int32_t surface() const { return surface_; }
  template <class... Places>
  Ints atoms(Places... places) {
    return {model().atom_id(static_cast<std::size_t>(places))...};
  }

  /// All that is known of the models and surfaces.
  std::string state() {
    std::ostringstream text;
    const auto put = [&](const auto&... values) { ((text << testing::PrintToString(values) << '\n'), ...); };
    for (const auto* each : data_.models()) {
      const auto& model = each->data;
      put(each->id, model.periodic_type, model.symmetry.rotations, model.ids, model.elements, model.residue_ids,
          model.charges, model.masses, model.occupancies, model.positions, model.movable, model.vectors,
          model.cell_offsets, model.face_flags, model.bonds, bond_cells(model), model.file_atoms, model.file_bonds,
          model.image_origins, model.atom_images);
      for (std::size_t k = 0; k < model.atoms(); ++k) {
        put(model.names[k], model.ff_types[k], model.residues[k], each->atom_id(k), data_.find(each->atom_id(k)).index);
      }
      for (const auto& monitor : model.monitors) put(monitor.type, monitor.atoms, monitor.images);
      for (const auto id : each->monitor_ids) put(id, data_.find(id).index);
      for (const auto& image : data_.atom_images(*each)) put(image.place, image.image, data_.atom(image.id).place);
      put(each->kept_images, each->plane_monitors, each->plane_ids, each->atom_selected, each->selected_atoms,
          each->space_group);
    }
    for (const auto id : data_.space_groups(own_group)) put(data_.space_group(id)->operators.rotations);
    for (const auto& surface : data_.surfaces()) put(surface.vertices, surface.normals, surface.triangles);
    return text.str();
  }

 private:
  DataModel data_;
  OperationServer server_;
  std::int32_t id_ = 0, surface_ = 0, copy_ = 0;
  std::size_t met_ = all, failing_ = 0;
};

struct Edit {
  const char* name;
  bool (*make)(Edited&);  ///< @return true if it is done
};

void PrintTo(const Edit& edit, std::ostream* stream) { *stream << edit.name; }

class EditsWithoutMemory : public testing::TestWithParam<Edit> {};

TEST_P(EditsWithoutMemory, are_made_whole_or_not_at_all) {
  Edited whole;
  const auto before = whole.state();
  ASSERT_TRUE(GetParam().make(whole));
  const auto after = whole.state();
  ASSERT_NE(after, before);
  for (const auto failing : {std::size_t{1}, all}) {
    bool done = false;
    for (std::size_t met = 0; !done; ++met) {
      ASSERT_LT(met, 10000u);
      Edited edited;
      edited.limit(met, failing);
      done = GetParam().make(edited);
      const auto now = edited.state();
      if (done || now == after) continue;  // without memory for the answer alone the edit stands
      ASSERT_EQ(now, before) << met << " requests met";
      edited.limit(all, 0);
      ASSERT_TRUE(GetParam().make(edited)) << met << " requests met";
      ASSERT_EQ(edited.state(), after) << met << " requests met";
    }
  }
}

const Ints two_kinds{6, 7}, beside{0, 1, 0}, two_cells{0, 0, 0, 0, 1, 0}, triangle{0, 1, 2};
const Doubles two_places{1, 2, 3, 4, 5, 6}, corners{0, 0, 0, 1, 0, 0, 0, 1, 0};
constexpr Translation above{0, 0, 1};

const Edit edits[] = {
    {"new atoms", [](Edited& e) { return e.call("kvD_ATM_Create", e.id(), 2, two_kinds, two_places); }},
    {"copies", [](Edited& e) { return e.call("kvD_Copy", 2, e.atoms(0, 5)); }},
    {"atoms that end", [](Edited& e) { return e.call("kvD_Delete", 2, e.atoms(0, 4)); }},
    {"other numbers", [](Edited& e) { return e.call("kvD_ReassignIds", e.id()); }},
    {"a periodic image", [](Edited& e) { return e.call("kvD_PER_MakePeriodic", 1, e.atoms(3), e.atoms(0), beside); }},
    {"no periods", [](Edited& e) { return e.call("kvD_MOD_SetPeriodicType", e.id(), 0); }},
    {"a symmetry image",
     [](Edited& e) { return e.call("kvD_SYM_SetParents", 1, e.atoms(3), e.atoms(0), Ints(1, 2), beside); }},
    {"no symmetry images", [](Edited& e) { return e.call("kvD_SYM_Clear", e.id()); }},
    {"atoms elsewhere", [](Edited& e) { return e.call("kvD_ATM_MoveByCells", 1, e.atoms(2), beside); }},
    {"face flags", [](Edited& e) { return e.call("kvD_ATM_SetFaceFlags", 1, e.atoms(2), beside); }},
    {"forces", [](Edited& e) { return e.call("kvD_UD_SetVector", 1, "Force"s, e.atoms(2), Doubles(3, 1.5)); }},
    {"bonds", [](Edited& e) { return e.call("kvA_MakeBond", 2, e.atoms(0, 1), e.atoms(3, 4), two_cells); }},
    {"a new model", [](Edited& e) { return e.call("kvD_MOD_Create", "empty"s); }},
    {"a model with all that belongs to it",
     [](Edited& e) {
       auto model = MolecularModel(e.model().data);
       return e.within_limit([&] { return e.data().add_model(std::move(model)) != 0; });
     }},
    {"a space group",
     [](Edited& e) {
       SpaceGroup group{.name = own_group, .operators = {{{1, 0, 0, 0, 1, 0, 0, 0, 1}}, {{}}}};
       return e.within_limit([&] { return e.data().add_space_group(std::move(group)) != 0; });
     }},
    {"a surface",
     [](Edited& e) { return e.call("kvD_SUR_SetSurface", e.surface(), 3, corners, 0, Doubles(), 1, triangle); }},
    {"a plane monitor",
     [](Edited& e) {
       Monitor monitor{plane_monitor, 0, {0, 1, 2, 3, 4, 5}, {}};
       return e.within_limit([&] { return e.data().add_monitor(e.model(), std::move(monitor)); });
     }},
    {"a monitor that ends",
     [](Edited& e) { return e.within_limit([&] { return e.data().remove_monitor(e.model(), 1), true; }); }},
    {"an image with a name",
     [](Edited& e) { return e.within_limit([&] { return e.data().atom_image(e.model(), 2, above) != 0; }); }},
};

INSTANTIATE_TEST_SUITE_P(of, EditsWithoutMemory, testing::ValuesIn(edits));

}  // namespace
}  // namespace pathstat::desk
#endif
