// Whole runs with their times: every line of the log and every published change, in order. The texts are in
// timelines/; after a wanted change of a run, the failing test prints the new one.

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <ostream>
#include <regex>
#include <string>

#include "foundation/Log.hpp"
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
    follow(fixture.model.isUploadButtonDisabled, "upload button disabled");
    follow(fixture.model.loadingInProgress, "run");
    follow(fixture.model.actionButtonsDisabled, "action buttons disabled");
    for (const auto alert : alertsInOrder) {
      follow(fixture.view.get()->*DeviceListView::flagOf(alert), fmt::format("alert \"{}\"", titleOf(alert)));
    }
    follow(fixture.view->uploadErrorText, "upload error text");
    follow(fixture.view->downloadErrorText, "download error text");
    follow(fixture.view->serialPortMgr.errorText, "port error text");
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
    static const std::regex folder(R"(\S*/karvex-[^/]*)");
    static const std::regex duration(R"(after \d+ ms)");
    const auto line = std::regex_replace(std::regex_replace(std::string(what), folder, ""), duration, "");
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
  Alert alert;  ///< at the end of the run
};

void PrintTo(const Scenario& scenario, std::ostream* out) {
  *out << scenario.name;
}

void expectTimeline(const std::string& name, const std::string& actual) {
  std::ifstream file(std::string(TIMELINES) + "/" + name + ".txt");
  const std::string wanted{std::istreambuf_iterator<char>(file), {}};
  EXPECT_EQ(actual, wanted);
  if (actual != wanted) {
    fmt::print("{}", actual);
  }
}

class RunTimelineTest : public testing::TestWithParam<Scenario> {};

TEST_P(RunTimelineTest, RunsAsItIsWritten) {
  const auto& scenario = GetParam();
  UpgradeFixture fixture(2);
  scenario.arrange(fixture);
  fixture.appear();
  Timeline timeline(fixture);
  timeline.note("upload");
  fixture.upgradeFrom(0);
  ASSERT_EQ(fixture.alert(), scenario.alert);
  timeline.note("OK");
  fixture.confirm(scenario.alert);
  expectTimeline(scenario.name, timeline.text());
}

/// The board stays in its firmware when it is sent into its bootloader.
auto stubborn(std::size_t place) {
  return [place](UpgradeFixture& fixture) { fixture.spoil(place, "never-enters-halfkay"); };
}

/// Its firmware can't be had.
auto unserved(std::size_t place) {
  return [place](UpgradeFixture& fixture) {
    fixture.list(place, [](auto& device) { device.serverURL = "https://127.0.0.1:1"; });
  };
}

INSTANTIATE_TEST_SUITE_P(Runs, RunTimelineTest,
                         testing::Values(Scenario{"all-goes-well", [](UpgradeFixture&) {},
                                                  Alert::procedureComplete},
                                         Scenario{"first-fails", stubborn(0), Alert::uploadError},
                                         Scenario{"later-fails", stubborn(1), Alert::uploadError},
                                         Scenario{"first-unserved", unserved(0), Alert::downloadError},
                                         Scenario{"later-unserved", unserved(1), Alert::downloadError}),
                         [](const auto& one) {
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
