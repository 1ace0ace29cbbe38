#include "rig/VirtualTerminals.hpp"

#include <utility>

#include "device/PortName.hpp"

namespace karvex::rig {
namespace {

using device::TerminalRefusal;

constexpr const char* ourselves = "this program";

/// A port without traffic: there is nothing to watch for.
class SilentSource final : public device::ReadSource {};

}  // namespace

class VirtualTerminals::Node final : public device::TerminalNode {
 public:
  Node(VirtualTerminals& terminals, Port port) : terminals_(terminals), port_(std::move(port)) {}
  ~Node() override {
    if (!staysOpen_) {
      const std::lock_guard lock(terminals_.mutex_);
      terminals_.ours_.erase(port_);
      terminals_.occupants_.insert(terminals_.waiting_.extract(port_.serialNumber));
    }
  }
  Node(const Node&) = delete;
  Node& operator=(const Node&) = delete;

  void configure(const device::SerialPortSettings& settings) override {
    if (isConnected()) {
      terminals_.bus_.setLineSpeed(port_.serialNumber, speedValue(settings.baudRateSetting.transmitRate));
    }
  }
  std::ptrdiff_t read(std::span<std::uint8_t>) override { return 0; }
  std::ptrdiff_t write(std::span<const std::uint8_t> bytes) override {
    return isConnected() ? static_cast<std::ptrdiff_t>(bytes.size()) : -1;
  }
  bool isConnected() override { return terminals_.presentPort(port_.serialNumber) == port_; }
  std::unique_ptr<device::ReadSource> watch(device::ReadSource::Handler) override {
    return std::make_unique<SilentSource>();
  }
  void leaveOpen() override { staysOpen_ = true; }

 private:
  VirtualTerminals& terminals_;
  const Port port_;
  bool staysOpen_ = false;
};

device::OpenedTerminal VirtualTerminals::open(const std::string& path, device::PortMode) {
  const auto serialNumber = device::serialNumberInPortName(path);
  const auto port = serialNumber ? presentPort(*serialNumber) : std::nullopt;
  if (!port) {
    return TerminalRefusal{.cause = TerminalRefusal::Cause::absent};
  }
  const std::lock_guard lock(mutex_);
  if (const auto occupant = occupants_.find(*serialNumber); occupant != occupants_.end()) {
    return TerminalRefusal{.cause = TerminalRefusal::Cause::inUse, .detail = occupant->second};
  }
  if (!ours_.insert(*port).second) {
    return TerminalRefusal{.cause = TerminalRefusal::Cause::inUse, .detail = ourselves};
  }
  return std::make_unique<Node>(*this, *port);
}

void VirtualTerminals::occupy(const std::string& serialNumber, const std::string& program) {
  const std::lock_guard lock(mutex_);
  occupants_[serialNumber] = program;
}

void VirtualTerminals::vacate(const std::string& serialNumber) {
  const std::lock_guard lock(mutex_);
  occupants_.erase(serialNumber);
}

void VirtualTerminals::occupyBehindUse(const std::string& serialNumber, const std::string& program) {
  const std::lock_guard lock(mutex_);
  waiting_[serialNumber] = program;
}

std::optional<VirtualTerminals::Port> VirtualTerminals::presentPort(const std::string& serialNumber) {
  std::optional<Port> port;
  bus_.inspect(serialNumber, [&port](const VirtualBoard& board) {
    if (board.state() == BoardState::running) {
      port = Port{board.serialNumber(), board.session()};
    }
  });
  return port;
}

}  // namespace karvex::rig
