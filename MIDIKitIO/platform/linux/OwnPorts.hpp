#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"
#include "MIDIKitIO/platform/linux/Sequencer.hpp"

namespace midikit::io::alsa {

/// The ports under which other programs see this one's virtual endpoints. Any thread, but changes come one at
/// a time.
class OwnPorts {
 public:
  using Ref = MIDIObjectRef;

  /// What others are to see.
  struct Appearance {
    std::string name;
    bool isPrivate = false;  ///< then there is no port at all: others are told that it has gone
    Sequencer::Direction direction = Sequencer::Direction::source;
  };

  /// The sequencer must outlive the ports.
  explicit OwnPorts(Sequencer& sequencer) : sequencer_(sequencer) {}

  void show(Ref endpoint, const Appearance& appearance);
  void remove(Ref endpoint);

  std::optional<int> portOf(Ref endpoint) const;
  /// The endpoint at a port of this program, or 0.
  Ref endpointAt(int port) const;

 private:
  Sequencer& sequencer_;
  mutable std::mutex mutex_;
  std::map<Ref, int> ports_;
  std::map<int, Ref> endpoints_;
};

}  // namespace midikit::io::alsa
