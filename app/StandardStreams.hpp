#pragma once

#include <string_view>

namespace karvex::app {

/// For the beginning of every program. Opens /dev/null on those of the three standard descriptors that are
/// closed, so that no file of the program takes their number and gets what is meant for them. From here on,
/// SIGPIPE is ignored: a reader that has gone away must not end a run.
/// Thread-safe: no.
/// Realtime-safe: no, it opens files.
void secureStandardStreams();

/// Prints a line on standard output at once.
/// Thread-safe: yes.
/// Realtime-safe: no, it writes.
void say(std::string_view line);

/// Flushes standard output; for the end of a program. False if some of what was written is lost, as on a full
/// disk. A reader that has gone away is no failure: it has what it wanted.
/// Thread-safe: yes.
/// Realtime-safe: no, it writes.
bool isOutputWritten();

}  // namespace karvex::app
