#include "loader/platform/host.hpp"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace karvex::loader {
namespace {

host_calls host;

[[gnu::format(printf, 2, 0)]] void write_formatted(void (*write)(void*, const char*), const char* format,
                                                   std::va_list arguments) {
  std::array<char, 1024> text;
  std::vsnprintf(text.data(), text.size(), format, arguments);
  write(host.context, text.data());
}

}  // namespace

void install_host(const host_calls& calls) {
  host = calls;
}

std::chrono::nanoseconds host_now() {
  return host.now(host.context);
}

void host_sleep(std::chrono::milliseconds span) {
  host.sleep_for(host.context, span);
}

void host_log(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  write_formatted(host.log, format, arguments);
  va_end(arguments);
}

void host_print(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  write_formatted(host.print, format, arguments);
  va_end(arguments);
}

void host_print_error(const char* text) {
  host.print_error(host.context, text);
}

void host_run_on_global_queue(void (*job)()) {
  host.run_on_global_queue(host.context, job);
}

void host_run_on_main_queue(void (*job)()) {
  host.run_on_main_queue(host.context, job);
}

void host_end_process(int exit_status) {
  host.end_process(host.context, exit_status);
  std::abort();  // A host that comes back would let the load go on for the wrong target.
}

}  // namespace karvex::loader
