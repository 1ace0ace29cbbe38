#include "app/LoaderHost.hpp"

#include <cstdio>
#include <cstdlib>
#include <utility>

#include "foundation/Log.hpp"

namespace karvex::app {
namespace {

foundation::Runtime& runtimeIn(void* context) {
  return *static_cast<foundation::Runtime*>(context);
}

std::function<void()>& lastAction() {
  static std::function<void()> action;
  return action;
}

/// Ends the process while its other threads run. std::exit() would destroy static objects under their feet;
/// here the temporary files and the terminal are put in order (std::at_quick_exit) and nothing else.
[[noreturn]] void endProcess(int exitStatus) {
  if (lastAction()) {
    lastAction()();
  }
  std::fflush(nullptr);
  std::quick_exit(exitStatus);
}

}  // namespace

loader::host_calls loaderHostOn(foundation::Runtime& runtime) {
  return {
      .context = &runtime,
      .now = [](void* context) { return runtimeIn(context).clock().now().time_since_epoch(); },
      .sleep_for = [](void* context,
                      std::chrono::milliseconds span) { runtimeIn(context).clock().sleepFor(span); },
      .log = [](void*, const char* text) { foundation::log::system(text); },
      .print = [](void*, const char* text) { foundation::log::print(text); },
      .print_error = [](void*, const char* text) { std::fputs(text, stderr); },
      .run_on_global_queue = [](void* context, void (*job)()) { runtimeIn(context).globalQueue().post(job); },
      .run_on_main_queue = [](void* context, void (*job)()) { runtimeIn(context).mainQueue().post(job); },
      .end_process = [](void*, int exitStatus) { endProcess(exitStatus); },
  };
}

void beforeProcessEnd(std::function<void()> action) {
  lastAction() = std::move(action);
}

}  // namespace karvex::app
