#include "MIDIKitCore/MIDIIOError.hpp"

#include <utility>

namespace midikit::core {

MIDIIOError::MIDIIOError(Case itsCase, std::string what)
    : content_(std::make_shared<const Content>(Content{std::move(itsCase), std::move(what)})) {}

MIDIIOError MIDIIOError::internalInconsistency(std::string text) {
  auto what = "Internal inconsistency: " + text;
  return {InternalInconsistency{std::move(text)}, std::move(what)};
}

MIDIIOError MIDIIOError::malformed(std::string text) {
  auto what = "Malformed: " + text;
  return {Malformed{std::move(text)}, std::move(what)};
}

MIDIIOError MIDIIOError::notSupported(std::string text) {
  auto what = "Not Supported: " + text;
  return {NotSupported{std::move(text)}, std::move(what)};
}

MIDIIOError MIDIIOError::connectionError(std::string text) {
  auto what = "Connection Error: " + text;
  return {ConnectionError{std::move(text)}, std::move(what)};
}

MIDIIOError MIDIIOError::readError(std::string text) {
  auto what = "Read Error: " + text;
  return {ReadError{std::move(text)}, std::move(what)};
}

MIDIIOError MIDIIOError::osStatus(MIDIOSStatus status) {
  return {status, status.text()};
}

void checkStatus(std::int32_t status) {
  constexpr std::int32_t noErr = 0;
  if (status != noErr) {
    throw MIDIIOError::osStatus(status);
  }
}

}  // namespace midikit::core
