#include "rig/service/EmbeddedService.hpp"

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>
#include <vector>

#include "foundation/files/TemporaryDirectory.hpp"
#include "foundation/run/SystemRuntime.hpp"
#include "tests/rig/service/TestClient.hpp"

namespace karvex::rig {
namespace {

namespace fs = std::filesystem;
using testing::SizeIs;

constexpr const char* list = "/services/loaderInfo.php";

std::string read(const fs::path& path) {
  std::ifstream stream(path, std::ios::binary);
  EXPECT_TRUE(stream) << path;
  return {std::istreambuf_iterator<char>(stream), {}};
}

void write(const fs::path& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

std::string example(const char* name) {
  return read(fs::path(KARVEX_EXAMPLES_DIRECTORY) / name);
}

class EmbeddedServiceTest : public testing::Test {
 protected:
  EmbeddedServiceTest() {
    write(firmware_ / "image.hex", image_);
    fs::create_directory(firmware_ / "sub");
    write(firmware_ / "sub" / "a b.hex", ":00000001FF\r\n");
    write(directory_.path() / "secret", "not to be served");
    fs::create_symlink(directory_.path() / "secret", firmware_ / "way-out.hex");
  }

  static fs::path made(const fs::path& path) {
    fs::create_directory(path);
    return path;
  }

  foundation::SystemRuntime runtime_;
  foundation::TemporaryDirectory directory_;
  fs::path firmware_ = made(directory_.path() / "firmware");
  /// Every byte there is, more than one TLS record (16 KiB) of them.
  std::string image_ = [] {
    std::string bytes(100'000, '\0');
    for (std::size_t at = 0; at < bytes.size(); ++at) {
      bytes[at] = static_cast<char>(at * 7 % 256);
    }
    return bytes;
  }();
  EmbeddedService service_{runtime_, firmware_};
  TestClient client_{service_};
};

TEST_F(EmbeddedServiceTest, WritesDownWhatItIsSentByteForByteInTheOrderOfArrival) {
  const std::string form = "application/x-www-form-urlencoded";
  const auto before = runtime_.clock().now();
  EXPECT_EQ(client_.post(list, form).status, 200);
  EXPECT_EQ(client_.post("/services/uploadComplete.php", form, example("uploadComplete.txt")).status, 200);
  EXPECT_EQ(
      client_.post("/services/deviceExplorer.php", "application/json", example("deviceExplorer.json")).status,
      200);
  EXPECT_EQ(client_.post("/services/deviceExplorer.php", "x/y", image_).status, 200);
  const auto after = runtime_.clock().now();

  const auto sent = service_.requests();
  ASSERT_THAT(sent, SizeIs(4));
  auto latest = before;
  for (const auto& request : sent) {
    EXPECT_EQ(request.method, "POST");
    EXPECT_GE(request.time, latest);
    latest = request.time;
    EXPECT_EQ(request.header("REMOTE_ADDR"), "") << "the client never sent it";
  }
  EXPECT_LE(latest, after);
  EXPECT_EQ(sent[0].path, list);
  EXPECT_EQ(sent[0].header("content-type"), form);
  EXPECT_EQ(sent[0].header("Content-Length"), "0");
  EXPECT_EQ(sent[0].header("X-None"), "");
  EXPECT_EQ(sent[1].path, "/services/uploadComplete.php");
  EXPECT_EQ(sent[1].body, example("uploadComplete.txt"));
  EXPECT_EQ(sent[2].body, example("deviceExplorer.json"));
  EXPECT_EQ(sent[2].header("Content-Type"), "application/json");
  EXPECT_EQ(sent[3].body, image_);
}

TEST_F(EmbeddedServiceTest, ServesFirmwareFilesByteForByte) {
  const auto reply = client_.get("/firmware/image.hex");
  EXPECT_TRUE(reply.isWhole()) << reply.error;
  EXPECT_EQ(reply.body, image_);
  EXPECT_EQ(client_.get("/firmware/sub/a%20b.hex").body, ":00000001FF\r\n");
  EXPECT_EQ(service_.requests().back().path, "/firmware/sub/a%20b.hex") << "as it was sent";
}

TEST_F(EmbeddedServiceTest, NothingLeadsOutOfTheFirmwareDirectory) {
  const std::string absolute = (directory_.path() / "secret").string();
  for (const std::string& path :
       {std::string("/firmware/../secret"), std::string("/firmware/%2e%2e/secret"),
        std::string("/firmware/sub/../../secret"), std::string("/firmware/..%2Fsecret"),
        "/firmware/" + absolute, "/firmware/%2F" + absolute.substr(1), std::string("/firmware/way-out.hex"),
        std::string("/firmware/sub"), std::string("/firmware/"), std::string("/firmware/none.hex"),
        std::string("/firmware/image.hex%00.txt/..")}) {
    const auto reply = client_.get(path);
    EXPECT_EQ(reply.status, 404) << path;
    EXPECT_EQ(reply.body.find("not to be served"), std::string::npos) << path;
  }
}

TEST_F(EmbeddedServiceTest, IsKnownByItsNamesToWhoTrustsItsAuthorityOnly) {
  EXPECT_EQ(service_.baseAddress(), "https://127.0.0.1:" + std::to_string(client_.port));
  client_.host = "localhost";
  EXPECT_EQ(client_.post(list).status, 200);
  const EmbeddedService other(runtime_, firmware_);
  const auto reply = TestClient(service_.baseAddress(), other.caFile()).post(list);
  EXPECT_EQ(reply.status, 0);
  EXPECT_EQ(reply.error, "SSLServerVerification");
}

TEST_F(EmbeddedServiceTest, APortIsHeldByOneServiceAndFreeAgainAtOnce) {
  client_.post(list);
  const auto port = static_cast<std::uint16_t>(client_.port);
  EXPECT_THROW(EmbeddedService(runtime_, firmware_, port), std::runtime_error);
  service_.stop();
  EmbeddedService next(runtime_, firmware_, port);
  EXPECT_EQ(next.baseAddress(), service_.baseAddress());
  std::string heard;
  next.setRequestListener([&heard](const ServiceRequest& request) { heard += request.path; });
  EXPECT_EQ(TestClient(next).post(list).status, 200);
  next.stop();
  EXPECT_EQ(heard, list);
  EXPECT_THAT(next.requests(), testing::IsEmpty()) << "a service that runs for days keeps nothing";
}

/// Threads of this process, or files that it has open: what a directory of /proc/self lists.
std::ptrdiff_t countIn(const char* directory) {
  return std::distance(fs::directory_iterator(directory), {});
}

TEST_F(EmbeddedServiceTest, StartingAndStoppingLeavesNothingBehind) {
  std::vector<fs::path> directories;
  const auto startAndStop = [&](int round) {
    EmbeddedService service(runtime_, firmware_);
    directories.push_back(service.caFile().parent_path());
    if (round % 3 != 0) {
      EXPECT_EQ(TestClient(service).post(list).status, 200);
    }
    if (round % 2 != 0) {
      service.stop();
      service.stop();
      EXPECT_EQ(TestClient(service).post(list).status, 0);
      EXPECT_THAT(service.requests(), SizeIs(round % 3 != 0 ? 1 : 0));
    }
  };
  startAndStop(1);
  const auto threads = countIn("/proc/self/task");
  const auto files = countIn("/proc/self/fd");
  for (int round = 0; round < 50; ++round) {
    startAndStop(round);
  }
  // The kernel may list a thread for a moment longer than joining it takes, before these rounds and behind
  // them.
  EXPECT_TRUE(comesTrue([threads] { return countIn("/proc/self/task") <= threads; }));
  EXPECT_EQ(countIn("/proc/self/fd"), files);
  EXPECT_TRUE(
      std::none_of(directories.begin(), directories.end(), [](const auto& one) { return fs::exists(one); }));
}

}  // namespace
}  // namespace karvex::rig
