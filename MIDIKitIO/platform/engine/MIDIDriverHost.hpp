#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"
#include "MIDIKitIO/platform/engine/ListReceiver.hpp"
#include "MIDIKitIO/platform/engine/MIDIList.hpp"
#include "MIDIKitIO/platform/engine/SetupEditor.hpp"
#include "foundation/run/SerialQueue.hpp"

namespace midikit::io::engine {

/// What a service offers to its driver alone: all that the operations of MIDIService can't do. For every
/// call, also out of the driver's methods and readers:
///
/// Thread-safe: yes.
/// Realtime-safe: no, it locks and allocates.
class MIDIDriverHost {
 public:
  using Ref = MIDIObjectRef;

  /// The time of this moment, as time stamps have it.
  virtual std::uint64_t machAbsoluteTime() const = 0;

  /// Changes the setup. Clients get what the editor collected. Nothing but the editor may be used inside.
  virtual void edit(const std::function<void(SetupEditor&)>& work) = 0;

  /// None where the object or its property isn't there, or is of another kind.
  virtual std::optional<std::string> text(Ref object, std::string_view key) const = 0;
  virtual std::optional<std::int32_t> number(Ref object, std::string_view key) const = 0;

  /// Sets any property to any kind of value. Clients get `propertyChanged`.
  virtual OSStatus setProperty(Ref object, std::string_view key, PropertyValue value) = 0;
  /// From now on the object doesn't have the property, not even a unique ID. Clients get `propertyChanged`.
  virtual OSStatus removeProperty(Ref object, std::string_view key) = 0;
  /// From now on, until it is set, reading this text or dictionary succeeds and returns nothing.
  virtual OSStatus answerWithNone(Ref object, std::string_view key) = 0;

  /// Clients get this message, whatever is in it.
  virtual void notify(const MIDINotification& message) = 0;

  /// A list comes from a source that isn't one of this program's own. The driver makes the handovers.
  virtual OSStatus sendFromEquipment(Ref source, const MIDIList& list, Handovers& handovers) = 0;
  /// A list comes to one of this program's own destinations from outside. `sender` separates the streams of
  /// several senders apart; it must not be the reference of an object.
  virtual OSStatus sendFromOutside(Ref destination, Ref sender, const MIDIList& list,
                                   Handovers& handovers) = 0;
  /// What comes to a destination that isn't one of this program's own goes to this block from now on, on the
  /// queue, which must be there for as long as the destination is.
  virtual OSStatus readAsEquipment(Ref destination, karvex::foundation::SerialQueue& queue,
                                   MIDIReader reader) = 0;
  /// What this program's own source sends goes to this block too, on the queue, for which the same holds.
  virtual OSStatus listenAsEquipment(Ref source, karvex::foundation::SerialQueue& queue, MIDIReader reader,
                                     ListReceiver::Manner manner) = 0;
  /// The sources that some port or thru connection wants to hear.
  virtual std::set<Ref> wantedSources() const = 0;
  /// The thru connections, from source to destination, that the equipment may make by itself: they have an
  /// owner, so they outlive the program, and no filters.
  virtual std::set<std::pair<Ref, Ref>> plainThruConnections() const = 0;

 protected:
  ~MIDIDriverHost() = default;
};

}  // namespace midikit::io::engine
