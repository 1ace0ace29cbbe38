#include "MIDIKitIO/platform/engine/MIDIRouting.hpp"

#include <algorithm>
#include <utility>

namespace midikit::io::engine {

void MIDIRouting::addPort(Ref port, Receiver receiver) {
  ports_.emplace(port, Port{.receiver = std::move(receiver)});
}

OSStatus MIDIRouting::removePort(Ref port, Receiver& removed) {
  auto node = ports_.extract(port);
  if (node.empty()) {
    return statusOf(MIDIOSStatus::invalidPort);
  }
  for (const auto& [source, connection] : node.mapped().connections) {
    connection->end();
  }
  removed = std::move(node.mapped().receiver);
  return noErr;
}

bool MIDIRouting::isOutputPort(Ref port) const {
  const auto found = ports_.find(port);
  return found != ports_.end() && found->second.receiver == nullptr;
}

OSStatus MIDIRouting::connect(Ref port, Ref source, ConnectionToken token, Handovers& handovers) {
  const auto found = ports_.find(port);
  if (found == ports_.end() || found->second.receiver == nullptr) {
    return statusOf(MIDIOSStatus::invalidPort);
  }
  auto& connection = found->second.connections[source];
  if (connection != nullptr && connection->resume(token)) {
    found->second.receiver->addWaiting(connection);
    handovers.add(found->second.receiver);
  } else {
    connection = std::make_shared<MIDIConnection>(token);
  }
  return noErr;
}

OSStatus MIDIRouting::disconnect(Ref port, Ref source, TimePoint endsAt) {
  const auto found = ports_.find(port);
  if (found == ports_.end() || found->second.receiver == nullptr) {
    return statusOf(MIDIOSStatus::invalidPort);
  }
  const auto connection = found->second.connections.find(source);
  if (connection == found->second.connections.end() || connection->second->endsAt()) {
    return statusOf(MIDIOSStatus::noConnection);
  }
  connection->second->hold(endsAt);
  return noErr;
}

std::optional<MIDIRouting::TimePoint> MIDIRouting::endConnections(TimePoint now) {
  std::optional<TimePoint> next;
  for (auto& [ref, port] : ports_) {
    std::erase_if(port.connections, [&](const auto& entry) {
      const auto at = entry.second->endsAt();
      const bool isDue = at && *at <= now;
      if (isDue) {
        entry.second->end();
      } else if (at) {
        next = std::min(next.value_or(*at), *at);
      }
      return isDue;
    });
  }
  return next;
}

MIDIRouting::Receiver MIDIRouting::setReader(Ref destination, Receiver reader) {
  return std::exchange(readers_[destination], std::move(reader));
}

MIDIRouting::Receiver MIDIRouting::removeEndpoint(Ref endpoint) {
  for (auto& [ref, port] : ports_) {
    if (const auto connection = port.connections.extract(endpoint); !connection.empty()) {
      connection.mapped()->end();
    }
  }
  auto reader = readers_.extract(endpoint);
  return reader.empty() ? nullptr : std::move(reader.mapped());
}

void MIDIRouting::deliverFrom(Ref source, const SharedMIDIList& list, Handovers& handovers) const {
  for (const auto& [ref, port] : ports_) {
    if (const auto found = port.connections.find(source); found != port.connections.end()) {
      port.receiver->add(list, found->second);
      handovers.add(port.receiver);
    }
  }
}

void MIDIRouting::deliverTo(Ref endpoint, Ref sender, const SharedMIDIList& list,
                            Handovers& handovers) const {
  if (auto reader = readerOf(endpoint)) {
    reader->add(list, sender);
    handovers.add(std::move(reader));
  }
}

MIDIRouting::Receiver MIDIRouting::readerOf(Ref destination) const {
  const auto found = readers_.find(destination);
  return found != readers_.end() ? found->second : nullptr;
}

std::set<MIDIObjectRef> MIDIRouting::connectedSources() const {
  std::set<Ref> all;
  for (const auto& [ref, port] : ports_) {
    for (const auto& [source, connection] : port.connections) {
      all.insert(source);
    }
  }
  return all;
}

std::vector<MIDIRouting::Receiver> MIDIRouting::receivers() const {
  std::vector<Receiver> all;
  all.reserve(ports_.size() + readers_.size());
  for (const auto& [ref, port] : ports_) {
    all.push_back(port.receiver);
  }
  for (const auto& [ref, reader] : readers_) {
    all.push_back(reader);
  }
  std::erase(all, nullptr);
  return all;
}

}  // namespace midikit::io::engine
