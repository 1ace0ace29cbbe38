#pragma once

#include <gmock/gmock.h>
#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/files/TemporaryDirectory.hpp"
#include "foundation/net/UrlSession.hpp"
#include "foundation/run/SystemRuntime.hpp"
#include "foundation/run/VirtualRuntime.hpp"
#include "tests/foundation/LoopbackServer.hpp"

namespace karvex::foundation {

/// What a transfer came to: a value, or the text of an error.
template <typename Value>
struct Outcome {
  std::optional<Value> value;
  std::string error;
  TimePoint at;
};

template <typename Value>
Task<> take(Runtime& runtime, Task<Value> task, Outcome<Value>& outcome) {
  try {
    outcome.value = co_await std::move(task);
  } catch (const UrlError& error) {
    outcome.error = error.what();
  }
  outcome.at = runtime.clock().now();
  co_await resumeOn(runtime.mainQueue());
}

/// A runtime, and a directory for temporary files in which what stays behind can be seen.
template <typename AnyRuntime>
class UrlSessionFixture : public testing::Test {
 protected:
  UrlSessionFixture() {
    setenv("TMPDIR", directory.path().c_str(), 1);
    setenv("no_proxy", "*", 1);
  }
  ~UrlSessionFixture() override { unsetenv("TMPDIR"); }

  /// Runs the main queue until the transfer is over.
  template <typename Value>
  Outcome<Value> await(Task<Value> task) {
    Outcome<Value> outcome;
    const auto run = [](Runtime& on, Task<Value> awaited, Outcome<Value>& into) -> Task<> {
      co_await take(on, std::move(awaited), into);
      on.stopMain();
    };
    spawn(runtime.mainQueue(), run(runtime, std::move(task), outcome));
    runtime.runMain();
    return outcome;
  }

  Outcome<UrlResponse> send(UrlRequest request, TransferPolicy policy = {}) {
    UrlSession session(runtime, std::move(policy));
    return await(session.send(std::move(request)));
  }
  Outcome<UrlResponse> get(const std::string& url, TransferPolicy policy = {}) {
    return send({.url = url}, std::move(policy));
  }

  std::ptrdiff_t filesLeft() const {
    const std::filesystem::recursive_directory_iterator entries(directory.path());
    return std::count_if(begin(entries), end(entries),
                         [](const auto& entry) { return entry.is_regular_file(); });
  }

  TemporaryDirectory directory;
  AnyRuntime runtime;
};

}  // namespace karvex::foundation
