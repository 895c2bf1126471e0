// What an instruction touches beyond its outputs: its declared effects. The
// plug-in's registry rows carry them beside each instruction's identifier and
// id; a host reads them through the same rows (the descriptor records
// themselves stay as they are). The names are the vocabulary of `zet catalog`'s
// "effects" field, in its order.
#pragma once

#include <string>
#include <vector>

namespace zet {

enum EEffect : unsigned {
  kEffectNone = 0,
  kEffectFiles = 1u << 0,        // reads or changes files and folders by name
  kEffectEnvironment = 1u << 1,  // reads or changes the process's environment
  kEffectBlocking = 1u << 2,     // may wait: a sleep, a message box
  kEffectDesktop = 1u << 3,      // a dialog, the keyboard state, a sound
  kEffectDrawing = 1u << 4,      // adds annotations to the overlay
  kEffectStore = 1u << 5,        // keeps data in the host's store
  kEffectEvents = 1u << 6,       // raises a program event
  kEffectLog = 1u << 7,          // writes the application log
};

inline constexpr const char* kEffectNames[] = {"files",   "environment", "blocking", "desktop",
                                               "drawing", "store",       "events",   "log"};

// The names of the effects in `mask`, in vocabulary order.
inline std::vector<std::string> EffectNames(unsigned mask) {
  std::vector<std::string> names;
  for (unsigned i = 0; i < sizeof(kEffectNames) / sizeof(kEffectNames[0]); ++i)
    if (mask & (1u << i)) names.emplace_back(kEffectNames[i]);
  return names;
}

}  // namespace zet
