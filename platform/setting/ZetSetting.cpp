// The process-wide settings and the angle translator.
#include "zet/ZetSetting.h"

#include "zet/ZetGeometry.h"

CZetSetting& CZetSetting::Inst() {
  static CZetSetting settings;
  return settings;
}

double CZetAngleTr::ToRad(double angle) {
  if (CZetSetting::Inst().GetAngleUnit() == EZetAngleUnit::kDegrees)
    return angle * CZetGeometry::Pi / 180.0;
  return angle;
}

double CZetAngleTr::ToPrefs(double radians, bool) {
  if (CZetSetting::Inst().GetAngleUnit() == EZetAngleUnit::kDegrees)
    return radians * 180.0 / CZetGeometry::Pi;
  return radians;
}
