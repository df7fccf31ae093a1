#pragma once

#include <bit>
#include <cstdio>

#include "testing.h"
#include "volumes/volume_file.h"

namespace pathstat {

/// A volume as a plain writer sees it, who knows nothing of the library.
struct PlainVolume {
  int type = 1, kind = 1;
  std::array<int, 3> n{};
  float min = 0, max = 1;
  FloatVector origin{}, spacing{1, 1, 1};
  std::vector<std::string> titles{"BRICK map produced using the VL VOL routines"};
  std::vector<float> values, offsets;
  int frame = -1;
  std::array<float, 6> cell{};

  std::size_t point(int i, int j, int k) const { return static_cast<std::size_t>((k * n[1] + j) * n[0] + i); }
  std::size_t points() const { return static_cast<std::size_t>(n[0] * n[1] * n[2]); }
  int bricks(std::size_t axis) const { return (n[axis] - 2) / 5 + 1; }
  double steps() const { return type == 1 ? 127 : 16383; }
  float scale() const { return type == 4 ? 1 : max - min < 0.0001f ? 1 : float(steps() / (double(max) - double(min))); }
  float offset() const { return type == 4 ? 0 : -min; }
  float widest() const { return std::max({spacing[0], spacing[1], spacing[2]}); }
  float scale2() const { return type == 4 ? 1 : float(steps() / (2 * double(widest()))); }
  float offset2() const { return type == 4 ? 0 : -widest(); }
  std::size_t record_bytes() const { return static_cast<std::size_t>(216 * type); }

  std::string bytes() const {
    std::string out = record("mbk_1.0" + integer(int(titles.size()) + kind) +
                             std::string(1, type == 1   ? 'B'
                                            : type == 2 ? 'S'
                                                        : 'R'));
    for (const auto& title : titles) out += title_record(title);
    out += title_record("HEADERENERGY              S" + numbers(scale(), offset()));
    if (kind == 2) out += title_record("HEADERRANDOMOFFSETFROMGRIDV" + numbers(scale2(), offset2()));
    std::string header = integer(n[2]);
    for (const int points : n) header += integer(points);
    for (std::size_t axis = 0; axis < 3; ++axis) header += integer(bricks(axis));
    for (const int range : {1, 1, n[0], 1, n[1]}) header += integer(range);
    for (std::size_t k = 0; k < 6; ++k) {
      header += real(frame > 0 ? cell[k] : k < 3 ? origin[k] : spacing[k - 3] * float(n[k - 3]));
    }
    header += real(0) + real(offset()) + real(scale()) + integer(6) + integer(frame) + real(min) + real(max);
    out += record(header);
    out += all_bricks([&](std::size_t at) {
      const float v = std::max(min, std::min(max, values[at]));
      return type == 4 ? real(v) : whole(std::round((double(v) + offset()) * scale()));
    });
    for (std::size_t axis = 0; kind == 2 && axis < 3; ++axis) {
      out += all_bricks([&](std::size_t at) {
        const double stored = (double(offsets[3 * at + axis]) + offset2()) * scale2();
        return type == 4 ? real(float(stored)) : whole(type == 1 ? std::round(stored) : std::trunc(stored));
      });
    }
    return out;
  }

 private:
  static std::string integer(int value) {
    std::string text;
    for (const int shift : {24, 16, 8, 0}) text += char(value >> shift & 255);
    return text;
  }
  static std::string real(float value) { return integer(std::bit_cast<int>(value)); }
  std::string whole(double value) const { return integer(int(value)).substr(type == 1 ? 3 : 2); }
  std::string record(std::string text) const { return text.append(record_bytes() - text.size(), '\0'); }
  std::string title_record(std::string text) const { return record(text.append(128 - text.size(), ' ')); }
  /// Two columns of 13, with the digits behind a leading zero.
  std::string numbers(float a, float b) const {
    std::string text = std::to_string(type);
    for (const double value : {double(a), double(b)}) {
      const int exponent = value == 0 ? 0 : int(std::floor(std::log10(std::abs(value)))) + 1;
      std::array<char, 40> column;
      std::snprintf(column.data(), column.size(), "%9.6fE%+03d", value / std::pow(10.0, exponent), exponent);
      text += column.data();
    }
    return text;
  }
  template <class Stored>
  std::string all_bricks(Stored stored) const {
    std::string out;
    for (int brick = 0; brick < bricks(0) * bricks(1) * bricks(2); ++brick) {
      const int bx = brick % bricks(0), by = brick / bricks(0) % bricks(1), bz = brick / bricks(0) / bricks(1);
      for (int p = 0; p < 216; ++p) {
        const int i = 5 * bx + p % 6, j = 5 * by + p / 6 % 6, k = 5 * bz + p / 36;
        out += i < n[0] && j < n[1] && k < n[2] ? stored(point(i, j, k)) : std::string(std::size_t(type), '\0');
      }
    }
    return out;
  }
};

}  // namespace pathstat
