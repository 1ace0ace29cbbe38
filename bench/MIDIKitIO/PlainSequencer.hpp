#pragma once

#include <alsa/asoundlib.h>

#include <cstdint>
#include <string>
#include <thread>

#include "bench/MIDIKitIO/Delivery.hpp"

namespace midikit::bench {

/// The kernel's port that hands on to whoever listens what it is sent.
inline constexpr const char* throughPort = "Midi Through Port-0";

/// The same way with the library's plain calls: one client sends to the through port, another listens to it
/// and waits for events in a thread of its own.
class PlainSequencer {
 public:
  explicit PlainSequencer(Arrivals& arrivals);
  ~PlainSequencer();
  PlainSequencer(const PlainSequencer&) = delete;
  PlainSequencer& operator=(const PlainSequencer&) = delete;

  /// False where there is no sequencer, or no through port.
  bool isThere() const { return isThere_; }
  void send(std::uint8_t note);

 private:
  bool connect();
  void listen();

  Arrivals& arrivals_;
  snd_seq_t* sender_ = nullptr;
  snd_seq_t* listener_ = nullptr;
  int sendPort_ = -1;
  int listenPort_ = -1;
  snd_seq_addr_t through_{};
  bool isThere_ = false;
  std::jthread thread_;
};

}  // namespace midikit::bench
