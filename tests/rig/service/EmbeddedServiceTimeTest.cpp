#include <gmock/gmock.h>

#include <string>
#include <thread>
#include <vector>

#include "foundation/Timer.hpp"
#include "foundation/VirtualRuntime.hpp"
#include "rig/service/EmbeddedService.hpp"
#include "tests/rig/service/TestClient.hpp"

namespace karvex::rig {
namespace {

using namespace std::chrono_literals;
using foundation::TimePoint;
using foundation::Timer;
using testing::ElementsAre;

constexpr const char* list = "/services/loaderInfo.php";

/// Clients on threads of their own, whose transfers the virtual runtime knows as outside work.
class EmbeddedServiceTimeTest : public testing::Test {
 protected:
  ~EmbeddedServiceTimeTest() override { joinClients(); }

  void setFault(const std::string& text) {
    ServiceFaults faults;
    ASSERT_EQ(addServiceFault(text, faults), std::nullopt) << text;
    service_.setFaults(faults);
  }

  void note(const std::string& what) {
    const auto now = std::chrono::duration_cast<std::chrono::milliseconds>(runtime_.clock().now() - start_);
    events_.push_back(std::to_string(now.count()) + " " + what);
  }

  /// Asks for the list on another thread, and notes on the main queue what came of it.
  void ask(const std::string& name) {
    const auto ticket = runtime_.outsideWork().begin();
    clients_.emplace_back([this, name, ticket] {
      TestClient client(service_);
      client.onLocalPort = [this, ticket](int port) {
        runtime_.outsideWork().setName(ticket, static_cast<std::uint64_t>(port));
      };
      const auto reply = client.post(list);
      runtime_.mainQueue().post([this, name, reply] { note(name + " " + std::to_string(reply.status)); });
      runtime_.outsideWork().end(ticket);
    });
  }

  void runFor(foundation::Duration span) {
    runtime_.mainQueue().postAt(runtime_.clock().now() + span, [this] { runtime_.stopMain(); });
    runtime_.runMain();
    joinClients();
  }

  void joinClients() {
    for (auto& client : clients_) {
      client.join();
    }
    clients_.clear();
  }

  foundation::VirtualRuntime runtime_;
  TimePoint start_ = runtime_.clock().now();
  EmbeddedService service_{runtime_, "/nonexistent"};
  std::vector<std::string> events_;
  std::vector<std::thread> clients_;
};

TEST_F(EmbeddedServiceTimeTest, ASlowAnswerTakesExactlyTheTimeGiven) {
  setFault("slow=30000");
  runtime_.clock().sleepFor(1s);
  ask("answer");
  const auto before =
      Timer::oneShot(runtime_.clock(), runtime_.mainQueue(), 29'999ms, [this] { note("before"); });
  const auto behind =
      Timer::oneShot(runtime_.clock(), runtime_.mainQueue(), 30'001ms, [this] { note("behind"); });
  runFor(60s);
  EXPECT_THAT(events_, ElementsAre("30999 before", "31000 answer 200", "31001 behind"));
  ASSERT_EQ(service_.requests().size(), 1U);
  EXPECT_EQ(service_.requests()[0].time, start_ + 1s) << "when it was taken, not when it was answered";
}

TEST_F(EmbeddedServiceTimeTest, TimeGoesOnForAClientThatIsNeverAnswered) {
  setFault("silent");
  ask("dropped");
  const auto timer = Timer::oneShot(runtime_.clock(), runtime_.mainQueue(), 60s, [this] { note("timer"); });
  const auto stop = Timer::oneShot(runtime_.clock(), runtime_.mainQueue(), 70s, [this] {
    service_.stop();
    note("stopped");
  });
  const auto behind =
      Timer::oneShot(runtime_.clock(), runtime_.mainQueue(), 70'001ms, [this] { note("behind"); });
  runFor(100s);
  EXPECT_THAT(events_, ElementsAre("60000 timer", "70000 stopped", "70000 dropped 0", "70001 behind"));
}

}  // namespace
}  // namespace karvex::rig
