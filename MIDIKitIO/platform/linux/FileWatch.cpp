#include "MIDIKitIO/platform/linux/FileWatch.hpp"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <utility>

namespace midikit::io::alsa {

using karvex::foundation::ReadOutcome;

const FileWatch::Kinds FileWatch::contents = IN_CREATE | IN_MOVED_TO;
const FileWatch::Kinds FileWatch::attributes = IN_ATTRIB;
const FileWatch::Kinds FileWatch::closed = IN_CLOSE_WRITE;

/// Closed when neither the watch nor a call that has begun needs it.
class FileWatch::Descriptor {
 public:
  Descriptor() = default;
  ~Descriptor() {
    if (number >= 0) {
      ::close(number);
    }
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  /// Which file it was isn't asked.
  bool takeEvents() const {
    alignas(inotify_event) std::array<char, 4096> events{};
    bool hasAny = false;
    while (::read(number, events.data(), events.size()) > 0) {
      hasAny = true;
    }
    return hasAny;
  }

  const int number = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
};

FileWatch::FileWatch(karvex::foundation::Queue& queue, std::function<void()> handler)
    : queue_(queue), handler_(std::move(handler)), descriptor_(std::make_shared<Descriptor>()) {
  if (descriptor_->number < 0) {
    return;
  }
  readiness_ = std::make_unique<karvex::foundation::ReadReadiness>(
      descriptor_->number, queue, [descriptor = descriptor_, call = handler_] {
        if (!descriptor->takeEvents()) {
          return ReadOutcome::nothing;
        }
        call();
        return ReadOutcome::data;
      });
  readiness_->resume();
}

FileWatch::~FileWatch() = default;

bool FileWatch::add(const std::filesystem::path& folder, Kinds kinds) {
  return ::inotify_add_watch(descriptor_->number, folder.c_str(), kinds | IN_ONLYDIR) >= 0;
}

void FileWatch::poke() {
  queue_.post(handler_);
}

}  // namespace midikit::io::alsa
