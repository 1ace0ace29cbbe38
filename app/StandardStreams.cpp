#include "app/StandardStreams.hpp"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <initializer_list>
#include <string>

namespace karvex::app {

void secureStandardStreams() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(descriptor, F_GETFD) < 0) {
      static_cast<void>(::open("/dev/null", O_RDWR));  // Takes the lowest free number, which is this one.
    }
  }
  std::signal(SIGPIPE, SIG_IGN);
}

void say(std::string_view line) {
  const auto text = std::string(line) + '\n';
  std::fwrite(text.data(), 1, text.size(), stdout);
  std::fflush(stdout);
}

bool isOutputWritten() {
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) {
    return true;
  }
  pollfd output{.fd = STDOUT_FILENO, .events = POLLOUT, .revents = 0};
  return ::poll(&output, 1, 0) == 1 && (output.revents & (POLLERR | POLLHUP)) != 0;
}

}  // namespace karvex::app
