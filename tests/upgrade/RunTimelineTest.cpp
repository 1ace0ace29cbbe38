// Whole runs with their times: every line of the log and every published change, in order. The texts are in
// timelines/. With KARVEX_WRITE_PAGES set, the tests write them anew: look at what `git diff` shows then.

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <ostream>
#include <regex>
#include <string>

#include "app/LoaderHost.hpp"
#include "device/PortName.hpp"
#include "foundation/Log.hpp"
#include "tests/ExpectedText.hpp"
#include "tests/upgrade/UpgradeFixture.hpp"
#include "upgrade/LoadProgress.hpp"

namespace karvex::upgrade {
namespace {

using namespace std::chrono_literals;

/// Writes down what happens at a fixture, with the milliseconds since the beginning.
class Timeline {
 public:
  explicit Timeline(UpgradeFixture& fixture) : fixture_(fixture), start_(fixture.runtime.clock().now()) {
    for (const auto& row : fixture.rows()) {
      rows_[row.portSerialNumber] = row;
    }
    foundation::log::redirectSystem([this](std::string_view text) { add(text); });
    foundation::log::redirectDebug([this](std::string_view text) { add(fmt::format("debug: {}", text)); });
    follow(fixture.model.isUploadButtonDisabled, "upload button disabled");
    follow(fixture.model.loadingInProgress, "run");
    follow(fixture.model.actionButtonsDisabled, "action buttons disabled");
    for (const auto alert : alertsInOrder) {
      follow(fixture.view.get()->*DeviceListView::flagOf(alert), fmt::format("alert \"{}\"", titleOf(alert)));
    }
    follow(fixture.view->uploadErrorText, "upload error text");
    follow(fixture.view->downloadErrorText, "download error text");
    follow(fixture.view->serialPortMgr.errorText, "port error text");
    follow(fixture.view->stopNotice, "notice");
    subscriptions_.push_back(fixture.view->selectedDeviceId.observe(
        [this](const auto& id) { add(fmt::format("selected: {}", id ? serialOf(*id) : "none")); }));
    subscriptions_.push_back(fixture.view->deviceManager.errorCode.observe(
        [this](std::int64_t code) { add(fmt::format("error code {}", code)); }));
    subscriptions_.push_back(fixture.view->deviceManager.managedDevices.observe(
        [this](const auto& devices) { compare(devices); }));
  }

  void note(std::string_view what) { add(fmt::format("-- {}", what)); }
  std::string text() const { return text_; }

 private:
  void add(std::string_view what) {
    const auto now =
        std::chrono::duration_cast<std::chrono::milliseconds>(fixture_.runtime.clock().now() - start_);
    // The folder of downloads, how long a transfer took, and the service's port differ from run to run.
    static const std::regex passing(R"(\S*/karvex-[^/]*|after \d+ ms|:\d{5}(?=/))");
    const auto line = std::regex_replace(std::string(what), passing, "");
    text_ += fmt::format("{:>7} {}\n", now.count(), line);
  }
  template <typename Value>
  void follow(foundation::Published<Value>& published, std::string name) {
    subscriptions_.push_back(published.observe(
        [this, name = std::move(name)](const Value& value) { add(fmt::format("{}: {}", name, value)); }));
  }
  std::string serialOf(const foundation::Uuid& id) const {
    for (const auto& row : fixture_.rows()) {
      if (row.id == id) {
        return row.portSerialNumber;
      }
    }
    return "unknown";
  }
  void compare(const std::vector<records::BootableDevice>& devices) {
    std::map<std::string, records::BootableDevice> now;
    for (const auto& device : devices) {
      const auto known = rows_.find(device.portSerialNumber);
      if (known == rows_.end()) {
        add(fmt::format("row {}: status {}, version {}", device.portSerialNumber, device.status,
                        device.currentVersion));
      } else if (known->second.status != device.status) {
        const auto progress = currentLoadProgress();
        add(fmt::format("row {}: status {}, {} of {} blocks", device.portSerialNumber, device.status,
                        progress.blocksSent, progress.blocksToSend));
      } else if (known->second.currentVersion != device.currentVersion) {
        add(fmt::format("row {}: version {}", device.portSerialNumber, device.currentVersion));
      }
      now[device.portSerialNumber] = device;
    }
    if (devices.empty()) {
      add("no rows");
    }
    rows_ = std::move(now);
  }

  UpgradeFixture& fixture_;
  const foundation::TimePoint start_;
  std::map<std::string, records::BootableDevice> rows_;
  std::vector<foundation::Subscription> subscriptions_;
  std::string text_;
};

struct Scenario {
  const char* name;
  std::function<void(UpgradeFixture&)> arrange;
  std::optional<Alert> alert;  ///< at the end of the run
  std::size_t boards = 2;
  std::size_t from = 0;
};

void PrintTo(const Scenario& scenario, std::ostream* out) {
  *out << scenario.name;
}

void expectTimeline(const std::string& name, const std::string& actual) {
  expectText(TIMELINES "/" + name + ".txt", actual);
}

class RunTimelineTest : public testing::TestWithParam<Scenario> {};

TEST_P(RunTimelineTest, RunsAsItIsWritten) {
  const auto& scenario = GetParam();
  UpgradeFixture fixture(scenario.boards);
  scenario.arrange(fixture);
  fixture.appear();
  Timeline timeline(fixture);
  timeline.note("upload");
  fixture.upgradeFrom(scenario.from);
  ASSERT_EQ(fixture.alert(), scenario.alert);
  EXPECT_TRUE(fixture.controlsAreFree());
  if (scenario.alert) {
    timeline.note("OK");
    fixture.confirm(*scenario.alert);
  }
  for (std::size_t place = 0; place < scenario.boards; ++place) {
    timeline.note(fmt::format("{}: {}, {}", fixture.serialAt(place),
                              fixture.flashMatches(place) ? "upgraded" : "not upgraded",
                              fixture.isReported(place) ? "the service knows" : "the service doesn't know"));
  }
  fixture.runFor(5s);  // The last board comes back.
  timeline.note("refresh");
  fixture.refresh();
  expectTimeline(scenario.name, timeline.text());
}

auto spoiled(std::size_t place, const char* fault) {
  return [=](UpgradeFixture& fixture) { fixture.spoil(place, fault); };
}

auto listed(std::size_t place, const std::function<void(rig::ServedDevice&)>& change) {
  return [=](UpgradeFixture& fixture) { fixture.list(place, change); };
}

/// Its firmware can't be had.
auto unserved(std::size_t place) {
  return listed(place, [](auto& device) { device.serverURL = "https://127.0.0.1:1"; });
}

/// It is listed and attached at the start, but not when its turn comes.
void loseTheSecond(UpgradeFixture& fixture) {
  fixture.runtime.mainQueue().postAt(fixture.runtime.clock().now() + 3s,
                                     [&fixture] { fixture.rig.bus.unplug(fixture.serialAt(1)); });
}

void failThePortOfTheSecond(UpgradeFixture& fixture) {
  fixture.terminals.failsRequest.insert(device::portNameFor(fixture.serialAt(1)));
}

/// The worker runs to its end before setParameters looks at it.
void failAtOnce(UpgradeFixture& fixture) {
  fixture.spoil(0, "vanishes=0");
  auto host = app::loaderHostOn(fixture.runtime);
  host.run_on_global_queue = [](void*, void (*job)()) { job(); };
  loader::install_host(host);
}

const Scenario scenarios[] = {
    {"all-goes-well", [](UpgradeFixture&) {}, Alert::procedureComplete},
    {"from-the-second-row", [](UpgradeFixture& of) { of.misbehave("cut-off@complete"); },
     Alert::procedureComplete, 3, 1},
    {"a-long-delay", listed(0, [](auto& device) { device.setupDelay = 4'294'968; }),
     Alert::procedureComplete},
    {"first-fails", spoiled(0, "never-enters-halfkay"), Alert::uploadError},
    {"later-fails", spoiled(1, "never-enters-halfkay"), Alert::uploadError},
    {"first-unserved", unserved(0), Alert::downloadError},
    {"later-unserved", unserved(1), Alert::downloadError},
    {"first-has-no-url", listed(0, [](auto& device) { device.serverFile = "a file.hex"; }), std::nullopt},
    {"later-has-no-url", listed(1, [](auto& device) { device.serverFile = "a file.hex"; }), std::nullopt},
    {"not-there-for-download", listed(0, [](auto& device) { device.serverFile = "absent.hex"; }),
     Alert::uploadError},
    {"later-port-goes", failThePortOfTheSecond, Alert::halfkayModeFailed},
    {"the-worker-fails-at-once", failAtOnce, Alert::uploadError},
    {"first-leaves-in-the-middle", spoiled(0, "vanishes=2"), std::nullopt},
    {"first-may-not-be-opened", spoiled(0, "access-denied"), std::nullopt},
    {"next-is-not-there", loseTheSecond, std::nullopt},
};

INSTANTIATE_TEST_SUITE_P(Runs, RunTimelineTest, testing::ValuesIn(scenarios), [](const auto& one) {
  std::string name = one.param.name;
  std::ranges::replace(name, '-', '_');
  return name;
});

TEST(BootloaderTimelineTest, OfTwoBoardsInTheirBootloadersTheOkSendsOneBack) {
  UpgradeFixture fixture(3);
  for (const std::size_t place : {0U, 1U}) {
    fixture.rig.bus.setLineSpeed(fixture.serialAt(place), 134);
  }
  fixture.runFor(3s);
  Timeline timeline(fixture);
  for (int i = 0; i < 2; ++i) {
    timeline.note(i == 0 ? "start" : "refresh");
    i == 0 ? fixture.appear() : fixture.refresh();
    ASSERT_EQ(fixture.alert(), Alert::halfkayModeDetected);
    timeline.note("OK");
    fixture.confirm(Alert::halfkayModeDetected);
    fixture.runFor(5s);
  }
  timeline.note("refresh");
  fixture.refresh();
  expectTimeline("two-in-halfkay", timeline.text());
}

}  // namespace
}  // namespace karvex::upgrade
