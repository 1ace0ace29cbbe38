#pragma once

#include <memory>

#include "foundation/run/Runtime.hpp"

namespace karvex::foundation {

/// The machine's own clock and threads.
class SystemRuntime final : public Runtime {
 public:
  SystemRuntime();
  ~SystemRuntime() override;
  SystemRuntime(const SystemRuntime&) = delete;
  SystemRuntime& operator=(const SystemRuntime&) = delete;

  Clock& clock() override;
  Queue& mainQueue() override;
  Queue& globalQueue() override;
  OutsideWork& outsideWork() override;
  std::shared_ptr<Latch> makeLatch() override;
  void runMain() override;
  void stopMain() override;
  void finish() override;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace karvex::foundation
