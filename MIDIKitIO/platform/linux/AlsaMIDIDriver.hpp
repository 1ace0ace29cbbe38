#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "MIDIKitIO/platform/engine/BlockGate.hpp"
#include "MIDIKitIO/platform/engine/MIDIDriver.hpp"
#include "MIDIKitIO/platform/linux/FileWatch.hpp"
#include "MIDIKitIO/platform/linux/Sequencer.hpp"
#include "MIDIKitIO/platform/linux/SequencerSession.hpp"
#include "foundation/run/Runtime.hpp"
#include "foundation/run/SerialQueue.hpp"

namespace midikit::io::alsa {

/// The kernel's sequencer for a service: equipment and other programs. While there is no sequencer that this
/// user may use, a line in the debug log says why, and the driver waits until one appears in /dev/snd.
class AlsaMIDIDriver final : public engine::MIDIDriver {
 public:
  using Ref = MIDIObjectRef;

  /// The runtime must outlive the driver.
  explicit AlsaMIDIDriver(karvex::foundation::Runtime& runtime);

  void attach(engine::MIDIDriverHost& host) override;
  void detach() override;
  void clientAdded(const std::string& name) override;
  void ownEndpointAdded(Ref endpoint, engine::MIDIObjectKind kind) override;
  void ownEndpointRemoved(Ref endpoint) override;
  void ownEndpointChanged(Ref endpoint, std::string_view key) override;
  void wantedSourcesChanged() override;
  bool connectsByItself(Ref source, Ref destination) const override;

 private:
  std::shared_ptr<SequencerSession> session() const;
  void takeUp();
  void sayWhy(const Sequencer::Unavailable& why);
  void waitForSequencer();

  karvex::foundation::Runtime& runtime_;
  engine::MIDIDriverHost* host_ = nullptr;  ///< set by attach()
  karvex::foundation::SerialQueue queue_;
  std::shared_ptr<engine::BlockGate> gate_;  ///< around what the watch does on the queue
  std::optional<Sequencer::Unavailable::Reason> told_;
  std::mutex turn_;  ///< one change of this program's own things at a time; of the next two
  std::optional<std::string> clientName_;  ///< of the first client
  std::map<Ref, engine::MIDIObjectKind> ownEndpoints_;
  mutable std::mutex mutex_;
  std::shared_ptr<SequencerSession> session_;  ///< null until there is a sequencer
  std::optional<FileWatch> watch_;             ///< while there is none
};

}  // namespace midikit::io::alsa
