// The application log on spdlog: one rotating file per process, opened on the first
// line with the settings of that moment.
#include "zet/ZetLog.h"

#include <spdlog/logger.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/rotating_file_sink.h>
#if defined(_WIN32)
#include <windows.h>
#else
#include <unistd.h>
#endif

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <mutex>
#include <string>

#include "zet/ZetOs.h"
#include "zet/ZetSetting.h"

namespace fs = std::filesystem;

struct CZetLog::SImpl {
  std::mutex lock;
  std::shared_ptr<spdlog::logger> logger;
  bool failed = false;  // the file could not be opened: lines are dropped until Close
};

namespace {

std::string Env(const char* name) {
  CStdStr v;
  return CZetOs::GetEnv(name, &v) ? std::string(v) : std::string();
}

#if defined(_WIN32)
// %LOCALAPPDATA%\zet\<program>.log, or the temporary folder's zet\ without it.
std::string DefaultPath() {
  char exe[MAX_PATH] = "zet";
  GetModuleFileNameA(nullptr, exe, MAX_PATH);
  const std::string local = Env("LOCALAPPDATA");
  const fs::path dir = !local.empty() ? fs::path(local) : fs::temp_directory_path();
  return (dir / "zet" / (fs::path(exe).stem().string() + ".log")).string();
}
#else
std::string DefaultPath() {
  fs::path dir;
  const std::string state = Env("XDG_STATE_HOME"), home = Env("HOME");
  if (!state.empty() && state[0] == '/')
    dir = state;
  else if (!home.empty())
    dir = fs::path(home) / ".local/state";
  else
    dir = fs::temp_directory_path();
  return (dir / "zet" / (std::string(program_invocation_short_name) + ".log")).string();
}
#endif

spdlog::level::level_enum LevelOf(int level) {
  return level >= CZetLog::kTrace && level <= CZetLog::kCritical
             ? static_cast<spdlog::level::level_enum>(level)
             : spdlog::level::info;
}

}  // namespace

CZetLog::CZetLog() : m_impl(std::make_unique<SImpl>()) {}
CZetLog::~CZetLog() = default;

CZetLog& CZetLog::Instance() {
  static CZetLog log;
  return log;
}

std::string CZetLog::FilePath() const {
  const std::string& configured = CZetSetting::Inst().GetLogFile();
  return configured.empty() ? DefaultPath() : configured;
}

void CZetLog::Close() {
  std::lock_guard<std::mutex> hold(m_impl->lock);
  m_impl->logger.reset();
  m_impl->failed = false;
}

void CZetLog::Log(int level, const char* message) {
  const spdlog::level::level_enum lvl = LevelOf(level);
  std::lock_guard<std::mutex> hold(m_impl->lock);
  if (!m_impl->logger && !m_impl->failed) {
    const CZetSetting& s = CZetSetting::Inst();
    try {
      const std::string path = FilePath();
      std::error_code ec;
      fs::create_directories(fs::path(path).parent_path(), ec);
      const size_t maxBytes = s.GetLogMaxBytes() > 0 ? s.GetLogMaxBytes() : 1;
      auto sink = std::make_shared<spdlog::sinks::rotating_file_sink_mt>(
          path, maxBytes, static_cast<size_t>(std::max(s.GetLogMaxFiles(), 0)));
      auto logger = std::make_shared<spdlog::logger>("zet", std::move(sink));
      // Lines end in "\n" on every system (spdlog would end them in "\r\n" on Windows),
      // so one log file reads the same wherever it was written.
      logger->set_formatter(std::make_unique<spdlog::pattern_formatter>(
          "%Y-%m-%d %H:%M:%S.%e [%l] [%P:%t] %v", spdlog::pattern_time_type::local, "\n"));
      logger->set_level(spdlog::level::trace);
      logger->flush_on(spdlog::level::trace);  // every line reaches the file at once
      logger->set_error_handler([](const std::string&) {});
      m_impl->logger = std::move(logger);
    } catch (const std::exception&) {
      m_impl->failed = true;
    }
  }
  if (!m_impl->logger || lvl < LevelOf(CZetSetting::Inst().GetLogLevel())) return;
  m_impl->logger->log(lvl, spdlog::string_view_t(message ? message : ""));
}
