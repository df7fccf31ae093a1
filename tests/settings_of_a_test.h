#pragma once

#include "state/analysis_settings.h"
#include "state/statistics_settings.h"
#include "state/trajectory_frames.h"

namespace pathstat {

/// The analysis's shared settings, as they are at its start both when a test begins and when it has ended.
class SettingsOfATest {
 public:
  SettingsOfATest() { reset(); }
  ~SettingsOfATest() { reset(); }
  SettingsOfATest(const SettingsOfATest&) = delete;
  SettingsOfATest& operator=(const SettingsOfATest&) = delete;

 private:
  static void reset() {
    trj_gui_l_ = {};
    trj_gui_i_ = {};
    trj_gui_d_ = {};
    trj_gui_c_ = {};
    trj_frames_ = {};
    trj_stats_ = {};
    trj_stats_c_ = {};
  }
};

}  // namespace pathstat
