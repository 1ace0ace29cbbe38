#include "MIDIKitIO/platform/linux/InputThreads.hpp"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <future>
#include <memory>
#include <set>
#include <thread>
#include <vector>

#include "foundation/run/SystemRuntime.hpp"

namespace midikit::io::alsa {
namespace {

using engine::Handovers;
using engine::ListReceiver;

/// A byte in the pipe is a list for the receiver of that number.
class InputThreadsTest : public testing::Test {
 protected:
  InputThreadsTest() { EXPECT_EQ(::pipe2(pipe_.data(), O_NONBLOCK), 0); }
  ~InputThreadsTest() override {
    threads_.reset();
    ::close(pipe_[0]);
    ::close(pipe_[1]);
  }

  void addReceiver(MIDIReadBlock block) {
    auto& queue =
        queues_.emplace_back(std::make_unique<karvex::foundation::SerialQueue>(runtime_.globalQueue()));
    receivers_.push_back(std::make_shared<ListReceiver>(runtime_, *queue, std::move(block)));
  }
  void start() {
    threads_ = std::make_unique<InputThreads>(pipe_[0], [this] { return read(); });
  }
  void send(char receiver) { ASSERT_EQ(::write(pipe_[1], &receiver, 1), 1); }

  InputThreads::Intake read() {
    InputThreads::Intake intake;
    for (char number = 0; ::read(pipe_[0], &number, 1) == 1;) {
      MIDIPacketList list(100);
      EXPECT_TRUE(list.add(0, std::array<std::uint8_t, 1>{0xF8}));
      const auto& receiver = receivers_.at(static_cast<std::size_t>(number));
      receiver->add(std::make_shared<const engine::MIDIList>(std::move(list)), MIDIObjectRef{1});
      intake.handovers.add(receiver);
      intake.hasAny = true;
    }
    return intake;
  }

  karvex::foundation::SystemRuntime runtime_;
  std::array<int, 2> pipe_{};
  std::vector<std::unique_ptr<karvex::foundation::SerialQueue>> queues_;
  std::vector<std::shared_ptr<ListReceiver>> receivers_;
  std::unique_ptr<InputThreads> threads_;
};

TEST_F(InputThreadsTest, AReaderThatTakesItsTimeHoldsNobodyElseUp) {
  std::promise<void> isSlow;
  std::promise<void> goOn;
  std::promise<void> allCame;
  std::atomic<int> count = 0;
  addReceiver([&](const MIDIPacketList&, ConnectionToken) {
    isSlow.set_value();
    goOn.get_future().wait();
  });
  addReceiver([&](const MIDIPacketList&, ConnectionToken) {
    if (++count == 100) {
      allCame.set_value();
    }
  });
  start();
  send(0);
  isSlow.get_future().wait();
  for (int i = 0; i < 100; ++i) {
    send(1);
  }
  EXPECT_EQ(allCame.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);
  goOn.set_value();
}

TEST_F(InputThreadsTest, AReaderMayEndTheThreadsThatCallIt) {
  std::promise<void> hasEnded;
  addReceiver([&](const MIDIPacketList&, ConnectionToken) {
    threads_.reset();
    hasEnded.set_value();
  });
  start();
  send(0);
  EXPECT_EQ(hasEnded.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);
}

}  // namespace
}  // namespace midikit::io::alsa
