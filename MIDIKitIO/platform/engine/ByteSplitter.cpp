#include "MIDIKitIO/platform/engine/ByteSplitter.hpp"

#include <utility>

#include "MIDIKitCore/MIDI1Status.hpp"

namespace midikit::io::engine {
using namespace core;

void ByteSplitter::split(std::uint64_t timeStamp, std::span<const std::uint8_t> bytes,
                         std::vector<TimedMessage>& out) {
  for (const std::uint8_t byte : bytes) {
    if (byte >= firstRealTimeStatus) {
      if (isMIDI1Message(byte)) {
        out.push_back({timeStamp, {byte}});
      }
    } else if (byte >= firstStatus) {
      takeStatus(timeStamp, byte, out);
    } else {
      takeData(timeStamp, byte, out);
    }
  }
  message_.clear();
  runningStatus_ = 0;
}

void ByteSplitter::takeStatus(std::uint64_t timeStamp, std::uint8_t status, std::vector<TimedMessage>& out) {
  if (auto ended = std::exchange(sysEx_, std::nullopt)) {
    ended->push_back(sysExEndStatus);
    out.push_back({timeStamp, std::move(*ended)});
  }
  message_.clear();
  runningStatus_ = status < firstSystemStatus ? status : 0;
  if (status == sysExStatus) {
    sysEx_.emplace(1, sysExStatus);
    return;
  }
  if (!isMIDI1Message(status)) {
    return;
  }
  if (midi1DataBytes(status) == 0) {
    out.push_back({timeStamp, {status}});
  } else {
    message_.assign(1, status);
  }
}

void ByteSplitter::takeData(std::uint64_t timeStamp, std::uint8_t byte, std::vector<TimedMessage>& out) {
  if (sysEx_) {
    sysEx_->push_back(byte);
    if (sysEx_->size() >= longestSysEx) {
      sysEx_.reset();
    }
    return;
  }
  if (message_.empty()) {
    if (runningStatus_ == 0) {
      return;
    }
    message_.assign(1, runningStatus_);
  }
  message_.push_back(byte);
  if (message_.size() == midi1MessageSize(message_.front())) {
    out.push_back({timeStamp, std::exchange(message_, {})});
  }
}

}  // namespace midikit::io::engine
