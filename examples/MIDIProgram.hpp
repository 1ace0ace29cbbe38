#pragma once

#include <csignal>
#include <iostream>
#include <memory>
#include <string>

#include "MIDIKitIO/manager/MIDIManager.hpp"
#include "MIDIKitIO/platform/linux/AlsaMIDIService.hpp"
#include "foundation/run/SystemRuntime.hpp"

namespace midikit::examples {

/// What each program with MIDI in and out has: threads, the machine's MIDI service, a manager, and an orderly
/// end.
class MIDIProgram {
 public:
  /// Throws MIDIIOError if there is no client to be had.
  explicit MIDIProgram(const std::string& name) {
    // Before any thread is made, so that all of them leave these signals to awaitEnd().
    sigemptyset(&ending_);
    sigaddset(&ending_, SIGINT);
    sigaddset(&ending_, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &ending_, nullptr);
    runtime_ = std::make_unique<karvex::foundation::SystemRuntime>();
    manager_ = io::MIDIManager::create({.service = io::makeAlsaMIDIService(*runtime_),
                                        .runtime = *runtime_,
                                        .clientName = name,
                                        .model = name,
                                        .manufacturer = "Examples"});
    manager_->start();
  }

  /// No receiver runs after this.
  ~MIDIProgram() {
    manager_->removeAll();
    runtime_->finish();
  }
  MIDIProgram(const MIDIProgram&) = delete;
  MIDIProgram& operator=(const MIDIProgram&) = delete;

  io::MIDIManager& manager() { return *manager_; }
  karvex::foundation::Runtime& runtime() { return *runtime_; }

  /// Returns at Ctrl-C, or when the program is asked to end.
  void awaitEnd() const {
    int signal = 0;
    sigwait(&ending_, &signal);
  }
  /// Asks it to end. Any thread.
  static void end() { ::kill(::getpid(), SIGTERM); }

 private:
  sigset_t ending_{};
  std::unique_ptr<karvex::foundation::SystemRuntime> runtime_;
  std::shared_ptr<io::MIDIManager> manager_;
};

}  // namespace midikit::examples
