#include <algorithm>
#include <future>
#include <thread>

#include "foundation/run/Timer.hpp"
#include "tests/foundation/UrlSessionFixture.hpp"

/// Time-outs, virtual time, and the end of a session.
namespace karvex::foundation {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using Connection = LoopbackServer::Connection;

class UrlSessionTimeTest : public UrlSessionFixture<SystemRuntime> {};

class UrlSessionVirtualTimeTest : public UrlSessionFixture<VirtualRuntime> {
 protected:
  /// Lets virtual time go on for a server that has nothing to say for so long.
  void stayQuiet(const Connection& connection, Duration span) {
    // What was sent has to reach the client's thread before its time goes on: a third of the time-out at most
    // is lost to a byte that comes too late for that.
    std::this_thread::sleep_for(5ms);
    std::promise<void> isOver;
    runtime.globalQueue().postAt(runtime.clock().now() + span, [&] {
      runtime.outsideWork().resume(connection.peerPort());
      isOver.set_value();
    });
    runtime.outsideWork().pause(connection.peerPort());
    isOver.get_future().wait();
  }
};

TEST_F(UrlSessionVirtualTimeTest, ASilentServerCostsExactlyTheIdleTimeOutAndNoRealTime) {
  for (const auto* method : {"GET", "POST"}) {
    const LoopbackServer server([this](Connection& connection) {
      connection.readRequest();
      connection.write(answer(200, "once"));
      connection.readRequest();  // On the same connection.
      runtime.outsideWork().pause(connection.peerPort());
      connection.awaitEnd();
    });
    UrlSession session(runtime);
    const UrlRequest request{
        .url = server.url("/"), .method = method, .body = *method == 'P' ? "a form" : ""};
    EXPECT_TRUE(await(session.send(request)).value);
    const auto start = runtime.clock().now();
    std::vector<Duration> ticks;
    const auto ticker = Timer::repeating(runtime.clock(), runtime.mainQueue(), 25s,
                                         [&] { ticks.push_back(runtime.clock().now() - start); });
    const auto realStart = std::chrono::steady_clock::now();
    const auto outcome = await(session.send(request));
    EXPECT_EQ(outcome.error, "127.0.0.1: Nothing came for 60 s");
    EXPECT_EQ(outcome.at - start, 60s);
    EXPECT_THAT(ticks, ElementsAre(25s, 50s));
    EXPECT_LT(std::chrono::steady_clock::now() - realStart, 5s);
  }
}

TEST_F(UrlSessionVirtualTimeTest, TimeStandsStillDuringATransfer) {
  const LoopbackServer server([](Connection& connection) {
    connection.readRequest();
    std::this_thread::sleep_for(50ms);
    connection.write(answer(200, "late"));
  });
  int ticks = 0;
  const auto ticker = Timer::repeating(runtime.clock(), runtime.mainQueue(), 250ms, [&ticks] { ++ticks; });
  const auto start = runtime.clock().now();
  const auto outcome = get(server.url("/"));
  ASSERT_TRUE(outcome.value) << outcome.error;
  EXPECT_EQ(outcome.at, start);
  EXPECT_EQ(ticks, 0);
}

TEST_F(UrlSessionVirtualTimeTest, AByteNowAndThenKeepsATransferAliveForSoLongAndNoLonger) {
  constexpr int most = 22;
  for (const int bytes : {10, most + 1}) {
    const LoopbackServer server([&](Connection& connection) {
      connection.readRequest();
      connection.write("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(bytes) + "\r\n\r\n");
      for (int byte = 0; byte < std::min(bytes, most); ++byte) {
        stayQuiet(connection, 40s);
        connection.write("x");
      }
      if (bytes > most) {
        std::this_thread::sleep_for(5ms);
        runtime.outsideWork().pause(connection.peerPort());
        connection.awaitEnd();
      }
    });
    const auto start = runtime.clock().now();
    const auto outcome = get(server.url("/"));
    EXPECT_EQ(outcome.error, bytes <= most ? "" : "127.0.0.1: It was not through after 900 s");
    EXPECT_EQ(outcome.at - start, bytes <= most ? 400s : 900s);
  }
}

TEST_F(UrlSessionVirtualTimeTest, AServerThatReadsNowAndThenKeepsATransferAlive) {
  constexpr std::size_t piece = 16'000'000;  // More than the system keeps for a connection on the way.
  const LoopbackServer server([this](Connection& connection) {
    for (int read = 0; read < 4; ++read) {
      connection.skip(piece);
      stayQuiet(connection, 20s);
    }
    connection.write(answer(200, "done"));
  });
  const auto start = runtime.clock().now();
  const auto outcome = send({.url = server.url("/"), .method = "POST", .body = std::string(4 * piece, 'x')});
  ASSERT_TRUE(outcome.value) << outcome.error;
  EXPECT_EQ(outcome.at - start, 80s);
}

TEST_F(UrlSessionTimeTest, SilenceEndsATransferOnTheMachinesClockToo) {
  const LoopbackServer server([](Connection& connection) {
    connection.readRequest();
    connection.write("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nx");
    connection.awaitEnd();
  });
  int ticks = 0;
  const auto ticker = Timer::repeating(runtime.clock(), runtime.mainQueue(), 10ms, [&ticks] { ++ticks; });
  const auto start = runtime.clock().now();
  UrlSession session(runtime, {.idleTimeOut = 120ms});
  const auto outcome = await(session.download(server.url("/")));
  EXPECT_EQ(outcome.error, "127.0.0.1: Nothing came for 120 ms");
  EXPECT_GE(outcome.at - start, 120ms);
  EXPECT_GE(ticks, 2) << "the main queue goes on meanwhile";
  EXPECT_LT(outcome.at - start, 10s);
  EXPECT_EQ(filesLeft(), 0);
}

TEST_F(UrlSessionTimeTest, ASessionThatGoesEndsItsTransfersAtOnce) {
  std::optional<UrlSession> session(std::in_place, runtime);
  const LoopbackServer server([&](Connection& connection) {
    connection.readRequest();
    connection.write("HTTP/1.1 200 OK\r\n\r\nsome");
    runtime.mainQueue().post([&session] { session.reset(); });
    connection.awaitEnd();
  });
  const auto start = runtime.clock().now();
  auto notBegun = session->send({.url = server.url("/")});
  const auto outcome = await(session->download(server.url("/")));
  EXPECT_EQ(outcome.error, "127.0.0.1: The transfer was cancelled");
  EXPECT_LT(outcome.at - start, 10s);
  EXPECT_EQ(filesLeft(), 0);
  EXPECT_EQ(await(std::move(notBegun)).error, "127.0.0.1: The transfer was cancelled");
}

TEST_F(UrlSessionTimeTest, ACoroutineThatItsRuntimeDropsIsDestroyed) {
  auto held = std::make_shared<int>(1);
  const std::weak_ptr<int> watch = held;
  std::promise<void> asked;
  const LoopbackServer server([&](Connection& connection) {
    connection.readRequest();
    asked.set_value();
    connection.awaitEnd();
  });
  {
    VirtualRuntime other;  // Its global jobs wait until its main thread sleeps or ends.
    UrlSession session(other);
    const auto run = [](UrlSession& on, UrlRequest request, std::shared_ptr<int>) -> Task<> {
      co_await on.send(std::move(request));
    };
    spawn(other.mainQueue(), run(session, {.url = server.url("/")}, std::move(held)));
    other.stopMain();
    other.runMain();
    asked.get_future().wait();
    EXPECT_FALSE(watch.expired());
  }
  EXPECT_TRUE(watch.expired());
}

}  // namespace
}  // namespace karvex::foundation
