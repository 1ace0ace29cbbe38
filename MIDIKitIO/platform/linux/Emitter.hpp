#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "MIDIKitIO/platform/MIDIPacketList.hpp"
#include "MIDIKitIO/platform/linux/Outlet.hpp"
#include "MIDIKitIO/platform/linux/Sequencer.hpp"

namespace midikit::io::alsa {

/// What one of this program's virtual sources sends, to everyone who listens to its port: each by a way of
/// its own, so that one who stops reading delays nobody. On the queue alone.
class Emitter {
 public:
  struct Source {
    /// The port; none while other programs don't see the source.
    std::function<std::optional<int>()> port;
    /// For a listener; Outlet::Route::sysExRate.
    std::function<std::optional<std::int64_t>(PortAddress listener)> sysExRate;
  };

  Emitter(OutletContext context, std::shared_ptr<Sequencer> sequencer,
          std::shared_ptr<karvex::foundation::SerialQueue> queue, Source source)
      : context_(std::move(context)),
        sequencer_(std::move(sequencer)),
        queue_(std::move(queue)),
        source_(std::move(source)) {}

  void send(const MIDIPacketList& list);

 private:
  std::shared_ptr<Outlet> outletTo(PortAddress listener, int port) const;

  OutletContext context_;
  std::shared_ptr<Sequencer> sequencer_;
  std::shared_ptr<karvex::foundation::SerialQueue> queue_;
  Source source_;
  std::optional<int> port_;
  std::map<PortAddress, std::shared_ptr<Outlet>> outlets_;
};

}  // namespace midikit::io::alsa
