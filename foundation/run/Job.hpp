#pragma once

#include <concepts>
#include <cstddef>
#include <functional>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace karvex::foundation {

/// A piece of work, run once or more often by the one that holds it. It moves and doesn't copy, so it may
/// hold what can't be copied. It must not throw: there is nobody to catch it.
///
/// Work of up to `room` bytes that moves without throwing is held in the job itself, so that making, moving
/// and running such a job allocates nothing; anything else takes one allocation.
class Job {
 public:
  /// The most that jobs in steady use hold: a short received packet with the way to its handler.
  static constexpr std::size_t room = 96;

  Job() noexcept = default;
  Job(std::nullptr_t) noexcept {}

  template <typename Work>
    requires(!std::same_as<std::remove_cvref_t<Work>, Job> && std::invocable<std::decay_t<Work>&>)
  Job(Work&& work) {
    using Held = std::decay_t<Work>;
    if constexpr (requires { work == nullptr; }) {
      if (work == nullptr) {
        return;
      }
    }
    if constexpr (fits<Held>) {
      ::new (static_cast<void*>(storage_)) Held(std::forward<Work>(work));
      operations_ = &inPlace<Held>;
    } else {
      ::new (static_cast<void*>(storage_)) Held*(new Held(std::forward<Work>(work)));
      operations_ = &onHeap<Held>;
    }
  }

  Job(Job&& other) noexcept { takeFrom(other); }
  Job& operator=(Job&& other) noexcept {
    if (this != &other) {
      reset();
      takeFrom(other);
    }
    return *this;
  }
  ~Job() { reset(); }

  explicit operator bool() const noexcept { return operations_ != nullptr; }

  /// Not to be called on an empty job.
  void operator()() { operations_->run(storage_); }

 private:
  struct Operations {
    void (*run)(void* held);
    void (*move)(void* from, void* to) noexcept;  ///< leaves nothing in `from`
    void (*destroy)(void* held) noexcept;
  };

  template <typename Held>
  static constexpr bool fits = sizeof(Held) <= room && alignof(Held) <= alignof(std::max_align_t) &&
                               std::is_nothrow_move_constructible_v<Held>;

  template <typename Held>
  static Held& held(void* storage) {
    return *std::launder(static_cast<Held*>(storage));
  }

  template <typename Held>
  static constexpr Operations inPlace = {
      [](void* storage) { std::invoke(held<Held>(storage)); },
      [](void* from, void* to) noexcept {
        ::new (to) Held(std::move(held<Held>(from)));
        std::destroy_at(&held<Held>(from));
      },
      [](void* storage) noexcept { std::destroy_at(&held<Held>(storage)); },
  };

  template <typename Held>
  static constexpr Operations onHeap = {
      [](void* storage) { std::invoke(*held<Held*>(storage)); },
      [](void* from, void* to) noexcept { ::new (to) Held*(held<Held*>(from)); },
      [](void* storage) noexcept { delete held<Held*>(storage); },
  };

  void takeFrom(Job& other) noexcept {
    operations_ = std::exchange(other.operations_, nullptr);
    if (operations_ != nullptr) {
      operations_->move(other.storage_, storage_);
    }
  }

  void reset() noexcept {
    if (const auto* operations = std::exchange(operations_, nullptr)) {
      operations->destroy(storage_);
    }
  }

  const Operations* operations_ = nullptr;
  alignas(std::max_align_t) std::byte storage_[room];
};

}  // namespace karvex::foundation
