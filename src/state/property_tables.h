#pragma once

#include <cstdint>

namespace pathstat {

/// Addresses of the catalogue's named blocks, one element of each for every row; 0 before the first build.
struct TrjGuiP {
  std::intptr_t pPropNameList = 0;
  std::intptr_t pAnalPropsSelected = 0;
  std::intptr_t pAnalPropsSelectable = 0;
  std::intptr_t pAnalPropsCalculated = 0;
  std::intptr_t pAnalPropsCanBeUsed = 0;
  std::intptr_t pPropUnits = 0;
  std::intptr_t pPropPlotColor = 0;
  std::intptr_t pPropFileExt = 0;
  std::intptr_t pPropNameIds = 0;
  std::intptr_t pAnalPropsOnDisk = 0;
  std::intptr_t pAnalFluctsSelected = 0;
  std::intptr_t pAnalFluctsSelectable = 0;
  std::intptr_t pAnalFluctsCalculated = 0;
  std::intptr_t pAnalFluctsCanBeUsed = 0;
  std::intptr_t pFluctNameList = 0;
  std::intptr_t pFluctAbbrevNameList = 0;
  std::intptr_t pFluctUnits = 0;
  std::intptr_t pFluctPlotColor = 0;
  std::intptr_t pFluctFileExt = 0;
  std::intptr_t pFluctNameIds = 0;
  std::intptr_t pAnalFluctsOnDisk = 0;
  std::intptr_t pShortPropNames = 0;
};
inline TrjGuiP trj_gui_p_;

}  // namespace pathstat
