#pragma once

#include <exception>
#include <string>

namespace midikit::internals {

/// A failure inside the MIDI layer that no named error of its interface covers: data that no packet can hold.
/// Thrown by the code that builds packets.
class MIDIKitInternalError : public std::exception {
 public:
  static MIDIKitInternalError malformed(const std::string& text) { return MIDIKitInternalError(text); }

  /// "Malformed: " and the payload.
  const char* what() const noexcept override { return what_.c_str(); }

  friend bool operator==(const MIDIKitInternalError& a, const MIDIKitInternalError& b) {
    return a.what_ == b.what_;
  }

 private:
  explicit MIDIKitInternalError(const std::string& text) : what_("Malformed: " + text) {}

  std::string what_;
};

}  // namespace midikit::internals
