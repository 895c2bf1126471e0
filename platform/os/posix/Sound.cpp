// Message beeps: the desktop sound theme's events played through libcanberra (loaded
// at run time) by one worker thread of the platform, so that a beep returns at once
// as MessageBeep does, and a sound system that blocks or is missing never holds up an
// instruction. At most a few beeps wait; more are dropped.
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <thread>

#include "os/posix/DynLib.h"
#include "zet/ZetOs.h"

namespace {

// The freedesktop sound theme's event for a Windows sound type.
const char* EventOf(unsigned type) {
  switch (type) {
    case 16: return "dialog-error";
    case 32: return "dialog-question";
    case 48: return "dialog-warning";
    case 64: return "dialog-information";
    default: return "bell";  // 0 (the default sound), 0xFFFFFFFF (the simple beep)
  }
}

class CSoundPlayer {
 public:
  static constexpr size_t kMaxWaiting = 4;

  bool Queue(const char* event) {
    std::lock_guard<std::mutex> hold(m_lock);
    if (m_waiting.size() >= kMaxWaiting) return false;
    if (!m_started) {
      // Detached: the player lives as long as the process and is never destroyed, so
      // exit neither waits for a sound system nor destroys what the thread uses.
      std::thread([this] { Loop(); }).detach();
      m_started = true;
    }
    m_waiting.push_back(event);
    m_wake.notify_one();
    return true;
  }

 private:
  using Context = struct ca_context;

  void Loop() {
    for (;;) {
      const char* event;
      {
        std::unique_lock<std::mutex> hold(m_lock);
        m_wake.wait(hold, [this] { return !m_waiting.empty(); });
        event = m_waiting.front();
        m_waiting.pop_front();
      }
      Play(event);
    }
  }

  // Without libcanberra or a sound device the event is not heard; nothing else.
  void Play(const char* event) {
    if (!m_loaded) Load();
    if (!m_context) return;
    m_play(m_context, 0, "event.id", event, "media.role", "event", nullptr);
  }

  void Load() {
    m_loaded = true;
    zet::os::CDynLib lib{"libcanberra.so.0"};
    int (*create)(Context**) = nullptr;
    if (!lib.Get("ca_context_create", &create) || !lib.Get("ca_context_play", &m_play)) return;
    if (create(&m_context) != 0) m_context = nullptr;
  }

  std::mutex m_lock;
  std::condition_variable m_wake;
  std::deque<const char*> m_waiting;
  bool m_started = false;
  // Used by the worker only.
  bool m_loaded = false;
  Context* m_context = nullptr;
  int (*m_play)(Context*, uint32_t, ...) = nullptr;
};

CSoundPlayer& Player() {
  static CSoundPlayer* player = new CSoundPlayer;
  return *player;
}

}  // namespace

bool CZetOs::PlayMessageBeep(unsigned type) { return Player().Queue(EventOf(type)); }
