#include "MIDIKitCore/SysExData.hpp"

#include <atomic>
#include <cstring>
#include <new>
#include <numeric>

namespace midikit::core {

/// Stands ahead of the bytes, in the same allocation.
struct SysExData::Block {
  std::atomic<std::size_t> owners;
  std::size_t size;

  std::uint8_t* bytes() { return reinterpret_cast<std::uint8_t*>(this + 1); }
};

SysExData::SysExData(std::span<const std::uint8_t> bytes) {
  if (bytes.empty()) {
    return;
  }
  void* const memory = ::operator new(sizeof(Block) + bytes.size());
  block_ = new (memory) Block{.owners = 1, .size = bytes.size()};
  std::memcpy(block_->bytes(), bytes.data(), bytes.size());
}

const std::uint8_t* SysExData::data() const noexcept {
  return block_ != nullptr ? block_->bytes() : nullptr;
}

std::size_t SysExData::size() const noexcept {
  return block_ != nullptr ? block_->size : 0;
}

void SysExData::retain() const noexcept {
  if (block_ != nullptr) {
    block_->owners.fetch_add(1, std::memory_order_relaxed);
  }
}

void SysExData::release() noexcept {
  // Whoever lets go last must see what the others did before they let go.
  if (block_->owners.fetch_sub(1, std::memory_order_acq_rel) == 1) {
    std::destroy_at(block_);
    ::operator delete(block_);
  }
}

std::optional<SysEx7Data> SysEx7Data::exactly(std::span<const std::uint8_t> bytes) {
  const auto allBits =
      std::accumulate(bytes.begin(), bytes.end(), std::uint8_t{0},
                      [](std::uint8_t bits, std::uint8_t byte) -> std::uint8_t { return bits | byte; });
  return allBits < 0x80 ? std::optional(SysEx7Data(bytes)) : std::nullopt;
}

}  // namespace midikit::core
