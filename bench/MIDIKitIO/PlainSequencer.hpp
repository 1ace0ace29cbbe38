#pragma once

#include <alsa/asoundlib.h>

#include <cstdint>
#include <optional>
#include <string>
#include <thread>

#include "bench/MIDIKitIO/Delivery.hpp"

namespace midikit::bench {

/// Another program on the sequencer, with the library's plain calls: one client connects to others and sends
/// to them, another one waits for events in a thread of its own and counts the notes among them.
class PlainSequencer {
 public:
  /// The port that others send to.
  static constexpr const char* inputName = "bench plain input";

  explicit PlainSequencer(Arrivals& arrivals);
  ~PlainSequencer();
  PlainSequencer(const PlainSequencer&) = delete;
  PlainSequencer& operator=(const PlainSequencer&) = delete;

  /// False where there is no sequencer.
  bool isThere() const { return isThere_; }
  snd_seq_addr_t input() const { return input_; }
  /// The port of that name of any program.
  std::optional<snd_seq_addr_t> find(const std::string& portName) const;
  /// Makes a port that is connected to the destination; negative if there is none left.
  int connectTo(snd_seq_addr_t destination);
  /// Sends to what the port is connected to.
  void send(int port, std::uint8_t note);

 private:
  bool open();
  void listen();
  void output(snd_seq_event_t& event, int port);

  Arrivals& arrivals_;
  snd_seq_t* sender_ = nullptr;
  snd_seq_t* listener_ = nullptr;
  snd_seq_addr_t input_{};
  bool isThere_ = false;
  std::jthread thread_;
};

}  // namespace midikit::bench
