#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

// A second writer of binary trajectories, for tests: any version, laid out by hand, and nothing of it shared with the
// library's own reader and writer.

namespace pathstat::testing_bytes {

class Bytes {
 public:
  void i32(std::int32_t value) { put(std::bit_cast<std::uint32_t>(value), 4); }
  void f32(double value) { put(std::bit_cast<std::uint32_t>(static_cast<float>(value)), 4); }
  void f64(double value) { put(std::bit_cast<std::uint64_t>(value), 8); }
  void text(std::string_view characters) {
    for (const char c : characters) all_.push_back(static_cast<std::byte>(c));
  }
  void zeros(std::size_t count) { all_.resize(all_.size() + count); }
  void record(const Bytes& payload) {
    i32(static_cast<std::int32_t>(payload.all_.size()));
    add(payload);
    i32(static_cast<std::int32_t>(payload.all_.size()));
  }
  void add(const Bytes& more) { all_.insert(all_.end(), more.all_.begin(), more.all_.end()); }

  Bytes part(std::size_t from, std::size_t to) const {
    Bytes bytes;
    bytes.all_.assign(all_.begin() + static_cast<std::ptrdiff_t>(from), all_.begin() + static_cast<std::ptrdiff_t>(to));
    return bytes;
  }
  /// Overwrites four bytes.
  void patch(std::size_t offset, std::int32_t value) {
    Bytes four;
    four.i32(value);
    std::copy(four.all_.begin(), four.all_.end(), all_.begin() + static_cast<std::ptrdiff_t>(offset));
  }
  std::size_t size() const { return all_.size(); }
  const std::vector<std::byte>& all() const { return all_; }

 private:
  void put(std::uint64_t bits, int bytes) {
    for (int k = bytes - 1; k >= 0; --k) all_.push_back(static_cast<std::byte>(bits >> (8 * k)));
  }
  std::vector<std::byte> all_;
};

/// What a trajectory file has; the flags are P, F1, ..., F7 as they are stored.
struct Plan {
  std::int32_t version = 2010;
  std::array<std::int32_t, 8> flags{};
  std::int32_t atoms = 2;
  std::vector<std::string> titles{"first title", "second title"};
  std::vector<std::string> comments{};
  std::string text_1 = "first text";
  std::string text_2 = {};
  std::int32_t bytes_behind_lines = 0;
};

inline std::string padded(std::string text, std::size_t width) {
  text.resize(width, ' ');
  return text;
}

inline Bytes lines(const std::vector<std::string>& texts, std::int32_t bytes_behind) {
  Bytes payload;
  payload.i32(static_cast<std::int32_t>(texts.size()));
  for (const auto& line : texts) payload.text(padded(line, 80));
  payload.zeros(static_cast<std::size_t>(bytes_behind));
  return payload;
}

/// Two groups, the second with one atom that does not move; identifiers 10, 11, ...
inline Bytes header(const Plan& plan) {
  Bytes file;
  Bytes first;
  first.text("MDTR");
  first.i32(plan.version);
  for (std::int32_t k = 1; k < 20; ++k) first.i32(100 + k);
  file.record(first);
  if (plan.version >= 311) {
    file.record(lines(plan.titles, plan.bytes_behind_lines));
    file.record(lines(plan.comments, plan.bytes_behind_lines));
  }
  if (plan.version >= 151) {
    Bytes flags;
    for (std::size_t k = 0; k < (plan.version < 300 ? 5U : 8U); ++k) flags.i32(plan.flags[k]);
    file.record(flags);
  }
  if (plan.version < 200) {
    Bytes atoms;
    for (const std::int32_t value : {plan.atoms + 1, plan.atoms, 77, 78}) atoms.i32(value);
    file.record(atoms);
  } else {
    Bytes groups;
    for (const std::int32_t value : {2, plan.atoms, 0, plan.atoms, 1}) groups.i32(value);
    groups.text("solvent wall    ");
    file.record(groups);
    Bytes ids;
    ids.i32(plan.atoms);
    for (std::int32_t k = 0; k < plan.atoms; ++k) ids.i32(10 + k);
    file.record(ids);
  }
  for (const auto& text : {plan.text_1, plan.text_2}) {
    Bytes payload;
    payload.i32(static_cast<std::int32_t>(text.size()));
    payload.text(text);
    file.record(payload);
  }
  return file;
}

/// The frame values of a file, each other than all others, and exact in 32 bits.
inline double number(std::int32_t frame, std::int32_t key, int item = 0) { return 4096.0 * frame + key + item / 8.0; }
inline double coordinate(std::int32_t frame, std::int32_t key, std::int32_t atom, int axis) {
  return 100.0 * (key - 1070) + 10.0 * axis + atom + frame / 16.0;
}

/// One frame, and what its keys must yield.
struct Frame {
  Bytes bytes;
  std::map<std::int32_t, std::vector<double>> floating;
  std::map<std::int32_t, std::int32_t> integers;
};

/// Writes one record after another, by the rules for the version.
class FrameMaker {
 public:
  FrameMaker(const Plan& plan, std::int32_t frame, bool velocities, bool forces)
      : plan_(plan), v_(plan.version), frame_(frame) {
    record_1(velocities, forces);
    records_2_to_4();
    records_5_and_6();
    records_7_to_9();
    atoms(1071);
    if (velocities) atoms(1072);
    if (forces) atoms(1073);
  }
  Frame take() { return std::move(made_); }

 private:
  void f64(std::int32_t key, int count = 1) {
    for (int k = 0; k < count; ++k) payload_.f64(note(key, k));
  }
  void f32(std::int32_t key, int count = 1) {
    for (int k = 0; k < count; ++k) payload_.f32(note(key, k));
  }
  void real(bool wide, std::int32_t key, int count = 1) { wide ? f64(key, count) : f32(key, count); }
  void f64s(std::initializer_list<std::int32_t> keys) {
    for (const auto key : keys) f64(key);
  }
  void i32(std::int32_t key, std::int32_t value) {
    payload_.i32(value);
    made_.integers[key] = value;
  }
  double note(std::int32_t key, int item) {
    made_.floating[key].push_back(number(frame_, key, item));
    return number(frame_, key, item);
  }
  void end() {
    made_.bytes.record(payload_);
    payload_ = {};
  }

  void record_1(bool velocities, bool forces) {
    const bool wide = v_ >= 2002;
    real(wide, 1000);
    i32(2011, 5000 + frame_);
    for (std::int32_t key = 1001; key <= 1005; ++key) real(wide, key);
    f64s({1006, 1007, 1008, 1009, 1010, 1011, 1012, 1013, 1014});
    if (v_ >= 2002) f64(1074);
    if (v_ == 2010) f64s({1016, 1101, 1085, 1083, 1084, 1086, 1088, 1089, 1090, 1087, 1091});
    f64s({1015, 1017, 1018, 1019, 1020, 1021, 1022, 1023, 1024, 1025, 1026, 1027});
    if (v_ >= 2002) f64(1075);
    if (v_ == 2010) f64s({1029, 1102, 1094, 1092, 1093, 1095, 1097, 1098, 1099, 1096, 1100});
    f64s({1028, 1030, 1031, 1032, 1034, 1033, 1035});
    i32(2012, 6000 + frame_);
    i32(2013, 7000 + frame_);
    payload_.i32(velocities ? 2 : 0);
    if (v_ == 2010) payload_.i32(forces ? -1 : 0);
    i32(2014, 8000 + frame_);
    i32(2015, 9000 + frame_);
    payload_.zeros((v_ < 2002 ? 272 : 492) - payload_.size());
    end();
  }

  void records_2_to_4() {
    if (v_ >= 2000) f64s({1036, 1037, 1038, 1039, 1040, 1041});
    if (v_ >= 155) {
      f64s({1042, 1043, 1044, 1045, 1046, 1047});
      end();
    }
    if (plan_.flags[2] == 0) return;
    const bool by_logarithm = v_ >= 300 && plan_.flags[5] != 0;
    const std::int32_t first = by_logarithm ? 1048 : 1052;
    f64s({first, first + 1});
    real(v_ == 2010, first + 2);
    if (v_ >= 300) real(v_ == 2010, first + 3);
    end();
  }

  void records_5_and_6() {
    const bool periodic = plan_.flags[0] != 0;
    const bool has_cell = v_ < 220 ? plan_.flags[3] != 0 : periodic;
    const bool with_energy = v_ == 2000 || v_ == 2001 || v_ == 2010;
    if (has_cell) {
      if (with_energy) f64(1056);
      f64(1057);
      real(v_ == 2010, 1058, v_ < 220 ? 3 : 6);
      if (v_ < 220) made_.floating[1058].resize(6, 0.0);
      if (v_ >= 220) real(v_ == 2010, 1059, 6);
      if (with_energy) {
        f64s({1060, 1061});
        f64(1062, 6);
      }
      end();
    }
    if (!periodic) return;
    i32(2016, 3000 + frame_);
    if (v_ >= 2000) {
      f64(1063, 6);
      f64(1064);
    }
    f64(1065, 6);
    if (v_ >= 300 || v_ == 210) f64(1066);
    end();
  }

  void records_7_to_9() {
    if (v_ >= 300 && plan_.flags[0] != 0 && plan_.flags[6] != 0) {
      f64s({1067, 1068});
      real(v_ == 2010, 1069);
      end();
    }
    if (v_ >= 300 && plan_.flags[7] != 0) {
      real(v_ == 2010, 1070);
      end();
    }
    if (plan_.flags[4] != 0) {
      f64s({1076, 1077, 1078, 1079, 1080, 1081, 1082});
      end();
    }
  }

  void atoms(std::int32_t key) {
    for (int axis = 0; axis < 3; ++axis) {
      for (std::int32_t atom = 0; atom < plan_.atoms; ++atom) {
        const double value = coordinate(frame_, key, atom, axis);
        v_ == 2010 ? payload_.f64(value) : payload_.f32(value);
      }
      end();
    }
    for (std::int32_t atom = 0; atom < plan_.atoms; ++atom) {
      for (int axis = 0; axis < 3; ++axis) made_.floating[key].push_back(coordinate(frame_, key, atom, axis));
    }
  }

  const Plan& plan_;
  std::int32_t v_;
  std::int32_t frame_;
  Bytes payload_;
  Frame made_;
};

inline Frame frame(const Plan& plan, std::int32_t number, bool velocities = false, bool forces = false) {
  return FrameMaker(plan, number, velocities, forces).take();
}

/// A whole file with frames 1 to `frames`, positions only.
inline Bytes file(const Plan& plan, std::int32_t frames) {
  Bytes all = header(plan);
  for (std::int32_t k = 1; k <= frames; ++k) all.add(frame(plan, k).bytes);
  return all;
}

}  // namespace pathstat::testing_bytes
