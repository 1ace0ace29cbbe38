#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "MIDIKitIO/manager/MIDIIORawNotification.hpp"
#include "MIDIKitIO/manager/MIDIManaged.hpp"
#include "MIDIKitIO/objects/MIDIEndpoint.hpp"
#include "MIDIKitInternals/ThreadSafeAccess.hpp"

namespace midikit::io {

class MIDIThruConnectionProxy;
struct MIDIThruConnectionSettings;

/// MIDI that the platform forwards from outputs to inputs, without the program in the path. On the platforms
/// 11 and 12, whose service has a fault there, a proxy takes the place of a connection that isn't persistent:
/// the program itself forwards, and the parameters have no effect.
class MIDIThruConnection final : public internal::MIDIManaged {
 public:
  /// How long a connection lasts. A plain value.
  class Lifecycle {
   public:
    /// Until disposePersistentThruConnections() with that owner, whether the program runs or not.
    static Lifecycle persistent(std::string ownerID) { return Lifecycle(std::move(ownerID)); }
    /// As long as the manager holds it.
    static Lifecycle nonPersistent() { return Lifecycle(std::nullopt); }

    /// None if it isn't persistent.
    const std::optional<std::string>& ownerID() const { return ownerID_; }

    /// "persistent(owner)", "nonPersistent"
    std::string description() const { return ownerID_ ? "persistent(" + *ownerID_ + ")" : "nonPersistent"; }

    friend bool operator==(const Lifecycle&, const Lifecycle&) = default;

   private:
    explicit Lifecycle(std::optional<std::string> ownerID) : ownerID_(std::move(ownerID)) {}

    std::optional<std::string> ownerID_;
  };

  /// What the platform leaves out. A plain value.
  struct Parameters {
    bool filterOutAllControls = false;
    bool filterOutBeatClock = false;
    bool filterOutMTC = false;
    bool filterOutSysEx = false;
    bool filterOutTuneRequest = false;

    friend bool operator==(const Parameters&, const Parameters&) = default;
  };

  /// Nothing is on the platform yet. Takes the first 8 outputs and inputs. For the manager.
  MIDIThruConnection(const std::shared_ptr<MIDIManager>& manager, MIDIThruConnectionSettings settings);
  ~MIDIThruConnection() override { dispose(); }

  /// At most 8.
  const std::vector<MIDIOutputEndpoint>& outputs() const { return outputs_; }
  /// At most 8.
  const std::vector<MIDIInputEndpoint>& inputs() const { return inputs_; }
  const Lifecycle& lifecycle() const { return lifecycle_; }
  const Parameters& parameters() const { return parameters_; }
  /// None if the connection isn't there; 0 if a proxy takes its place.
  std::optional<MIDIObjectRef> coreMIDIThruConnectionRef() const { return platform_.value().reference; }
  /// None if the platform itself forwards.
  std::shared_ptr<MIDIThruConnectionProxy> proxy() const { return platform_.value().proxy; }

  /// Makes the connection on the platform, or the proxy. For the manager.
  /// @throws MIDIIOError `notSupported` for a persistent one on the platforms 11 and 12; `osStatus`; what the
  /// proxy's connections throw
  ///
  /// Thread-safe: on eventQueue alone.
  /// Realtime-safe: no, it asks the service.
  void create();

  /// A change of the setup, for the proxy. Errors end there.
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it locks and asks the service.
  void follow(const MIDIIORawNotification& change) const noexcept;

  /// As for all managed objects, but a persistent connection stays on the platform.
  void dispose() noexcept override;

  /// `MIDIThruConnection(ref: 1, outputs: [...], inputs: [...], nonPersistent)`, with "nil" for a reference
  /// that isn't there.
  std::string description() const override;

 private:
  /// What the connection is on the platform.
  struct Platform {
    std::optional<MIDIObjectRef> reference;
    std::shared_ptr<MIDIThruConnectionProxy> proxy;
    bool isDisposed = false;
  };

  Platform makePlatform() const;
  MIDIObjectRef makeConnection() const;
  void free(const Platform& platform) const;

  const std::vector<MIDIOutputEndpoint> outputs_;
  const std::vector<MIDIInputEndpoint> inputs_;
  const Lifecycle lifecycle_;
  const Parameters parameters_;
  internals::ThreadSafeAccess<Platform> platform_;
};

/// What MIDIManager::addThruConnection() makes.
struct MIDIThruConnectionSettings {
  /// The first 8 count.
  std::vector<MIDIOutputEndpoint> outputs;
  /// The first 8 count.
  std::vector<MIDIInputEndpoint> inputs;
  /// Of a connection that isn't persistent.
  std::string tag;
  MIDIThruConnection::Lifecycle lifecycle = MIDIThruConnection::Lifecycle::nonPersistent();
  MIDIThruConnection::Parameters parameters;
};

}  // namespace midikit::io
