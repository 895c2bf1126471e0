// ZetLog: the application log. One rotating file per process (spdlog), placed and
// sized by the platform settings (CZetSetting: log file, size, file count, level).
#pragma once

#include <memory>
#include <string>

#include "zet/ZetExport.h"

class ZET_PLATFORM_API CZetLog {
 public:
  // Severity levels, lowest first.
  enum : int { kTrace = 0, kDebug = 1, kInfo = 2, kWarning = 3, kError = 4, kCritical = 5 };

  // The one log of the process, shared by the host and the plug-in.
  static CZetLog& Instance();

  // Writes one line. The message is data, never a format: it is written as it
  // stands. A level outside kTrace..kCritical is written as kInfo. Lines below the
  // settings' level are dropped. The file is opened on the first line; when it cannot
  // be opened or written, the line is lost and nothing else happens.
  void Log(int level, const char* message);

  // The file lines go to: the settings' log file, or by default
  // $XDG_STATE_HOME/zet/<program>.log ($HOME/.local/state when XDG_STATE_HOME is not
  // an absolute path, the temporary folder without a home).
  std::string FilePath() const;

  // Closes the file; the next line opens it again with the settings then current.
  void Close();

  CZetLog(const CZetLog&) = delete;
  CZetLog& operator=(const CZetLog&) = delete;

 private:
  CZetLog();
  ~CZetLog();
  struct SImpl;
  std::unique_ptr<SImpl> m_impl;
};
