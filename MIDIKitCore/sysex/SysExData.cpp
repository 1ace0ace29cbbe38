#include "MIDIKitCore/sysex/SysExData.hpp"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cstring>
#include <memory>
#include <new>

namespace midikit::core {
namespace {

/// The address of a block.
using Address = std::array<std::uint8_t, sizeof(void*)>;
static_assert(sizeof(Address) <= SysExData::longestInside);

}  // namespace

/// Stands ahead of the bytes, in the same allocation.
struct SysExData::Block {
  std::atomic<std::size_t> owners;
  std::size_t size;

  std::uint8_t* bytes() { return reinterpret_cast<std::uint8_t*>(this + 1); }
};

void SysExData::share(std::span<const std::uint8_t> bytes) {
  void* const memory = ::operator new(sizeof(Block) + bytes.size());
  auto* const block = new (memory) Block{.owners = 1, .size = bytes.size()};
  std::memcpy(block->bytes(), bytes.data(), bytes.size());
  std::ranges::copy(std::bit_cast<Address>(block), inside_.begin());
  size_ = shared;
}

SysExData::Block& SysExData::block() const noexcept {
  Address address;
  std::copy_n(inside_.begin(), address.size(), address.begin());
  return *std::bit_cast<Block*>(address);
}

std::span<const std::uint8_t> SysExData::sharedBytes() const noexcept {
  return {block().bytes(), block().size};
}

void SysExData::retain() const noexcept {
  block().owners.fetch_add(1, std::memory_order_relaxed);
}

void SysExData::release() noexcept {
  Block* const block = &this->block();
  // Whoever lets go last must see what the others did before they let go.
  if (block->owners.fetch_sub(1, std::memory_order_acq_rel) == 1) {
    std::destroy_at(block);
    ::operator delete(block);
  }
}

}  // namespace midikit::core
