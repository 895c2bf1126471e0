// ZetGeometry: the platform's plane-geometry routines and its constants.
#pragma once

#include "zet/ZetExport.h"

class ZET_PLATFORM_API CZetGeometry {
 public:
  static constexpr double Pi = 3.14159265358979323846;
  static constexpr double PiDiv2 = 1.57079632679489661923;
  static constexpr double PiDiv4 = 0.78539816339744830962;
};
