// ZetSetting: the application settings the library reads (angle unit, default
// annotation colour) and the angle translator between radians and the user's unit.
#pragma once

#include "zet/ZetExport.h"

enum class EZetAngleUnit { kRadians, kDegrees };

class ZET_PLATFORM_API CZetSetting {
 public:
  // The one settings object of the process, shared by the host and the plug-in.
  static CZetSetting& Inst();

  EZetAngleUnit GetAngleUnit() const { return m_angleUnit; }
  void SetAngleUnit(EZetAngleUnit unit) { m_angleUnit = unit; }
  // The colour a host draws an annotation in when the instruction passes colour 0.
  // Colours are packed 0x00BBGGRR: red in the low byte, blue in the third.
  int GetDefaultAnnotationColor() const { return m_annotationColor; }
  void SetDefaultAnnotationColor(int color) { m_annotationColor = color; }

 private:
  EZetAngleUnit m_angleUnit = EZetAngleUnit::kRadians;
  int m_annotationColor = 0x00FF00;  // 0x00BBGGRR: green
};

class ZET_PLATFORM_API CZetAngleTr {
 public:
  // From the user's preferred unit to radians.
  static double ToRad(double angle);
  // From radians to the user's preferred unit. `flag` is accepted for the callers'
  // sake and does not change the result.
  static double ToPrefs(double radians, bool flag);
};
