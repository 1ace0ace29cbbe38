#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace karvex::foundation {

/// Blocks of memory that are handed out again and again, for what is made and let go of all the time. Once as
/// many have been in use as ever are at a time, none is allocated any more. All operations may be called on
/// any thread.
class BlockStore {
 public:
  /// Blocks of `blockSize` bytes; what needs more is allocated as usual. At most `most` unused ones are kept.
  BlockStore(std::size_t blockSize, std::size_t most) : blockSize_(blockSize) { unused_.reserve(most); }
  BlockStore(const BlockStore&) = delete;
  BlockStore& operator=(const BlockStore&) = delete;
  ~BlockStore() {
    for (void* block : unused_) {
      ::operator delete(block);
    }
  }

  void* take(std::size_t size) {
    if (size <= blockSize_) {
      const std::lock_guard lock(mutex_);
      if (!unused_.empty()) {
        void* block = unused_.back();
        unused_.pop_back();
        return block;
      }
    }
    return ::operator new(std::max(size, blockSize_));
  }

  /// `size` is that of the call that took the block.
  void giveBack(void* block, std::size_t size) noexcept {
    if (size <= blockSize_) {
      const std::lock_guard lock(mutex_);
      if (unused_.size() < unused_.capacity()) {
        unused_.push_back(block);
        return;
      }
    }
    ::operator delete(block);
  }

 private:
  const std::size_t blockSize_;
  std::mutex mutex_;
  std::vector<void*> unused_;
};

/// An allocator on a store, which what has been allocated keeps alive.
template <typename Value>
class BlockAllocator {
 public:
  using value_type = Value;
  static_assert(alignof(Value) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);

  explicit BlockAllocator(std::shared_ptr<BlockStore> store) : store_(std::move(store)) {}
  template <typename Other>
  explicit(false) BlockAllocator(const BlockAllocator<Other>& other) : store_(other.store()) {}

  Value* allocate(std::size_t count) { return static_cast<Value*>(store_->take(count * sizeof(Value))); }
  void deallocate(Value* block, std::size_t count) noexcept {
    store_->giveBack(block, count * sizeof(Value));
  }

  const std::shared_ptr<BlockStore>& store() const { return store_; }
  template <typename Other>
  bool operator==(const BlockAllocator<Other>& other) const {
    return store_ == other.store();
  }

 private:
  std::shared_ptr<BlockStore> store_;
};

}  // namespace karvex::foundation
