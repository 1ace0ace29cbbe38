#pragma once

#include <functional>
#include <string_view>

/// The program's three channels. They are kept apart, have no levels, and carry texts that are part of the
/// program's vocabulary: support staff and scripts look for them. All operations may be called on any thread.
namespace karvex::foundation::log {

/// The upgrade's progress: steps begin with "> KARVEX : ", failures with ">>> KARVEX : ". One call is one
/// line; a line end at the end of the text is not doubled.
void system(std::string_view text);

/// Plain printing to standard output: the bytes as they stand, so a line end must be in the text.
void print(std::string_view text);

/// The outcome of network posts and other news for whoever debugs. One call is one line.
void debug(std::string_view text);

/// Where the system channel goes.
enum class SystemSink {
  standardError,  ///< one plain line each: simulated runs and tests
  systemLog,  ///< the machine's system log under the program's name, and standard error if it is a terminal
};

/// Chooses the place of the system channel; the start value is standard error. Call it before other threads
/// run.
void setSystemSink(SystemSink sink);

/// Takes a channel over: nothing of it goes to its usual place until the receiver is set to null again. For
/// tests, and for a front that draws on the terminal. Call it while no other thread logs.
using Receiver = std::function<void(std::string_view)>;
void redirectSystem(Receiver receiver);
void redirectPrint(Receiver receiver);
void redirectDebug(Receiver receiver);

}  // namespace karvex::foundation::log
