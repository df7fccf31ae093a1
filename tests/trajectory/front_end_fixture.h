#pragma once

#include <unistd.h>

#include "in_process_core.h"
#include "testing.h"
#include "trajectory/front_end.h"

namespace pathstat {

using Doubles = std::vector<double>;
using Integers = std::vector<std::int32_t>;

template <class T>
struct Answer {
  std::int32_t status;
  std::int32_t count;
  std::vector<T> values;
};

/// A trajectory that a test opens and asks, with a Core of its own.
class FrontEnd : public testing::Test {
 protected:
  ~FrontEnd() override { trj_close_(1, status_); }

  std::int32_t open(const std::string& name, std::int32_t mode = 1) {
    trj_openread_(name + "   ", mode, handle_, status_);
    return status_;
  }
  std::int32_t attach(const Integers& models) {
    trj_attachtomodels_(handle_, models, status_);
    return status_;
  }
  std::int32_t read(std::int32_t frame) {
    trj_readframe_(handle_, frame, status_);
    return status_;
  }
  Answer<double> doubles(std::int32_t key, std::size_t capacity = 1) {
    return ask<double>(static_cast<Getter<double>>(trj_dvalue_), key, capacity, -7);
  }
  Answer<std::int32_t> integers(std::int32_t key, std::size_t capacity = 1) {
    return ask<std::int32_t>(static_cast<Getter<std::int32_t>>(trj_ivalue_), key, capacity, -7);
  }
  Answer<Logical> logicals(std::int32_t key) {
    return ask<Logical>(static_cast<Getter<Logical>>(trj_lvalue_), key, 1, false);
  }
  std::int32_t integer(std::int32_t key) {
    const auto answer = integers(key);
    EXPECT_EQ(answer.status, 0) << key;
    EXPECT_EQ(answer.count, 1) << key;
    return answer.values[0];
  }
  double number(std::int32_t key) {
    const auto answer = doubles(key);
    EXPECT_EQ(answer.status, 0) << key;
    EXPECT_EQ(answer.count, 1) << key;
    return answer.values[0];
  }

  /// A model of single atoms on the x axis; an atom is fixed if its identifier is among those given.
  std::int32_t model(const Integers& ids, const Integers& fixed = {}, std::int32_t type = 0) {
    std::string id, element, xyz, movable;
    for (std::size_t k = 0; k < ids.size(); ++k) {
      id += " " + std::to_string(ids[k]);
      element += " Ar";
      xyz += " (" + std::to_string(k) + ".5 0 0)";
      movable += std::find(fixed.begin(), fixed.end(), ids[k]) == fixed.end() ? " 1" : " 0";
    }
    return core.import_text("(1 Model chain\n (A I PeriodicType " + std::to_string(type) +
                            ")\n (A V Cell ((9 0 0) (0 9 0) (0 0 9)))\n (A I AtomId (" + id + "))\n (A C Element (" +
                            element + "))\n (A V XYZ (" + xyz + "))\n (A I Movable (" + movable + "))\n)\n");
  }

  InProcessCore core;
  std::int32_t handle_ = 0;
  std::int32_t status_ = -1;

 private:
  template <class T>
  using Getter = void (*)(std::int32_t, std::int32_t, std::span<T>, std::int32_t&, std::int32_t&);
  template <class T>
  Answer<T> ask(Getter<T> getter, std::int32_t key, std::size_t capacity, T filler) {
    Answer<T> answer{-1, -1, std::vector<T>(capacity, filler)};
    getter(handle_, key, answer.values, answer.count, answer.status);
    return answer;
  }
};

}  // namespace pathstat
