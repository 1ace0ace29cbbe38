#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <variant>

#include "MIDIKitCore/MIDIOSStatus.hpp"

namespace midikit::core {

/// Every failure of the MIDI layer reaches its caller as one of these: thrown by the operations of MIDIKitIO,
/// and otherwise a plain value.
///
///     try {
///       connection.connect();
///     } catch (const MIDIIOError& error) {
///       if (error == MIDIIOError::osStatus(MIDIOSStatus::notPermitted)) ...
///     }
class MIDIIOError : public std::exception {
 public:
  struct InternalInconsistency {
    std::string text;
    bool operator==(const InternalInconsistency&) const = default;
  };
  struct Malformed {
    std::string text;
    bool operator==(const Malformed&) const = default;
  };
  struct NotSupported {
    std::string text;
    bool operator==(const NotSupported&) const = default;
  };
  struct ConnectionError {
    std::string text;
    bool operator==(const ConnectionError&) const = default;
  };
  struct ReadError {
    std::string text;
    bool operator==(const ReadError&) const = default;
  };
  using Case =
      std::variant<InternalInconsistency, Malformed, NotSupported, ConnectionError, ReadError, MIDIOSStatus>;

  // Copies never throw, as whoever catches or rethrows an exception expects. A move is a copy, so that no
  // object is without content.
  MIDIIOError(const MIDIIOError&) noexcept = default;
  MIDIIOError& operator=(const MIDIIOError&) noexcept = default;
  ~MIDIIOError() override = default;

  static MIDIIOError internalInconsistency(std::string text);
  static MIDIIOError malformed(std::string text);
  static MIDIIOError notSupported(std::string text);
  static MIDIIOError connectionError(std::string text);
  static MIDIIOError readError(std::string text);
  static MIDIIOError osStatus(MIDIOSStatus status);

  /// The platform's own number for what went wrong; 0 is a failure here like any other.
  static MIDIIOError osStatus(std::int32_t number) { return osStatus(MIDIOSStatus::fromNumber(number)); }

  /// Which failure it is, for `std::visit` or `std::get_if`.
  const Case& asCase() const { return content_->itsCase; }

  /// What went wrong, for people: the kind and the payload, or the text of the status alone.
  const char* what() const noexcept override { return content_->what.c_str(); }

  /// Same case and equal payloads.
  friend bool operator==(const MIDIIOError& a, const MIDIIOError& b) { return a.asCase() == b.asCase(); }

 private:
  struct Content {
    Case itsCase;
    std::string what;
  };

  MIDIIOError(Case itsCase, std::string what);

  /// Shared by all copies.
  std::shared_ptr<const Content> content_;
};

/// Returns if `status`, as the platform gave it, is 0 ("noErr").
/// @throws MIDIIOError `osStatus` for every other number.
void checkStatus(std::int32_t status);

}  // namespace midikit::core
