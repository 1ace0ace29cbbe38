#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <memory>
#include <new>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace midikit::internals {

/// A list in contiguous memory whose first `inlineCapacity` elements need no allocation: they are in the
/// object itself. More of them move to memory of their own, which doubles as the list grows. Otherwise like
/// std::vector, but that a move of the list moves the elements one by one while they are inside, so that
/// iterators and pointers end with it.
template <class T, std::size_t inlineCapacity>
class InlineVector {
  static_assert(inlineCapacity > 0);
  static_assert(std::is_nothrow_move_constructible_v<T>,
                "growing has to keep the elements, whatever happens");

 public:
  using value_type = T;
  using size_type = std::size_t;
  using iterator = T*;
  using const_iterator = const T*;

  InlineVector() noexcept = default;
  InlineVector(std::initializer_list<T> elements) { append(elements.begin(), elements.size()); }
  InlineVector(const InlineVector& other) : InlineVector() { append(other.data_, other.size_); }
  InlineVector(InlineVector&& other) noexcept { take(other); }
  InlineVector& operator=(const InlineVector& other) {
    if (this != &other) {
      clear();
      append(other.data_, other.size_);
    }
    return *this;
  }
  InlineVector& operator=(InlineVector&& other) noexcept {
    if (this != &other) {
      release();
      take(other);
    }
    return *this;
  }
  ~InlineVector() { release(); }

  std::size_t size() const noexcept { return size_; }
  std::size_t capacity() const noexcept { return capacity_; }
  bool empty() const noexcept { return size_ == 0; }

  T* data() noexcept { return data_; }
  const T* data() const noexcept { return data_; }
  T* begin() noexcept { return data_; }
  const T* begin() const noexcept { return data_; }
  T* end() noexcept { return data_ + size_; }
  const T* end() const noexcept { return data_ + size_; }
  T& operator[](std::size_t index) noexcept { return data_[index]; }
  const T& operator[](std::size_t index) const noexcept { return data_[index]; }
  T& front() noexcept { return data_[0]; }
  const T& front() const noexcept { return data_[0]; }
  T& back() noexcept { return data_[size_ - 1]; }
  const T& back() const noexcept { return data_[size_ - 1]; }
  /// @throws std::out_of_range
  T& at(std::size_t index) { return data_[checked(index)]; }
  const T& at(std::size_t index) const { return data_[checked(index)]; }

  void push_back(const T& element) { emplace_back(element); }
  void push_back(T&& element) { emplace_back(std::move(element)); }
  template <class... Arguments>
  T& emplace_back(Arguments&&... arguments) {
    if (size_ == capacity_) {
      // Made first: it may be a copy of an element that is about to move.
      T element{std::forward<Arguments>(arguments)...};
      grow(capacity_ * 2);
      return *std::construct_at(data_ + size_++, std::move(element));
    }
    T& made = *::new (static_cast<void*>(data_ + size_)) T{std::forward<Arguments>(arguments)...};
    ++size_;
    return made;
  }
  /// Puts copies of `count` elements, which are not this list's own, after the others.
  void append(const T* elements, std::size_t count) {
    if (count > capacity_ - size_) {
      grow(std::max(size_ + count, capacity_ * 2));
    }
    std::uninitialized_copy_n(elements, count, data_ + size_);
    size_ += count;
  }
  void reserve(std::size_t count) {
    if (count > capacity_) {
      grow(count);
    }
  }
  /// Keeps the memory.
  void clear() noexcept {
    std::destroy_n(data_, size_);
    size_ = 0;
  }

  friend bool operator==(const InlineVector& a, const InlineVector& b) { return std::ranges::equal(a, b); }

 private:
  T* inside() noexcept { return reinterpret_cast<T*>(&inside_); }
  bool isInside() const noexcept { return data_ == reinterpret_cast<const T*>(&inside_); }

  std::size_t checked(std::size_t index) const {
    if (index >= size_) {
      throw std::out_of_range("InlineVector: no such element");
    }
    return index;
  }

  void grow(std::size_t capacity) {
    T* const memory = std::allocator<T>().allocate(capacity);
    std::uninitialized_move_n(data_, size_, memory);
    const std::size_t size = size_;
    release();
    data_ = memory;
    size_ = size;
    capacity_ = capacity;
  }

  /// Ends as an empty list without memory of its own.
  void release() noexcept {
    clear();
    if (!isInside()) {
      std::allocator<T>().deallocate(data_, capacity_);
      data_ = inside();
      capacity_ = inlineCapacity;
    }
  }

  /// This list is empty and has no memory of its own. The other one ends like that.
  void take(InlineVector& other) noexcept {
    if (other.isInside()) {
      std::uninitialized_move_n(other.data_, other.size_, data_);
      size_ = other.size_;
      other.clear();
      return;
    }
    data_ = std::exchange(other.data_, other.inside());
    size_ = std::exchange(other.size_, 0);
    capacity_ = std::exchange(other.capacity_, inlineCapacity);
  }

  alignas(T) std::byte inside_[sizeof(T) * inlineCapacity];
  T* data_ = inside();
  std::size_t size_ = 0;
  std::size_t capacity_ = inlineCapacity;
};

}  // namespace midikit::internals
