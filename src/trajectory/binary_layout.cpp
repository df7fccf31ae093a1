#include "trajectory/binary_layout.h"

namespace pathstat {
namespace {

/// How a value is stored, by version.
enum class Form : std::uint8_t { i32, f64, f64_from_2002, f64_in_2010 };

/// Which versions hold a value.
enum class Held : std::uint8_t {
  always,
  from_220,
  from_300,
  from_2000,
  from_2002,
  in_2010,
  with_cell_energy,    // 2000, 2001 and 2010
  with_virial_number,  // 210, and from 300 on
};

struct FrameField {
  std::int32_t record;
  std::int32_t key;
  Form form;
  Held held = Held::always;
  std::uint8_t count = 1;
};

using enum Form;
using enum Held;

// In the order of the file. What a version does not hold takes no place in it.
constexpr std::array frame_fields{
    // Record 1: time and temperatures.
    FrameField{1, 1000, f64_from_2002}, FrameField{1, 2011, Form::i32}, FrameField{1, 1001, f64_from_2002},
    FrameField{1, 1002, f64_from_2002}, FrameField{1, 1003, f64_from_2002}, FrameField{1, 1004, f64_from_2002},
    FrameField{1, 1005, f64_from_2002},
    // Energies: potential, bond, angle, torsion, inversion, van der Waals, Coulomb, hydrogen bond, restraint.
    FrameField{1, 1006, Form::f64}, FrameField{1, 1007, Form::f64}, FrameField{1, 1008, Form::f64},
    FrameField{1, 1009, Form::f64}, FrameField{1, 1010, Form::f64}, FrameField{1, 1011, Form::f64},
    FrameField{1, 1012, Form::f64}, FrameField{1, 1013, Form::f64}, FrameField{1, 1014, Form::f64},
    // Urey-Bradley, three body, cross terms.
    FrameField{1, 1074, Form::f64, from_2002}, FrameField{1, 1016, Form::f64, in_2010},
    FrameField{1, 1101, Form::f64, in_2010}, FrameField{1, 1085, Form::f64, in_2010},
    FrameField{1, 1083, Form::f64, in_2010}, FrameField{1, 1084, Form::f64, in_2010},
    FrameField{1, 1086, Form::f64, in_2010}, FrameField{1, 1088, Form::f64, in_2010},
    FrameField{1, 1089, Form::f64, in_2010}, FrameField{1, 1090, Form::f64, in_2010},
    FrameField{1, 1087, Form::f64, in_2010}, FrameField{1, 1091, Form::f64, in_2010},
    // User, valence and non bond energy, then slots that only some programs fill.
    FrameField{1, 1015, Form::f64}, FrameField{1, 1017, Form::f64}, FrameField{1, 1018, Form::f64},
    FrameField{1, 1019, Form::f64}, FrameField{1, 1020, Form::f64}, FrameField{1, 1021, Form::f64},
    FrameField{1, 1022, Form::f64}, FrameField{1, 1023, Form::f64}, FrameField{1, 1024, Form::f64},
    FrameField{1, 1025, Form::f64}, FrameField{1, 1026, Form::f64}, FrameField{1, 1027, Form::f64},
    FrameField{1, 1075, Form::f64, from_2002}, FrameField{1, 1029, Form::f64, in_2010},
    FrameField{1, 1102, Form::f64, in_2010}, FrameField{1, 1094, Form::f64, in_2010},
    FrameField{1, 1092, Form::f64, in_2010}, FrameField{1, 1093, Form::f64, in_2010},
    FrameField{1, 1095, Form::f64, in_2010}, FrameField{1, 1097, Form::f64, in_2010},
    FrameField{1, 1098, Form::f64, in_2010}, FrameField{1, 1099, Form::f64, in_2010},
    FrameField{1, 1096, Form::f64, in_2010}, FrameField{1, 1100, Form::f64, in_2010}, FrameField{1, 1028, Form::f64},
    FrameField{1, 1030, Form::f64}, FrameField{1, 1031, Form::f64},
    // Total energy, kinetic energy, two slots, and the flags for velocities (3008) and forces (3009).
    FrameField{1, 1032, Form::f64}, FrameField{1, 1034, Form::f64}, FrameField{1, 1033, Form::f64},
    FrameField{1, 1035, Form::f64}, FrameField{1, 2012, Form::i32}, FrameField{1, 2013, Form::i32},
    FrameField{1, 3008, Form::i32}, FrameField{1, 3009, Form::i32, in_2010}, FrameField{1, 2014, Form::i32},
    FrameField{1, 2015, Form::i32},
    // Record 2: pressures, volumes, radius of gyration.
    FrameField{2, 1036, Form::f64, from_2000}, FrameField{2, 1037, Form::f64, from_2000},
    FrameField{2, 1038, Form::f64, from_2000}, FrameField{2, 1039, Form::f64, from_2000},
    FrameField{2, 1040, Form::f64, from_2000}, FrameField{2, 1041, Form::f64, from_2000},
    FrameField{2, 1042, Form::f64}, FrameField{2, 1043, Form::f64}, FrameField{2, 1044, Form::f64},
    FrameField{2, 1045, Form::f64}, FrameField{2, 1046, Form::f64}, FrameField{2, 1047, Form::f64},
    // Records 3 and 4: thermostat, in one of two forms.
    FrameField{3, 1048, Form::f64}, FrameField{3, 1049, Form::f64}, FrameField{3, 1050, f64_in_2010},
    FrameField{3, 1051, f64_in_2010}, FrameField{4, 1052, Form::f64}, FrameField{4, 1053, Form::f64},
    FrameField{4, 1054, f64_in_2010}, FrameField{4, 1055, f64_in_2010, from_300},
    // Record 5: cell.
    FrameField{5, 1056, Form::f64, with_cell_energy}, FrameField{5, 1057, Form::f64},
    FrameField{5, 1058, f64_in_2010, always, 6}, FrameField{5, 1059, f64_in_2010, from_220, 6},
    FrameField{5, 1060, Form::f64, with_cell_energy}, FrameField{5, 1061, Form::f64, with_cell_energy},
    FrameField{5, 1062, Form::f64, with_cell_energy, 6},
    // Record 6: stress.
    FrameField{6, 2016, Form::i32}, FrameField{6, 1063, Form::f64, from_2000, 6},
    FrameField{6, 1064, Form::f64, from_2000}, FrameField{6, 1065, Form::f64, always, 6},
    FrameField{6, 1066, Form::f64, with_virial_number},
    // Records 7 and 8: thermostat of a constant pressure run, single thermostat value.
    FrameField{7, 1067, Form::f64}, FrameField{7, 1068, Form::f64}, FrameField{7, 1069, f64_in_2010},
    FrameField{8, 1070, f64_in_2010},
    // Record 9: seven values for which nothing asks.
    FrameField{9, 1076, Form::f64}, FrameField{9, 1077, Form::f64}, FrameField{9, 1078, Form::f64},
    FrameField{9, 1079, Form::f64}, FrameField{9, 1080, Form::f64}, FrameField{9, 1081, Form::f64},
    FrameField{9, 1082, Form::f64}};

constexpr bool held_in(Held held, std::int32_t version) {
  switch (held) {
    case always:
      return true;
    case from_220:
      return version >= 220;
    case from_300:
      return version >= 300;
    case from_2000:
      return version >= 2000;
    case from_2002:
      return version >= 2002;
    case in_2010:
      return version == 2010;
    case with_cell_energy:
      return version == 2000 || version == 2001 || version == 2010;
    case with_virial_number:
      return version == 210 || version >= 300;
  }
  return false;
}

constexpr FieldType stored_type(Form form, std::int32_t version) {
  switch (form) {
    case Form::i32:
      return FieldType::i32;
    case Form::f64:
      return FieldType::f64;
    case f64_from_2002:
      return version >= 2002 ? FieldType::f64 : FieldType::f32;
    case f64_in_2010:
      return version == 2010 ? FieldType::f64 : FieldType::f32;
  }
  return FieldType::i32;
}

/// Below version 220 the cell has three of its six numbers.
constexpr std::uint8_t stored_count(const FrameField& field, std::int32_t version) {
  return field.key == 1058 && version < 220 ? 3 : field.count;
}

constexpr std::int32_t width(FieldType type) { return type == FieldType::f64 ? 8 : 4; }

constexpr std::int32_t record_length(int record, std::int32_t version) {
  const bool newest = version == 2010;
  switch (record) {
    case 1:
      return version < 2002 ? 272 : 492;
    case 2:
      return version < 2000 ? 48 : 96;
    case 3:
      return newest ? 32 : 24;
    case 4:
      return newest ? 32 : version < 300 ? 20 : 24;
    case 5:
      return version < 220 ? 20 : newest ? 176 : version == 2000 || version == 2001 ? 128 : 56;
    case 6:
      return version >= 2000 ? 116 : version == 210 || version >= 300 ? 60 : 52;
    case 7:
      return newest ? 24 : 20;
    case 8:
      return newest ? 8 : 4;
    default:
      return 56;
  }
}

/// The fields of a record must fill it; only record 1 of the versions between 2002 and 2010 ends in bytes without a
/// key.
constexpr bool fields_fill_records(std::int32_t version) {
  std::array<std::int32_t, frame_records> filled{};
  for (const auto& field : frame_fields) {
    if (!held_in(field.held, version)) continue;
    filled[static_cast<std::size_t>(field.record - 1)] +=
        width(stored_type(field.form, version)) * stored_count(field, version);
  }
  for (int record = 1; record <= frame_records; ++record) {
    const auto length = record_length(record, version);
    const auto sum = filled[static_cast<std::size_t>(record - 1)];
    const bool open_end = record == 1 && version >= 2002 && version != 2010;
    if (open_end ? sum > length : sum != length) return false;
  }
  return true;
}
static_assert(fields_fill_records(150) && fields_fill_records(210) && fields_fill_records(219) &&
              fields_fill_records(299) && fields_fill_records(1999) && fields_fill_records(2001) &&
              fields_fill_records(2009) && fields_fill_records(2010) && fields_fill_records(2011));

/// Index of a frame key among all of them, or -1.
constexpr int slot(std::int32_t key) {
  if (key >= 1000 && key <= 1102) return key - 1000;
  if (key >= 2011 && key <= 2016) return key - 2011 + 103;
  if (key == 3008 || key == 3009) return key - 3008 + 109;
  return -1;
}

}  // namespace

bool has_frame_record(int record, std::int32_t version, const BinaryFlags& flags) {
  const bool periodic = flags[0] != 0;
  switch (record) {
    case 1:
      return true;
    case 2:
      return version >= 155;
    case 3:
      return flags[2] != 0 && flags[5] != 0;
    case 4:
      return flags[2] != 0 && flags[5] == 0;
    case 5:
      return version < 220 ? flags[3] != 0 : periodic;
    case 6:
      return periodic;
    case 7:
      return version >= 300 && periodic && flags[6] != 0;
    case 8:
      return version >= 300 && flags[7] != 0;
    case 9:
      return flags[4] != 0;
    default:
      return false;
  }
}

std::int32_t frame_record_length(int record, std::int32_t version) { return record_length(record, version); }

FrameLayout::FrameLayout(std::int32_t version, const BinaryFlags& flags) {
  for (int record = 1; record <= frame_records; ++record) {
    if (has_frame_record(record, version, flags)) add(record, version);
  }
}

FrameLayout FrameLayout::with_every_record(std::int32_t version) {
  FrameLayout layout;
  for (int record = 1; record <= frame_records; ++record) layout.add(record, version);
  return layout;
}

void FrameLayout::add(int record, std::int32_t version) {
  starts_[static_cast<std::size_t>(record - 1)] = bytes_;
  lengths_[static_cast<std::size_t>(record - 1)] = record_length(record, version);
  auto offset = bytes_;
  for (const auto& field : frame_fields) {
    if (field.record != record || !held_in(field.held, version)) continue;
    const FieldPlace place{offset, stored_type(field.form, version), stored_count(field, version), field.count};
    places_[static_cast<std::size_t>(slot(field.key))] = place;
    offset += width(place.type) * place.stored;
  }
  bytes_ += record_length(record, version);
}

FieldPlace FrameLayout::place(std::int32_t key) const {
  const int index = slot(key);
  return index < 0 ? FieldPlace{} : places_[static_cast<std::size_t>(index)];
}

}  // namespace pathstat
