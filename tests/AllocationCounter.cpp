#include "tests/AllocationCounter.hpp"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> allocations = 0;
thread_local std::size_t allocationsHere = 0;

}  // namespace

void* operator new(std::size_t size) {
  allocations.fetch_add(1, std::memory_order_relaxed);
  ++allocationsHere;
  void* const memory = std::malloc(size);
  return memory != nullptr ? memory : throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace karvex::tests {

std::size_t allocationsSoFar() {
  return allocations.load(std::memory_order_relaxed);
}

std::size_t allocationsOfThisThread() {
  return allocationsHere;
}

}  // namespace karvex::tests
