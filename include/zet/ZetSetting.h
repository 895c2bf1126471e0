// ZetSetting: the application settings the library reads (angle unit, default
// annotation colour, the log's place and size, how long a message box may wait) and
// the angle translator between radians and the user's unit.
#pragma once

#include <cstdint>
#include <string>

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

  // The log (CZetLog): its file (empty: the default place), the size at which it
  // rotates, how many files are kept beside the current one, and the lowest level
  // written (CZetLog::kDebug: everything the instructions log). Changes apply when
  // the log next opens its file (CZetLog::Close).
  const std::string& GetLogFile() const { return m_logFile; }
  void SetLogFile(const std::string& path) { m_logFile = path; }
  uint64_t GetLogMaxBytes() const { return m_logMaxBytes; }
  void SetLogMaxBytes(uint64_t bytes) { m_logMaxBytes = bytes; }
  int GetLogMaxFiles() const { return m_logMaxFiles; }
  void SetLogMaxFiles(int files) { m_logMaxFiles = files; }
  int GetLogLevel() const { return m_logLevel; }
  void SetLogLevel(int level) { m_logLevel = level; }

  // How long a message box waits for its answer, in milliseconds, before it is
  // closed and answers 0; 0 waits for ever, as the Windows call does.
  int GetMessageBoxTimeout() const { return m_messageBoxTimeout; }
  void SetMessageBoxTimeout(int ms) { m_messageBoxTimeout = ms; }

 private:
  EZetAngleUnit m_angleUnit = EZetAngleUnit::kRadians;
  int m_annotationColor = 0x00FF00;  // 0x00BBGGRR: green
  std::string m_logFile;
  uint64_t m_logMaxBytes = 5u << 20;
  int m_logMaxFiles = 3;
  int m_logLevel = 1;
  int m_messageBoxTimeout = 0;
};

class ZET_PLATFORM_API CZetAngleTr {
 public:
  // From the user's preferred unit to radians.
  static double ToRad(double angle);
  // From radians to the user's preferred unit. `flag` is accepted for the callers'
  // sake and does not change the result.
  static double ToPrefs(double radians, bool flag);
};
