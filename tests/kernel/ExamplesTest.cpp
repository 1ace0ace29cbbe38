#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/kernel/KernelFixture.hpp"

namespace midikit::io {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// One of the examples beside this program, with its output in a file.
class Example {
 public:
  explicit Example(std::vector<std::string> command) {
    const auto path = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "examples" / command[0];
    posix_spawn_file_actions_t actions{};
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outputPath, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    std::vector<char*> arguments;
    for (auto& argument : command) {
      arguments.push_back(argument.data());
    }
    arguments.push_back(nullptr);
    EXPECT_EQ(::posix_spawn(&process_, path.c_str(), &actions, nullptr, arguments.data(), environ), 0)
        << path;
    posix_spawn_file_actions_destroy(&actions);
  }

  int awaitEnd() {
    int status = -1;
    ::waitpid(process_, &status, 0);
    return status;
  }
  /// As Ctrl-C does.
  int end() {
    ::kill(process_, SIGINT);
    return awaitEnd();
  }
  static std::string output() { return contents(outputPath); }
  static std::string contents(const char* path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  static constexpr auto outputPath = "/tmp/example-output";
  pid_t process_ = 0;
};

/// A program with a keyboard and a synthesizer.
class ExamplesTest : public KernelFixture {
 protected:
  void SetUp() override {
    KernelFixture::SetUp();
    if (!IsSkipped()) {
      peer_.emplace("Studio");
      keyboard_ = peer_->addSource("keyboard");
      peer_->addDestination("synthesizer");
      ASSERT_TRUE(comesTrue([&] { return source("keyboard") != 0 && destination("synthesizer") != 0; }));
    }
  }
  std::string nameOf(Ref endpoint) const { return text(endpoint, kMIDIPropertyDisplayName); }
  /// Plays until the condition holds: nothing says when an example has begun to listen.
  bool playUntil(const std::function<bool()>& condition) {
    return comesTrue([&] {
      peer_->sendNote(keyboard_, 60);
      return condition();
    });
  }

  std::optional<SequencerPeer> peer_;
  int keyboard_ = 0;
};

TEST_F(ExamplesTest, TheMonitorPrintsWhatIsPlayed) {
  Example monitor({"monitor_midi", "--json"});
  const auto line = R"("source": ")" + nameOf(source("keyboard")) +
                    R"x(", "event": "noteOn(0x3C, vel: midi2(51492), chan: 0x0, group: 0x0)", )x"
                    R"("bytes": "90 3C 64"})";
  EXPECT_TRUE(playUntil([&] { return Example::output().find(line) != std::string::npos; }))
      << Example::output() << "\ninstead of " << line;
  EXPECT_EQ(monitor.end(), 0);
}

TEST_F(ExamplesTest, TheThruTransposes) {
  Example thru({"thru_midi", nameOf(source("keyboard")), nameOf(destination("synthesizer")), "12"});
  Bytes heard;
  EXPECT_TRUE(playUntil([&] {
    heard = peer_->read(3);
    return heard.size() >= 3;
  }));
  heard.resize(3);
  EXPECT_THAT(heard, testing::ElementsAre(0x90, 72, 100));
  EXPECT_EQ(thru.end(), 0);
}

TEST_F(ExamplesTest, TheLibrarianBringsBackWhatItSaved) {
  constexpr auto path = "/tmp/example.syx";
  const auto dump = sysExOf(1000);
  const auto name = nameOf(source("keyboard"));
  Example saving({"sysex_librarian", "save", name, path});
  EXPECT_TRUE(comesTrue([&] {
    peer_->sendSysEx(keyboard_, dump);
    return !Example::contents(path).empty();
  }));
  EXPECT_EQ(saving.end(), 0);
  const auto saved = Example::contents(path);
  EXPECT_EQ(Bytes(saved.begin(), saved.begin() + 1000), dump);

  Example sending({"sysex_librarian", "send", path, nameOf(destination("synthesizer"))});
  Bytes brought;
  EXPECT_TRUE(comesTrue([&] {
    std::ranges::copy(peer_->read(dump.size() - brought.size()), std::back_inserter(brought));
    return brought.size() == dump.size();
  }));
  EXPECT_TRUE(brought == dump);
  EXPECT_EQ(sending.awaitEnd(), 0) << Example::output();
}

}  // namespace
}  // namespace midikit::io
