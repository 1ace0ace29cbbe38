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
  Node(VirtualTerminals& terminals, std::string serialNumber)
      : terminals_(terminals), serialNumber_(std::move(serialNumber)) {}
  ~Node() override {
    if (!staysOpen_) {
      terminals_.vacate(serialNumber_);
    }
  }
  Node(const Node&) = delete;
  Node& operator=(const Node&) = delete;

  void configure(const device::SerialPortSettings& settings) override {
    terminals_.bus_.setLineSpeed(serialNumber_, speedValue(settings.baudRateSetting.transmitRate));
  }
  std::ptrdiff_t read(std::span<std::uint8_t>) override { return 0; }
  std::ptrdiff_t write(std::span<const std::uint8_t> bytes) override {
    return isConnected() ? static_cast<std::ptrdiff_t>(bytes.size()) : -1;
  }
  bool isConnected() override { return terminals_.bus_.isPresent(device::interfaceNameFor(serialNumber_)); }
  std::unique_ptr<device::ReadSource> watch(device::ReadSource::Handler) override {
    return std::make_unique<SilentSource>();
  }
  void leaveOpen() override { staysOpen_ = true; }

 private:
  VirtualTerminals& terminals_;
  const std::string serialNumber_;
  bool staysOpen_ = false;
};

device::OpenedTerminal VirtualTerminals::open(const std::string& path, device::PortMode) {
  const auto serialNumber = device::serialNumberInPortName(path);
  if (!serialNumber || !bus_.isPresent(device::interfaceNameFor(*serialNumber))) {
    return TerminalRefusal{.cause = TerminalRefusal::Cause::absent};
  }
  const std::lock_guard lock(mutex_);
  const auto [holder, isFree] = holders_.emplace(*serialNumber, ourselves);
  if (!isFree) {
    return TerminalRefusal{.cause = TerminalRefusal::Cause::inUse, .detail = holder->second};
  }
  return std::make_unique<Node>(*this, *serialNumber);
}

void VirtualTerminals::occupy(const std::string& serialNumber, const std::string& program) {
  const std::lock_guard lock(mutex_);
  holders_[serialNumber] = program;
}

void VirtualTerminals::vacate(const std::string& serialNumber) {
  const std::lock_guard lock(mutex_);
  holders_.erase(serialNumber);
}

}  // namespace karvex::rig
