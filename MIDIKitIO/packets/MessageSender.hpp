#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "MIDIKitIO/manager/CoreMIDIAPIVersion.hpp"
#include "MIDIKitIO/packets/MIDIManagedSendsMessages.hpp"
#include "MIDIKitIO/platform/MIDIService.hpp"

namespace midikit::io::internal {

/// Brings what is to be sent into the platform's lists. What derives from it delivers them, by
/// sendPacketList() and sendEventList(), which is all that distinguishes an output from an output connection.
///
///     class MIDIOutput final : public MIDIManagedEndpoint, public internal::MessageSender {
///       MIDIOutput(...) : MIDIManagedEndpoint(manager, api), MessageSender(service(), this->api()) {}
///       void sendPacketList(const MIDIPacketList& list) override;
///       void sendEventList(const MIDIEventList& list) override;
class MessageSender : public MIDIManagedSendsMessages {
 public:
  void sendEvent(const core::MIDIEvent& event) final;
  void sendEvents(std::span<const core::MIDIEvent> events) final;
  void sendRawMessage(std::span<const std::uint8_t> message) final;
  void sendRawMessages(std::span<const std::vector<std::uint8_t>> messages) final;
  void sendUniversalWords(std::span<const std::uint32_t> words) final;

 protected:
  /// The service supplies the time stamps and says how new the platform is. It must outlive the sender.
  MessageSender(const MIDIService& service, CoreMIDIAPIVersion api) : service_(service), api_(api) {}

 private:
  using Bytes = std::span<const std::uint8_t>;

  bool isLegacy() const { return api_ == CoreMIDIAPIVersion::legacyCoreMIDI(); }
  void requireLegacy() const;
  void sendAsBytes(const core::MIDIEvent& event);
  void sendAsBytes(std::span<const core::MIDIEvent> events);
  void sendAsWords(const core::MIDIEvent& event);
  void sendPackets(std::span<const std::uint32_t> words);

  const MIDIService& service_;
  CoreMIDIAPIVersion api_;
};

}  // namespace midikit::io::internal
