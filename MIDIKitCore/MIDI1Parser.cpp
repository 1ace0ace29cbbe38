#include "MIDIKitCore/MIDI1Parser.hpp"

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstring>
#include <utility>

#include "MIDIKitCore/SysExParser.hpp"
#include "MIDIKitCore/detail/MIDI1MessageReader.hpp"

namespace midikit::core {
namespace {

using namespace detail;

using Bytes = std::span<const std::uint8_t>;

constexpr std::uint8_t noStatus = 0;

/// The first byte at or above 0x80, or the end.
const std::uint8_t* findStatus(const std::uint8_t* from, const std::uint8_t* end) {
  constexpr std::ptrdiff_t step = sizeof(std::uint64_t);
  for (; end - from >= step; from += step) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, from, sizeof(bytes));
    if ((bytes & 0x8080808080808080U) != 0) {
      break;
    }
  }
  return std::find_if(from, end, [](std::uint8_t byte) { return byte >= firstStatus; });
}

/// The way through one packet.
class Walk {
 public:
  Walk(MIDI1MessageReader reader, std::uint8_t runningStatus, std::vector<MIDIEvent>& into)
      : reader_(reader), runningStatus_(runningStatus), status_(runningStatus), emit_{into} {}

  /// Gives the running status behind the packet.
  std::uint8_t through(Bytes packet) {
    const auto* at = packet.data();
    end_ = at + packet.size();
    while (at != end_) {
      const auto byte = *at;
      if (byte < firstStatus) {
        at = readData(at);
        continue;
      }
      ++at;
      if (byte >= firstRealTimeStatus) {
        reader_.readRealTime(byte, emit_);
      } else if (byte >= firstSystemStatus) {
        at = beginSystemMessage(byte, at);
      } else {
        endMessage();
        status_ = runningStatus_ = byte;
      }
    }
    endMessage();
    return runningStatus_;
  }

 private:
  /// A tune request comes out only here, behind real-time messages that follow it. A message that waits for
  /// data is lost.
  void endMessage() {
    if (status_ == tuneRequestStatus) {
      readSystemCommon({}, {});
    }
    holdsFirst_ = false;
  }

  /// Goes on from data bytes, as far as they are of use or none of any.
  const std::uint8_t* readData(const std::uint8_t* at) {
    if (midi1DataBytes(status_) == 0) {
      return findStatus(at, end_);
    }
    if (status_ >= firstSystemStatus) {
      return readSystemData(at);
    }
    return reader_.withChannelVoice(status_, [this, at](auto read) { return readRun(at, read); });
  }

  /// Goes on from data bytes of a channel voice status to the next status.
  template <typename Read>
  const std::uint8_t* readRun(const std::uint8_t* at, Read read) {
    // Copies, because the compiler has to assume that bytes written through `emit_` could be members of this
    // object.
    const auto emit = emit_;
    const auto* const end = end_;
    if constexpr (std::invocable<Read, UInt7, AppendEvent>) {
      for (; at != end && *at < firstStatus; ++at) {
        read(UInt7::unchecked(*at), emit);
      }
    } else {
      if (holdsFirst_) {
        holdsFirst_ = false;
        read(first_, UInt7::unchecked(*at++), emit);
      }
      for (; end - at >= 2 && (at[0] | at[1]) < firstStatus; at += 2) {
        read(UInt7::unchecked(at[0]), UInt7::unchecked(at[1]), emit);
      }
      if (at != end && *at < firstStatus) {
        holdsFirst_ = true;
        first_ = UInt7::unchecked(*at++);
      }
    }
    return at;
  }

  const std::uint8_t* readSystemData(const std::uint8_t* at) {
    const auto data = UInt7::unchecked(*at);
    if (midi1DataBytes(status_) == 1) {
      readSystemCommon(data, {});
    } else if (holdsFirst_) {
      holdsFirst_ = false;
      readSystemCommon(first_, data);
    } else {
      holdsFirst_ = true;
      first_ = data;
    }
    return at + 1;
  }

  void readSystemCommon(UInt7 data1, UInt7 data2) {
    reader_.readSystemCommon(status_, data1, data2, emit_);
    status_ = noStatus;
  }

  /// `at` is behind the status.
  const std::uint8_t* beginSystemMessage(std::uint8_t status, const std::uint8_t* at) {
    endMessage();
    runningStatus_ = noStatus;
    if (status == sysExStatus) {
      status_ = noStatus;
      return readSysEx(at - 1);
    }
    // What has neither data nor a meaning (0xF4, 0xF5, 0xF7) leaves the data that follows without a status.
    status_ = status == tuneRequestStatus || midi1DataBytes(status) != 0 ? status : noStatus;
    return at;
  }

  /// Goes on from 0xF0 to the status that ends the message.
  const std::uint8_t* readSysEx(const std::uint8_t* start) {
    const auto* stop = findStatus(start + 1, end_);
    if (stop == end_ || *stop < firstRealTimeStatus) {
      appendSysEx7({start, stop}, reader_.group, emit_.into);
      return stop;
    }
    const auto* const end = std::find_if(
        stop, end_, [](std::uint8_t byte) { return byte >= firstStatus && byte < firstRealTimeStatus; });
    std::vector<std::uint8_t> message;
    message.reserve(static_cast<std::size_t>(end - start));
    message.assign(start, stop);
    while (stop != end_ && *stop >= firstRealTimeStatus) {
      reader_.readRealTime(*stop, emit_);
      const auto* const next = findStatus(stop + 1, end_);
      message.insert(message.end(), stop + 1, next);
      stop = next;
    }
    appendSysEx7(message, reader_.group, emit_.into);
    return stop;
  }

  MIDI1MessageReader reader_;
  std::uint8_t runningStatus_;
  /// Of the message that data bytes belong to.
  std::uint8_t status_;
  /// The first of two data bytes, if it's there already.
  UInt7 first_;
  bool holdsFirst_ = false;
  const std::uint8_t* end_ = nullptr;
  AppendEvent emit_;
};

constexpr std::uint8_t channelStatusOrNone(std::optional<std::uint8_t> status) {
  return status && *status >= firstStatus && *status < firstSystemStatus ? *status : noStatus;
}

constexpr std::optional<std::uint8_t> statusOrNone(std::uint8_t status) {
  return status != noStatus ? std::optional(status) : std::nullopt;
}

}  // namespace

std::vector<MIDIEvent> MIDI1Parser::parsedEvents(Bytes bytes, UInt4 group) {
  std::vector<MIDIEvent> events;
  parse(bytes, group, events);
  return events;
}

MIDI1Parser::Outcome MIDI1Parser::parsedEvents(Bytes bytes, UInt4 group,
                                               std::optional<std::uint8_t> runningStatus,
                                               bool translateNoteOnZeroVelocityToNoteOff) {
  Outcome outcome;
  Walk walk({.group = group, .translate = translateNoteOnZeroVelocityToNoteOff},
            channelStatusOrNone(runningStatus), outcome.events);
  outcome.runningStatus = statusOrNone(walk.through(bytes));
  return outcome;
}

std::optional<MIDIEvent> MIDI1Parser::parsedEvent(Bytes message, bool translateNoteOnZeroVelocityToNoteOff,
                                                  UInt4 group) {
  if (message.empty() || message[0] < firstStatus) {
    return std::nullopt;
  }
  const auto status = message[0];
  if (status == sysExStatus) {
    auto event = parseSysEx7(message, group);
    return event ? std::optional(*std::move(event)) : std::nullopt;
  }
  std::optional<MIDIEvent> event;
  const auto emit = [&event](auto&& record) { event.emplace(std::forward<decltype(record)>(record)); };
  const MIDI1MessageReader reader{.group = group, .translate = translateNoteOnZeroVelocityToNoteOff};
  if (status >= firstRealTimeStatus) {
    reader.readRealTime(status, emit);
    return event;
  }
  const auto data = message.subspan(1, std::min<std::size_t>(midi1DataBytes(status), message.size() - 1));
  // The halves of a 14-bit value ignore the high bit of their bytes; everything else is refused because of
  // it.
  const bool is14Bit = status >> 4 == 0xE || status == songPositionStatus;
  const auto isTooLarge = [](std::uint8_t byte) { return byte >= firstStatus; };
  if (data.size() < midi1DataBytes(status) || (!is14Bit && std::ranges::any_of(data, isTooLarge))) {
    return std::nullopt;
  }
  const auto low7Bits = [data](std::size_t index) {
    return index < data.size() ? UInt7::unchecked(data[index] & 0x7F) : UInt7();
  };
  if (status >= firstSystemStatus) {
    reader.readSystemCommon(status, low7Bits(0), low7Bits(1), emit);
  } else {
    reader.withChannelVoice(status, [&](auto read) {
      if constexpr (std::invocable<decltype(read), UInt7, decltype(emit)>) {
        read(low7Bits(0), emit);
      } else {
        read(low7Bits(0), low7Bits(1), emit);
      }
    });
  }
  return event;
}

void MIDI1Parser::parse(Bytes bytes, UInt4 group, std::vector<MIDIEvent>& into) {
  Walk walk({.group = group, .translate = translateNoteOnZeroVelocityToNoteOff}, runningStatus_, into);
  runningStatus_ = walk.through(bytes);
}

std::optional<std::uint8_t> MIDI1Parser::runningStatus() const {
  return statusOrNone(runningStatus_);
}

}  // namespace midikit::core
