#include "rig/service/EmbeddedService.hpp"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <fstream>
#include <future>
#include <iterator>
#include <vector>

#include "foundation/files/TemporaryDirectory.hpp"
#include "foundation/run/SystemRuntime.hpp"
#include "tests/rig/service/TestClient.hpp"

namespace karvex::rig {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing::SizeIs;

constexpr const char* list = "/services/loaderInfo.php";
constexpr const char* complete = "/services/uploadComplete.php";

/// On the machine's own clock, with one image and what must not be served.
class EmbeddedServiceTest : public testing::Test {
 protected:
  EmbeddedServiceTest() {
    fs::create_directories(firmware_ / "sub");
    std::ofstream(firmware_ / "image.hex", std::ios::binary) << image_;
    std::ofstream(firmware_ / "sub" / "a b.hex") << ":00000001FF\r\n";
    std::ofstream(directory_.path() / "secret") << "not to be served";
    fs::create_symlink(directory_.path() / "secret", firmware_ / "way-out.hex");
    service_.emplace(runtime_, firmware_);
    client_.emplace(*service_);
  }

  void setFault(const char* text) {
    ServiceFaults faults;
    ASSERT_EQ(addServiceFault(text, faults), std::nullopt);
    service_->setFaults(faults);
  }

  foundation::SystemRuntime runtime_;
  foundation::TemporaryDirectory directory_;
  fs::path firmware_ = directory_.path() / "firmware";
  /// Every byte there is, more than one TLS record (16 KiB) of them.
  std::string image_ = [] {
    std::string bytes(100'000, '\0');
    for (std::size_t at = 0; at < bytes.size(); ++at) {
      bytes[at] = static_cast<char>(at * 7 % 256);
    }
    return bytes;
  }();
  std::optional<EmbeddedService> service_;
  std::optional<TestClient> client_;
};

TEST_F(EmbeddedServiceTest, WritesDownWhatItIsSentByteForByteInTheOrderOfArrival) {
  const auto before = runtime_.clock().now();
  EXPECT_EQ(client_->post(list, "text/x").status, 200);
  EXPECT_EQ(client_->post("/services/deviceExplorer.php", "x/y", image_).status, 200);
  const auto sent = service_->requests();
  ASSERT_THAT(sent, SizeIs(2));
  EXPECT_GE(sent[0].time, before);
  EXPECT_GE(sent[1].time, sent[0].time);
  EXPECT_LE(sent[1].time, runtime_.clock().now());
  EXPECT_EQ(sent[0].path, list);
  EXPECT_EQ(sent[0].header("content-type"), "text/x");
  EXPECT_EQ(sent[0].header("Content-Length"), "0");
  EXPECT_EQ(sent[0].header("REMOTE_ADDR"), "") << "the client never sent it";
  EXPECT_EQ(sent[1].method, "POST");
  EXPECT_EQ(sent[1].body, image_);
}

TEST_F(EmbeddedServiceTest, ServesFirmwareFilesByteForByteAndNothingElse) {
  const auto reply = client_->get("/firmware/image.hex");
  EXPECT_TRUE(reply.isWhole()) << reply.error;
  EXPECT_EQ(reply.body, image_);
  EXPECT_EQ(client_->get("/firmware/sub/a%20b.hex").body, ":00000001FF\r\n");
  EXPECT_EQ(service_->requests().back().path, "/firmware/sub/a%20b.hex") << "as it was sent";
  const std::string secret = (directory_.path() / "secret").string();
  for (const std::string& path :
       {std::string("../secret"), std::string("%2e%2e/secret"), std::string("sub/../../secret"),
        std::string("..%2Fsecret"), secret, "%2F" + secret.substr(1), std::string("way-out.hex"),
        std::string("sub"), std::string(), std::string("none.hex"), std::string("image.hex%00.txt/..")}) {
    const auto refused = client_->get("/firmware/" + path);
    EXPECT_EQ(refused.status, 404) << path;
    EXPECT_EQ(refused.body.find("not to be served"), std::string::npos) << path;
  }
}

TEST_F(EmbeddedServiceTest, IsKnownByItsNamesToWhoTrustsItsAuthorityOnly) {
  EXPECT_EQ(service_->baseAddress(), "https://127.0.0.1:" + std::to_string(client_->port));
  client_->host = "localhost";
  EXPECT_EQ(client_->post(list).status, 200);
  const EmbeddedService other(runtime_, firmware_);
  EXPECT_EQ(TestClient(service_->baseAddress(), other.caFile()).post(list).error, "SSLServerVerification");
}

TEST_F(EmbeddedServiceTest, APortIsHeldByOneServiceAndFreeAgainAtOnce) {
  client_->post(list);
  const auto port = static_cast<std::uint16_t>(client_->port);
  EXPECT_THROW(EmbeddedService(runtime_, firmware_, port), std::runtime_error);
  service_->stop();
  EmbeddedService next(runtime_, firmware_, port);
  EXPECT_EQ(next.baseAddress(), service_->baseAddress());
  std::string heard;
  next.setRequestListener([&heard](const ServiceRequest& request) { heard += request.path; });
  EXPECT_EQ(TestClient(next).post(list).status, 200);
  next.stop();
  EXPECT_EQ(heard, list);
  EXPECT_THAT(next.requests(), SizeIs(0)) << "a service that runs for days keeps nothing";
}

/// Threads of this process, or files that it has open: what a directory of /proc/self lists.
std::ptrdiff_t countIn(const char* directory) {
  return std::distance(fs::directory_iterator(directory), {});
}

TEST_F(EmbeddedServiceTest, StartingAndStoppingLeavesNothing) {
  const auto startAndStop = [&](int round) {
    EmbeddedService service(runtime_, firmware_);
    if (round % 3 != 0) {
      EXPECT_EQ(TestClient(service).post(list).status, 200);
    }
    if (round % 2 != 0) {
      service.stop();
      service.stop();
      EXPECT_EQ(TestClient(service).post(list).status, 0);
      EXPECT_THAT(service.requests(), SizeIs(round % 3 != 0 ? 1 : 0));
    }
    return service.caFile().parent_path();
  };
  startAndStop(1);
  const auto threads = countIn("/proc/self/task");
  const auto files = countIn("/proc/self/fd");
  for (int round = 0; round < 50; ++round) {
    EXPECT_FALSE(fs::exists(startAndStop(round)));
  }
  // The kernel may list a thread for a moment longer than joining it takes.
  EXPECT_TRUE(comesTrue([threads] { return countIn("/proc/self/task") <= threads; }));
  EXPECT_EQ(countIn("/proc/self/fd"), files);
}

TEST_F(EmbeddedServiceTest, AnEndlessAnswerGoesOnUntilTheClientLeaves) {
  setFault("endless");
  client_->largestBody = 20UL * 1024 * 1024;
  for (const auto& reply : {client_->post(list), client_->get("/firmware/image.hex")}) {
    EXPECT_EQ(reply.status, 200);
    EXPECT_FALSE(reply.isLengthPromised);
    EXPECT_GE(reply.body.size(), client_->largestBody);
  }
  EXPECT_TRUE(comesTrue([this] { return service_->openConnections() == 0; }))
      << "the service went on sending";
}

TEST_F(EmbeddedServiceTest, ASilentServiceLetsGoWhenTheClientLeavesAndWhenItStops) {
  setFault("silent");
  client_->patience = 50ms;
  for (int round = 0; round < 20; ++round) {  // more often than there are threads to be held up
    EXPECT_EQ(client_->post(list).error, "Read");
  }
  EXPECT_TRUE(comesTrue([this] { return service_->openConnections() == 0; }))
      << "still waiting for a client gone";
  client_->patience = 60s;
  std::vector<std::future<Reply>> replies;
  for (int client = 0; client < 4; ++client) {
    replies.push_back(std::async(std::launch::async, [this] { return client_->post(complete); }));
  }
  EXPECT_TRUE(comesTrue([this] { return service_->requests().size() == 24; }));
  service_->stop();
  EXPECT_EQ(service_->openConnections(), 0U);
  for (auto& reply : replies) {
    EXPECT_EQ(reply.get().status, 0) << "not a byte of an answer, also at the end";
  }
}

TEST_F(EmbeddedServiceTest, StoppingDoesNotWaitForClientsThatSayNothing) {
  const int mute = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(client_->port));
  ASSERT_EQ(::connect(mute, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  EXPECT_TRUE(comesTrue([this] { return service_->openConnections() == 1; }))
      << "in the middle of its handshake";
  const auto before = std::chrono::steady_clock::now();
  service_->stop();
  EXPECT_LT(std::chrono::steady_clock::now() - before, 30s) << "a client may take 120 s for its next byte";
  ::close(mute);
}

}  // namespace
}  // namespace karvex::rig
