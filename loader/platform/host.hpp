#pragma once

#include <chrono>

/// The seam between the loader and the program that it runs in: time, log, queues, the end of the process.
namespace karvex::loader {

/// What the loader asks of its host. Every call is handed `context` back and may come from any thread.
struct host_calls {
  void* context = nullptr;
  /// Time since a fixed moment; never goes back.
  std::chrono::nanoseconds (*now)(void* context) = nullptr;
  /// Blocks the calling thread.
  void (*sleep_for)(void* context, std::chrono::milliseconds span) = nullptr;
  /// One line for the system log.
  void (*log)(void* context, const char* text) = nullptr;
  /// Text for standard output, as it stands.
  void (*print)(void* context, const char* text) = nullptr;
  /// Text for standard error, as it stands.
  void (*print_error)(void* context, const char* text) = nullptr;
  /// Runs `job` on a thread where it may block for as long as it likes.
  void (*run_on_global_queue)(void* context, void (*job)()) = nullptr;
  /// Runs `job` on the main thread when that is free.
  void (*run_on_main_queue)(void* context, void (*job)()) = nullptr;
  /// Ends the process and does not return.
  void (*end_process)(void* context, int exit_status) = nullptr;
};

/// Installs the host. To be called before anything else of the loader, and never while a load runs.
void install_host(const host_calls& calls);

// The installed host, as plain functions for the loader's own use.

std::chrono::nanoseconds host_now();
void host_sleep(std::chrono::milliseconds span);
/// Takes a printf format; a line of more than 1023 bytes is cut there.
[[gnu::format(printf, 1, 2)]] void host_log(const char* format, ...);
[[gnu::format(printf, 1, 2)]] void host_print(const char* format, ...);
void host_print_error(const char* text);
void host_run_on_global_queue(void (*job)());
void host_run_on_main_queue(void (*job)());
[[noreturn]] void host_end_process(int exit_status);

}  // namespace karvex::loader
