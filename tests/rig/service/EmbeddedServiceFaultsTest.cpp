#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <fstream>
#include <future>
#include <nlohmann/json.hpp>
#include <vector>

#include "foundation/files/TemporaryDirectory.hpp"
#include "foundation/run/SystemRuntime.hpp"
#include "rig/service/EmbeddedService.hpp"
#include "tests/rig/service/TestClient.hpp"

namespace karvex::rig {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;

constexpr const char* list = "/services/loaderInfo.php";
constexpr const char* complete = "/services/uploadComplete.php";
constexpr const char* image = "/firmware/image.hex";

/// A service with two devices and one file, on the machine's own clock, with faults as a user gives them.
class EmbeddedServiceFaultsTest : public testing::Test {
 protected:
  EmbeddedServiceFaultsTest() {
    std::ofstream(directory_.path() / "image.hex") << std::string(imageSize, ':');
    service_.setDevices(std::vector<ServedDevice>{{.mcu = "TEENSY40"}, {.mcu = "TEENSY41"}});
  }

  void setFaults(const std::vector<std::string>& texts) {
    ServiceFaults faults;
    for (const auto& text : texts) {
      ASSERT_EQ(addServiceFault(text, faults), std::nullopt) << text;
    }
    service_.setFaults(faults);
  }

  /// What is listed under a fault. The answer itself is sound.
  json listed(const std::string& fault) {
    setFaults({fault});
    const auto reply = client_.post(list);
    EXPECT_TRUE(reply.isWhole()) << fault;
    EXPECT_EQ(reply.status, 200) << fault;
    return json::parse(reply.body);
  }

  static constexpr std::size_t imageSize = 40'000;
  foundation::SystemRuntime runtime_;
  foundation::TemporaryDirectory directory_;
  EmbeddedService service_{runtime_, directory_.path()};
  TestClient client_{service_};
};

TEST_F(EmbeddedServiceFaultsTest, AnEndlessAnswerGoesOnUntilTheClientLeaves) {
  setFaults({"endless"});
  client_.largestBody = 20UL * 1024 * 1024;
  for (const auto& reply : {client_.post(list), client_.get(image)}) {
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.promised, std::nullopt);
    EXPECT_GE(reply.body.size(), client_.largestBody);
    EXPECT_EQ(reply.error, "Canceled");
  }
  EXPECT_TRUE(comesTrue([this] { return service_.openConnections() == 0; })) << "the service went on sending";
}

TEST_F(EmbeddedServiceFaultsTest, ASilentServiceLetsGoWhenTheClientLeaves) {
  setFaults({"silent"});
  client_.patience = 50ms;
  for (int round = 0; round < 20; ++round) {  // more often than there are threads to be held up
    const auto reply = client_.post(list);
    EXPECT_EQ(reply.status, 0);
    EXPECT_EQ(reply.error, "Read");
  }
  EXPECT_TRUE(comesTrue([this] { return service_.requests().size() == 20; }));
  EXPECT_TRUE(comesTrue([this] { return service_.openConnections() == 0; }))
      << "still waiting for a client gone";
}

TEST_F(EmbeddedServiceFaultsTest, ASilentServiceLetsGoWhenItStops) {
  setFaults({"silent"});
  std::vector<std::future<Reply>> replies;
  for (int client = 0; client < 4; ++client) {
    replies.push_back(std::async(std::launch::async, [this] { return client_.post(complete); }));
  }
  EXPECT_TRUE(comesTrue([this] { return service_.requests().size() == 4; }));
  service_.stop();
  EXPECT_EQ(service_.openConnections(), 0U);
  for (auto& reply : replies) {
    const auto seen = reply.get();
    EXPECT_EQ(seen.status, 0) << "not a byte of an answer, also at the end";
    EXPECT_EQ(seen.error, "Read");
  }
}

TEST_F(EmbeddedServiceFaultsTest, StoppingDoesNotWaitForClientsThatSayNothing) {
  const int mute = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(client_.port));
  ASSERT_EQ(::connect(mute, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  EXPECT_TRUE(comesTrue([this] { return service_.openConnections() == 1; }))
      << "in the middle of its handshake";
  const auto before = std::chrono::steady_clock::now();
  service_.stop();
  EXPECT_LT(std::chrono::steady_clock::now() - before, 30s) << "a client may take 120 s for its next byte";
  ::close(mute);
}

}  // namespace
}  // namespace karvex::rig
