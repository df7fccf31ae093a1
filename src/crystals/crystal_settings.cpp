#include "crystals/crystal_settings.h"

#include <span>
#include <string_view>

#include "coreapi/operations.h"

namespace pathstat {
namespace {

constexpr std::string_view crystal = "CRYSTAL", surface = "SURFACE";

/// A value's name as a preference of its application, as a model's record, and its default.
template <class T>
struct Setting {
  std::string_view application, preference, record;
  T standard;
};

constexpr Setting<double> tolerance_setting{crystal, "SYMTOL", "CRY/TOLERANCE", 0.05};
constexpr Setting<std::int32_t> special_setting{crystal, "APPLYSPEC", "CRY/APPLYSPEC", 1};
constexpr Setting<std::int32_t> bonding_setting{crystal, "BONDING", "CRY/BONDING", build_option::bonds_everywhere};
constexpr Setting<std::int32_t> alignment_setting{crystal, "ALIGNPOL", "", 0x800};
constexpr Setting<std::int32_t> slab_bonding_setting{surface, "BONDING", "SFC/BONDING", build_option::bonds_everywhere};
constexpr DisplaySetting standard_display{build_option::display_whole_molecules, build_option::face_flags};
constexpr Setting<DisplaySetting> display_setting{crystal, "DISPLAY", "CRY/DISPLAY", standard_display};
constexpr Setting<DisplaySetting> slab_display_setting{surface, "DISPLAY", "SFC/DISPLAY", standard_display};
constexpr std::string_view slab_tolerance_record = "SFC/TOLERANCE";

bool find(std::int32_t owner, std::string_view name, double& value) {
  std::int32_t error = 0;
  kvd_ud_finddouble_(owner, name, value, error);
  return error == 0;
}
bool find(std::int32_t owner, std::string_view name, std::int32_t& value) {
  std::int32_t error = 0;
  kvd_ud_findint_(owner, name, value, error);
  return error == 0;
}
bool find(std::int32_t owner, std::string_view name, DisplaySetting& value) {
  std::int32_t error = 0;
  return kvd_ud_findintarray_(owner, name, value, error) == std::ssize(value) && error == 0;
}

void set(std::int32_t owner, std::string_view name, double value, std::int32_t& status) {
  kvd_ud_setdouble_(owner, name, value, status);
}
void set(std::int32_t owner, std::string_view name, std::int32_t value, std::int32_t& status) {
  kvd_ud_setint_(owner, name, value, status);
}
void set(std::int32_t owner, std::string_view name, const DisplaySetting& value, std::int32_t& status) {
  kvd_ud_setintarray_(owner, name, value, status);
}

bool is_set(double value) { return value > 0; }
bool is_set(std::int32_t value) { return value != 0; }
bool is_set(const DisplaySetting& value) { return value[0] != 0 && value[1] != 0; }

std::int32_t application_of(std::string_view name) {
  std::int32_t application = 0, error = 0;
  kvd_app_findbyname_(name, application, error);
  return error == 0 ? application : 0;
}

template <class T>
T preference(const Setting<T>& setting, std::int32_t& status) {
  T value{};
  status = 0;
  const auto application = application_of(setting.application);
  return application != 0 && find(application, setting.preference, value) ? value : setting.standard;
}

template <class T>
void set_preference(const Setting<T>& setting, const T& value, std::int32_t& status) {
  const auto application = application_of(setting.application);
  status = application == 0 ? 1 : 0;
  if (status == 0) set(application, setting.preference, value, status);
}

template <class T>
T built_with(const Setting<T>& setting, std::int32_t model, std::int32_t& status) {
  T value{};
  status = 0;
  return find(model, setting.record, value) && is_set(value) ? value : preference(setting, status);
}

void split(const DisplaySetting& setting, std::int32_t& display, std::int32_t& faces) {
  display = setting[0], faces = setting[1];
}

/// Removes records; those that are not there are no fault.
void remove(std::int32_t model, std::initializer_list<std::string_view> records, std::int32_t& status) {
  status = 0;
  for (const auto record : records) {
    std::int32_t error = 0;
    kvd_ud_remove_(model, record, error);
    if (error != 0) status = error;
  }
}

}  // namespace

void crystal_symmetrytolerance_(double& tolerance, std::int32_t& status) {
  tolerance = preference(tolerance_setting, status);
}
void crystal_setsymmetrytolerance_(double tolerance, std::int32_t& status) {
  set_preference(tolerance_setting, tolerance, status);
}
void crystal_specialpositionpref_(std::int32_t& special, std::int32_t& status) {
  special = preference(special_setting, status);
}
void crystal_setspecialpositionpref_(std::int32_t special, std::int32_t& status) {
  set_preference(special_setting, special, status);
}
void crystal_bondingpref_(std::int32_t& bonding, std::int32_t& status) {
  bonding = preference(bonding_setting, status);
}
void crystal_setbondingpref_(std::int32_t bonding, std::int32_t& status) {
  set_preference(bonding_setting, bonding, status);
}
void crystal_displaypref_(std::int32_t& display, std::int32_t& faces, std::int32_t& status) {
  split(preference(display_setting, status), display, faces);
}
void crystal_setdisplaypref_(std::int32_t display, std::int32_t faces, std::int32_t& status) {
  set_preference(display_setting, {display, faces}, status);
}
void crystal_polymeralignpref_(std::int32_t& alignment, std::int32_t& status) {
  alignment = preference(alignment_setting, status);
}
void crystal_setpolymeralignpref_(std::int32_t alignment, std::int32_t& status) {
  set_preference(alignment_setting, alignment, status);
}

void crystal_toleranceinfo_(std::int32_t model, double& tolerance, std::int32_t& status) {
  tolerance = built_with(tolerance_setting, model, status);
}
void crystal_settoleranceinfo_(std::int32_t model, double tolerance, std::int32_t& status) {
  set(model, tolerance_setting.record, tolerance, status);
}
void crystal_specialpositioninfo_(std::int32_t model, std::int32_t& special, std::int32_t& status) {
  special = built_with(special_setting, model, status);
}
void crystal_setspecialpositioninfo_(std::int32_t model, std::int32_t special, std::int32_t& status) {
  set(model, special_setting.record, special, status);
}
void crystal_bondinginfo_(std::int32_t model, std::int32_t& bonding, std::int32_t& status) {
  bonding = built_with(bonding_setting, model, status);
}
void crystal_setbondinginfo_(std::int32_t model, std::int32_t bonding, std::int32_t& status) {
  set(model, bonding_setting.record, bonding, status);
}
void crystal_displayinfo_(std::int32_t model, std::int32_t& display, std::int32_t& faces, std::int32_t& status) {
  split(built_with(display_setting, model, status), display, faces);
}
void crystal_setdisplayinfo_(std::int32_t model, std::int32_t display, std::int32_t faces, std::int32_t& status) {
  set(model, display_setting.record, DisplaySetting{display, faces}, status);
}
void crystal_resetbuildinfo_(std::int32_t model, std::int32_t& status) {
  remove(model, {tolerance_setting.record, special_setting.record, bonding_setting.record, display_setting.record},
         status);
}

void surface_bondingpref_(std::int32_t& bonding, std::int32_t& status) {
  bonding = preference(slab_bonding_setting, status);
}
void surface_setbondingpref_(std::int32_t bonding, std::int32_t& status) {
  set_preference(slab_bonding_setting, bonding, status);
}
void surface_displaypref_(std::int32_t& display, std::int32_t& faces, std::int32_t& status) {
  split(preference(slab_display_setting, status), display, faces);
}
void surface_setdisplaypref_(std::int32_t display, std::int32_t faces, std::int32_t& status) {
  set_preference(slab_display_setting, {display, faces}, status);
}
void surface_setbuildinfo_(std::int32_t model, double tolerance, std::int32_t bonding, std::int32_t display,
                           std::int32_t faces, std::int32_t& status) {
  set(model, slab_bonding_setting.record, bonding, status);
  if (status == 0) set(model, slab_display_setting.record, DisplaySetting{display, faces}, status);
  if (status == 0) set(model, slab_tolerance_record, tolerance, status);
}
void surface_resetbuildinfo_(std::int32_t model, std::int32_t& status) {
  remove(model, {slab_bonding_setting.record, slab_display_setting.record, slab_tolerance_record}, status);
}

}  // namespace pathstat
