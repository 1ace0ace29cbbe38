#include "upgrade/BootableDeviceManager.hpp"

#include <gmock/gmock.h>

#include <sstream>
#include <unordered_set>

#include "foundation/run/Timer.hpp"
#include "tests/upgrade/UpgradeFixture.hpp"

namespace karvex::upgrade {
namespace {

using namespace std::chrono_literals;
using foundation::Task;
using records::BootableDevice;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

class BootableDeviceManagerTest : public testing::Test {
 protected:
  BootableDeviceManagerTest() {
    fixture.rig.service.setDevices(std::vector<rig::ServedDevice>{served("10"), served("20")});
  }

  static rig::ServedDevice served(const std::string& serialNumber) {
    return {.deviceSerialNumber = serialNumber,
            .mcu = "TEENSY40",
            .firmwareName = "Pedal",
            .firmwareVersion = "2.0",
            .setupDelay = 7,
            .serverURL = "https://a",
            .serverDirectory = "/b/",
            .serverFile = "c.hex",
            .sequenceNumber = 3,
            .currentVersion = "1.0"};
  }

  static BootableDevice device(const std::string& serialNumber) {
    BootableDevice device;
    device.portSerialNumber = serialNumber;
    device.firmwareName = "Pedal & Co";
    device.firmwareVersion = "2.0+1";
    device.currentVersion = "1.0";
    return device;
  }

  bool fetch(BootableDeviceManager& manager) {
    bool result = false;
    const auto run = [](BootableDeviceManager& of, bool& into) -> Task<> {
      into = co_await of.fetchDeviceDescriptors();
    };
    fixture.run(run(manager, result));
    return result;
  }

  void sendComplete(BootableDeviceManager& manager, const foundation::Uuid& id) {
    fixture.run(manager.sendUploadComplete(id));
  }

  UpgradeFixture fixture{0};
};

TEST_F(BootableDeviceManagerTest, TheListIsAskedForWithAnEmptyFormAndDecoded) {
  BootableDeviceManager manager(fixture.platform());
  EXPECT_TRUE(fetch(manager));
  EXPECT_TRUE(manager.isServerLoaded);
  ASSERT_THAT(manager.deviceDescriptors, SizeIs(2));
  EXPECT_EQ(manager.deviceDescriptors[1].deviceSerialNumber, "20");
  EXPECT_EQ(manager.deviceDescriptors[1].setupDelay, 7U);
  EXPECT_EQ(fixture.printed, "");
  const auto requests = fixture.rig.service.requests();
  ASSERT_THAT(requests, SizeIs(1));
  EXPECT_EQ(requests[0].method, "POST");
  EXPECT_EQ(requests[0].path, "/services/loaderInfo.php");
  EXPECT_EQ(requests[0].body, "");
}

TEST_F(BootableDeviceManagerTest, EachMisbehaviourOfTheServiceLeavesTheListAndSaysWhatItWas) {
  struct Case {
    const char* fault;
    std::vector<std::string> lines;
    std::chrono::milliseconds takes{0};
  };
  constexpr auto tick = 250ms;
  const std::string notJson = "Erreur de validation JSON : ";
  const std::string corrupted = "Erreur : Données corrompues - ";
  const Case faultCases[] = {
      {"silent", {"127.0.0.1: ", notJson, corrupted}, 60s},
      {"slow=59999", {}, 59'999ms},
      {"slow=60001", {"127.0.0.1: ", notJson, corrupted}, 60s},
      {"cut-off", {"127.0.0.1: ", notJson, corrupted}},
      {"wrong-certificate", {"127.0.0.1: ", notJson, corrupted}},
      {"not-found", {notJson, corrupted}},
      {"not-json", {notJson, corrupted}},
      {"missing-key=mcu", {"Erreur : Clé non trouvée 'mcu' - "}},
      {"null-value=mcu", {"Erreur : Valeur non trouvée 'String' - "}},
      {"wrong-type=mcu", {"Erreur : Type non conforme 'String' - "}},
      {"out-of-range", {corrupted}},
  };
  BootableDeviceManager manager(fixture.platform());
  ASSERT_TRUE(fetch(manager));
  const auto listed = manager.deviceDescriptors;
  for (const auto& example : faultCases) {
    SCOPED_TRACE(example.fault);
    fixture.misbehave(example.fault);
    fixture.printed.clear();
    int ticks = 0;
    const auto ticker = foundation::Timer::repeating(fixture.runtime.clock(), fixture.runtime.mainQueue(),
                                                     tick, [&ticks] { ++ticks; });
    manager.isServerLoaded = false;
    const auto before = fixture.runtime.clock().now();
    EXPECT_TRUE(fetch(manager));
    EXPECT_EQ(fixture.runtime.clock().now() - before, example.takes);
    EXPECT_GE(ticks, example.takes / tick - 1) << "the main queue goes on meanwhile";
    EXPECT_TRUE(manager.isServerLoaded);
    EXPECT_EQ(manager.deviceDescriptors, listed);
    std::vector<std::string> lines;
    for (std::istringstream text(fixture.printed); std::getline(text, lines.emplace_back());) {
    }
    lines.pop_back();
    ASSERT_THAT(lines, SizeIs(example.lines.size())) << fixture.printed;
    for (std::size_t i = 0; i < lines.size(); ++i) {
      EXPECT_THAT(lines[i], StartsWith(example.lines[i]));
    }
  }
}

TEST_F(BootableDeviceManagerTest, AnEmptyAnswerIsASuccessThatForgetsTheEarlierList) {
  BootableDeviceManager manager(fixture.platform());
  ASSERT_TRUE(fetch(manager));
  fixture.misbehave("empty-list");
  EXPECT_TRUE(fetch(manager));
  EXPECT_THAT(manager.deviceDescriptors, IsEmpty());
  EXPECT_EQ(fixture.printed, "");
}

TEST_F(BootableDeviceManagerTest, AnAddressThatIsNoUrlIsTheOnlyFalse) {
  fixture.address = "https://my service";
  BootableDeviceManager manager(fixture.platform());
  manager.isServerLoaded = true;
  EXPECT_FALSE(fetch(manager));
  EXPECT_FALSE(manager.isServerLoaded);
  manager.managedDevices.set({device("10")});
  sendComplete(manager, manager.managedDevices.get()[0].id);
  EXPECT_EQ(manager.managedDevices.get()[0].currentVersion, "2.0+1");
  EXPECT_THAT(fixture.debugged, IsEmpty());
}

TEST_F(BootableDeviceManagerTest, ACompletionIsShownAtOnceAndToldInTheOrderGiven) {
  BootableDeviceManager manager(fixture.platform());
  manager.managedDevices.set({device("10"), device("20")});
  std::vector<std::string> versions;
  const auto subscription = manager.managedDevices.observe([&](const std::vector<BootableDevice>& devices) {
    versions.push_back(devices[0].currentVersion + " " + devices[1].currentVersion);
    EXPECT_THAT(fixture.rig.service.requests(), IsEmpty()) << "the table shows it before anything is sent";
  });
  sendComplete(manager, manager.managedDevices.get()[1].id);
  EXPECT_THAT(versions, ElementsAre("1.0 2.0+1"));
  const auto requests = fixture.rig.service.requests();
  ASSERT_THAT(requests, SizeIs(1));
  EXPECT_EQ(requests[0].path, "/services/uploadComplete.php");
  EXPECT_EQ(requests[0].body,
            "DEVICE_SERIAL_NUMBER=20&DEVICE_FIRMWARE_NAME=Pedal%20%26%20Co&DEVICE_FIRMWARE_VERSION=2.0%2B1");
  sendComplete(manager, foundation::Uuid::random());
  EXPECT_THAT(fixture.rig.service.requests(), SizeIs(1)) << "an id that nobody has";
}

TEST_F(BootableDeviceManagerTest, ACompletionEndsWhateverTheServiceDoesAndOnlyAFailedTransferIsWrittenDown) {
  const struct {
    const char* fault;
    bool isFailure;
    std::chrono::milliseconds takes{0};
  } faultCases[] = {
      {"silent", true, 60s}, {"cut-off", true},           {"slow", false, 5s},
      {"not-found", false},  {"missing-key@list", false},
  };
  BootableDeviceManager manager(fixture.platform());
  for (const auto& example : faultCases) {
    SCOPED_TRACE(example.fault);
    fixture.misbehave(example.fault);
    fixture.debugged.clear();
    manager.managedDevices.set({device("10")});
    const auto before = fixture.runtime.clock().now();
    sendComplete(manager, manager.managedDevices.get()[0].id);
    EXPECT_EQ(fixture.runtime.clock().now() - before, example.takes);
    EXPECT_EQ(manager.managedDevices.get()[0].currentVersion, "2.0+1");
    EXPECT_THAT(fixture.debugged, SizeIs(example.isFailure ? 1 : 0));
  }
  EXPECT_EQ(fixture.printed, "");
}

TEST_F(BootableDeviceManagerTest, RecordsAreFoundByTheirIdAndByNothingElse) {
  BootableDeviceManager manager(fixture.platform());
  manager.managedDevices.set({device("10"), device("10"), device("30")});
  const auto devices = manager.managedDevices.get();
  manager.updateStatus(devices[1].id, 5);
  manager.updateStatus(foundation::Uuid::random(), 7);
  const auto updated = manager.managedDevices.get();
  EXPECT_EQ(updated[0].status, 0U);
  EXPECT_EQ(updated[1].status, 5U);
  EXPECT_EQ(manager.nextDevice(devices[0].id).id, devices[1].id);
  EXPECT_EQ(manager.nextDevice(devices[1].id).portSerialNumber, "30");
  EXPECT_THAT(fixture.debugged,
              ElementsAre(">Next Device serial number is : 10", ">Next Device serial number is : 30"));
}

TEST(BootableDeviceTest, EachRecordHasAnIdAndAHashOfItsOwn) {
  const BootableDevice original;
  EXPECT_NE(original, BootableDevice());
  const std::hash<BootableDevice> hash;
  std::unordered_set<std::size_t> hashes = {hash(original), hash(BootableDevice())};
  auto changed = original;
  EXPECT_EQ(hash(original), hash(changed));
  changed.status = 1;
  hashes.insert(hash(changed));
  changed.currentVersion = "1";
  hashes.insert(hash(changed));
  EXPECT_THAT(hashes, SizeIs(4));
}

}  // namespace
}  // namespace karvex::upgrade
