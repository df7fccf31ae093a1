#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "desk/model/connectivity.h"
#include "desk/model/molecular_model.h"
#include "desk/model/object_registry.h"
#include "desk/model/surface.h"
#include "desk/model/symmetry.h"
#include "structure/model_file.h"

namespace pathstat::desk {

/// A model in the data model.
struct ModelObject {
  std::int32_t id = 0;
  std::int32_t number = 0;  ///< models are numbered from 1 as they come
  std::int32_t first_atom = 0;
  std::vector<std::int32_t> atom_ids;  ///< by place; empty while the atoms have identifiers in a row from `first_atom`
  std::vector<std::int32_t> kept_images;    ///< periodic images that are part of the model, by identifier
  std::vector<std::int32_t> monitor_ids;    ///< in the order of `data`
  std::vector<std::size_t> plane_monitors;  ///< places of the monitors that are plane monitors
  std::vector<std::int32_t> plane_ids;      ///< two planes for each of them
  std::int32_t space_group = 0;             ///< 0 for a model that is not three-dimensionally periodic

  MolecularModel data;
  std::map<std::string, double, std::less<>> vector_magnitudes;  ///< factors by which the vectors of a name are shown

  bool selected = false;
  std::vector<std::uint8_t> atom_selected;  ///< one flag per atom, or empty if none is selected
  std::size_t selected_atoms = 0;

  std::uint64_t geometry_version = 1;  ///< rises with each change of coordinates or cell

  std::int32_t atom_id(std::size_t place) const {
    return atom_ids.empty() ? first_atom + static_cast<std::int32_t>(place) : atom_ids[place];
  }
};

/// An atom, or the image of one in another cell.
struct AtomRef {
  ModelObject* model = nullptr;
  std::size_t place = 0;
  Translation image{};

  explicit operator bool() const { return model != nullptr; }
  bool is_image() const { return image != Translation{}; }
  Vector3 position() const { return translated(model->data.positions[place], model->data.cell, image); }
};

/// An atom's image that has an identifier.
struct NamedImage {
  std::int32_t id = 0;
  std::uint32_t place = 0;
  Translation image{};
};

/// A named value that an operation has attached to an object.
struct UserValue {
  enum class Kind { object, object_array, integer, int_array, number };
  Kind kind = Kind::int_array;
  std::vector<std::int32_t> values;
  double number = 0;
};

/// All that a Core knows of models: objects by identifier, which model is current, what is selected, and what is
/// attached to objects. It knows nothing of operations and the wire.
class DataModel {
 public:
  DataModel();
  ~DataModel();

  // Objects. Element classes have their element's number as identifier.

  std::int32_t root() const { return root_; }
  std::int32_t group_library() const { return group_library_; }
  ObjectPlace find(std::int32_t id) const { return registry_.find(id); }
  bool exists(std::int32_t id) const { return find(id).kind != ObjectClass::none; }
  /// The application object of a name, or 0.
  std::int32_t application(std::string_view name) const;
  /// What a user names by a text: an identifier, an application, or a model by its name, the latest of equals. 0 if
  /// there is none.
  std::int32_t object_named(std::string_view text) const;

  /// The identifier that the next object gets.
  std::int64_t next_identifier() const { return registry_.next(); }
  /// Leaves out identifiers, so that what comes next gets this one, if it is still to be had.
  void go_on_at(std::int64_t id) { registry_.go_on_at(id); }

  // Models.

  /// Takes in a model with at least one atom and makes its symmetry images.
  /// @return its identifier, or 0 if it has more atoms than identifiers are left for
  std::int32_t add_model(MolecularModel&& model);
  /// Makes a model without atoms. @return its identifier
  std::int32_t create_model(std::string name);
  /// Leaves out the numbers of models ahead of this one.
  void number_next_model(std::int32_t number);
  /// Ends a model and everything that belongs to it.
  void remove_model(std::int32_t id);
  /// The model with this identifier; null if it is none.
  ModelObject* model(std::int32_t id);
  const ModelObject* model(std::int32_t id) const;
  /// The model that an object belongs to; null for an object of none.
  ModelObject* model_of(const ObjectPlace& place);
  /// All models, in the order in which they came.
  std::vector<ModelObject*> models();
  std::vector<const ModelObject*> models() const;
  /// The model that the user works on; 0 without one.
  std::int32_t current_model() const { return current_model_; }
  /// @return false if there is no such model
  bool set_current_model(std::int32_t id);

  /// Rises with each change that a picture of the models shows: models that come or go, coordinates, cells.
  std::uint64_t version() const { return version_; }
  /// To be called after coordinates or the cell of a model were changed.
  void geometry_changed(ModelObject& model);

  // Atoms.

  /// The atom or image with this identifier; false if it is none.
  AtomRef atom(std::int32_t id);
  /// The images of a model's atoms, by the order in which they were named, with their identifiers.
  std::vector<NamedImage> atom_images(const ModelObject& model) const;
  /// The identifier of an atom's image; made on first use, then always the same. 0 if none is left.
  std::int32_t atom_image(ModelObject& model, std::size_t place, const Translation& image);
  /// Adds atoms to a model. @return the first of their identifiers, which stand in a row; 0 if they have run out
  std::int32_t add_atoms(ModelObject& model, std::span<const std::uint8_t> elements,
                         std::span<const Vector3> positions);
  /// Adds copies of the atoms at places, which are not sorted behind images before their origins are set.
  std::int32_t copy_atoms(ModelObject& model, std::span<const std::uint32_t> places);
  /// Ends atoms with all that is known of them, and images among the identifiers.
  void remove_atoms(ModelObject& model, std::span<const std::int32_t> ids);
  /// Makes atoms periodic images of others; they keep their identifiers and lose their bonds.
  void make_images(ModelObject& model, std::span<const std::int32_t> ids, std::span<const std::uint32_t> parents,
                   std::span<const Translation> cells);
  /// Makes atoms symmetry images. @param origins  one for each atom
  void set_origins(ModelObject& model, std::vector<ImageOrigin> origins);
  /// Numbers the atoms for files from 1, in the order of their numbers, which becomes that of the model.
  void renumber(ModelObject& model);
  /// Makes a model periodic or not. Where it ceases to be, periodic images that are part of it become atoms, and bonds
  /// across cells lead to them or end.
  /// @return false if the model's cell is not that of such a model
  bool set_periodic_type(ModelObject& model, std::int32_t type);
  /// @param group  of the library, or 0 for none
  void set_space_group(ModelObject& model, std::int32_t group);
  /// The model's molecules for its present coordinates.
  const Connectivity& connectivity(ModelObject& model);

  // Monitors, in their order from 0 on.

  /// Adds a monitor behind those that there are. @return false if no identifiers are left
  bool add_monitor(ModelObject& model, Monitor monitor);
  /// Ends a monitor; those behind it move up.
  void remove_monitor(ModelObject& model, std::size_t place);

  // Selection.

  /// Selects atoms of a model instead of those selected now: one flag per atom.
  void set_selected_atoms(ModelObject& model, std::vector<std::uint8_t> flags);
  /// Selects models instead of those selected now: all, none, or those of any of the names.
  /// @return what is wrong, or an empty text; nothing is changed then
  std::string select_models(std::span<const std::string> names);
  std::size_t selected_atoms() const;
  std::size_t selected_models() const;

  // Space groups: those of the library and those of operators that models stated.

  const SpaceGroup* space_group(std::int32_t id) const;
  /// Takes in a group that isn't of the library, once for equal ones. @return its identifier, or 0 if none is left
  std::int32_t add_space_group(SpaceGroup group);
  std::vector<std::int32_t> space_groups(std::int32_t number, std::int32_t option) const;
  std::vector<std::int32_t> space_groups(std::string_view name) const;

  // Surfaces, in the order in which they came.

  /// @return the identifier of a surface without triangles, or 0 if none is left
  std::int32_t add_surface();
  /// The surface with this identifier; null if it is none.
  Surface* surface(std::int32_t id);
  const std::vector<Surface>& surfaces() const { return surfaces_; }

  // User data.

  void set_user_value(std::int32_t owner, std::string_view name, UserValue value);
  /// The value of that name and kind; null if there is none.
  const UserValue* user_value(std::int32_t owner, std::string_view name, UserValue::Kind kind) const;
  void remove_user_value(std::int32_t owner, std::string_view name);
  /// All of them, by owner and name.
  const std::unordered_map<std::int32_t, std::map<std::string, UserValue, std::less<>>>& user_values() const {
    return user_data_;
  }

  // Files.

  /// Where relative paths of operations begin: the working folder of the process that calls them.
  void set_folder(std::filesystem::path folder) { folder_ = std::move(folder); }
  std::filesystem::path resolved(std::string_view path) const { return folder_ / path; }
  /// Opens a structured trajectory for the Core's own reading; false if it can't be opened or another one is open.
  bool open_trajectory(std::string_view path);
  /// @return false if none is open
  bool close_trajectory();
  /// Takes the text of what went wrong in an operation that can only answer with a number.
  void set_problem_sink(std::function<void(const std::string&)> sink) { problem_sink_ = std::move(sink); }
  void report_problem(const std::string& text) const {
    if (problem_sink_) problem_sink_(text);
  }

 private:
  struct ModelSlot;

  ModelSlot& slot_of(const ModelObject& model) { return *slots_[find(model.id).model]; }
  void take_order(ModelObject& model, std::span<const std::uint32_t> order);
  std::int32_t name_new_atoms(ModelObject& model, std::size_t count);
  void name_atoms(ModelObject& model);
  void images_to_atoms(ModelObject& model);
  std::int32_t place_model(MolecularModel&& model);
  void name_monitor(ModelObject& model, std::size_t place);
  void name_planes(ModelObject& model, std::size_t place);
  /// @param conventional  the group of the centred lattice that the model's is a primitive setting of, or 0
  std::int32_t group_for(const MolecularModel& model, std::int32_t& conventional);
  std::int32_t tabulated_group(const SymmetryOperators& operators) const;
  /// A group by its place in `group_ids_`, with its name and number; those of the library lack operators.
  const SpaceGroup& named_group(std::size_t place) const;

  ObjectRegistry registry_;
  std::int32_t root_ = 0;
  std::int32_t group_library_ = 0;
  std::map<std::string, std::int32_t, std::less<>> applications_;
  std::vector<std::unique_ptr<ModelSlot>> slots_;  ///< by place; empty where the model is gone
  std::int32_t current_model_ = 0;
  std::uint64_t version_ = 0;
  std::vector<SpaceGroup> added_groups_;
  std::vector<std::int32_t> group_ids_;  ///< of the library's groups, then of the added ones
  std::vector<Surface> surfaces_;
  std::unordered_map<std::int32_t, std::map<std::string, UserValue, std::less<>>> user_data_;
  std::filesystem::path folder_;
  ModelFile trajectory_;
  std::function<void(const std::string&)> problem_sink_;
};

}  // namespace pathstat::desk
